#include "driver/run_status.h"

#include <cstdarg>
#include <string>

#include "foundation/str_text.h"

namespace {

int g_status = kExitDone;
std::string g_reason;

}  // namespace

void run_status_set(int status, int err, const char* format, ...) {
  va_list args;
  va_start(args, format);
  g_reason = str_error_line(err, format, args);
  va_end(args);
  g_status = status;
}

void run_status_done() {
  g_status = kExitDone;
  g_reason.clear();
}

int run_status() { return g_status; }

const char* run_status_reason() { return g_reason.c_str(); }
