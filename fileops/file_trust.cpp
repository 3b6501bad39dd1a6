// The owner test for links in given paths, one lstat per component.
#include "fileops/file_trust.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "fileops/file_ops.h"

namespace {

bool is_separator(char c) { return c == '/' || c == '\\'; }

// A link whose owner is neither root nor the running user.
bool untrusted_link(const struct stat& status) {
  return S_ISLNK(status.st_mode) && status.st_uid != 0 && status.st_uid != geteuid();
}

// False for an untrusted link (logged). A prefix that cannot be read is no
// link; the check goes on, since a "\" may be part of a name here.
bool prefix_trusted(const std::string& prefix) {
  struct stat status {};
  if (lstat(prefix.c_str(), &status) != 0 || !untrusted_link(status)) return true;
  errno = ELOOP;
  file_error("Not following symbolic link '%s'", prefix.c_str());
  errno = ELOOP;
  return false;
}

}  // namespace

int file_path_trusted(const char* path) {
  if (path == nullptr) return 0;
  std::string text(path);
  while (text.size() > 1 && is_separator(text.back())) text.pop_back();
  for (size_t end = 1; end <= text.size(); ++end) {
    if (end < text.size() && !is_separator(text[end])) continue;
    if (end < text.size() && is_separator(text[end - 1])) continue;  // "//" runs
    if (!prefix_trusted(text.substr(0, end))) return 0;
  }
  return 1;
}

int file_parent_trusted(const char* path) {
  if (path == nullptr) return 0;
  std::string text(path);
  while (text.size() > 1 && is_separator(text.back())) text.pop_back();
  size_t last = text.find_last_of("/\\");
  if (last == std::string::npos) return 1;
  return file_path_trusted(text.substr(0, last == 0 ? 1 : last).c_str());
}

int file_is_link(const char* path) {
  struct stat status {};
  return path != nullptr && lstat(path, &status) == 0 && S_ISLNK(status.st_mode) ? 1 : 0;
}
