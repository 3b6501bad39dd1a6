#include "questions/question_error.h"

#include <cerrno>
#include <cstdarg>
#include <string>

#include "foundation/formatter.h"
#include "foundation/logger.h"
#include "foundation/str_text.h"

namespace {

std::string g_last_error;

}  // namespace

void question_set_error(const char* format, ...) {
  if (format == nullptr) return;
  const int err = errno;
  va_list args;
  va_start(args, format);
  g_last_error = str_error_line(err, format, args);
  va_end(args);
  log_error("%s", g_last_error.c_str());
  errno = err;
}

const char* question_last_error() { return g_last_error.c_str(); }
