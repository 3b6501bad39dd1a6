#include "fileops/file_base.h"

#include <cerrno>
#include <cstdarg>

#include "foundation/logger.h"
#include "foundation/str_path.h"

namespace {

file_callback_pair g_callbacks;

}  // namespace

void file_set_callbacks(file_step_callback done, file_step_callback failed) {
  g_callbacks.done = done;
  g_callbacks.failed = failed;
}

void file_set_callback_pair(const file_callback_pair* pair) {
  g_callbacks = pair != nullptr ? *pair : file_callback_pair{};
}

void file_get_callbacks(file_callback_pair* pair) {
  if (pair != nullptr) *pair = g_callbacks;
}

void file_report(bool ok, const char* source, const char* destination, int is_file) {
  file_step_callback callback = ok ? g_callbacks.done : g_callbacks.failed;
  if (callback != nullptr) callback(source, destination, is_file);
}

int file_path_join(char* dest, const char* dir, const char* name) {
  if (dest == nullptr) return 0;
  dest[0] = '\0';
  if (dir == nullptr || name == nullptr) return 0;
  char joined[2 * kPathSize + 2];
  str_copy(joined, dir, sizeof joined);
  str_path_join(joined, name, sizeof joined);
  if (str_len(joined) > kPathMax || str_len(dir) > kPathMax) {
    errno = ENAMETOOLONG;
    file_error("Error joining '%.255s' and '%.255s'", dir, name);
    return 0;
  }
  str_copy(dest, joined, kPathSize);
  return 1;
}

void file_error(const char* format, ...) {
  int err = errno;
  if (format == nullptr) return;
  va_list args;
  va_start(args, format);
  log_error("%s", str_error_line(err, format, args).c_str());
  va_end(args);
}
