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
  char message[kLineSize] = {};
  va_list args;
  va_start(args, format);
  vsnprintf(message, kLineSize, format, args);
  va_end(args);
  message[kLineMax] = '\0';
  if (err != 0) {
    char reason[kLineSize] = {};
    str_error_text(err, reason, kLineSize);
    log_error("%s, %s", message, reason);
    str_append(message, ", ", kLineSize);
    str_append(message, reason, kLineSize);
  } else {
    log_error("%s", message);
  }
  g_last_error = message;
  errno = err;
}

const char* question_last_error() { return g_last_error.c_str(); }
