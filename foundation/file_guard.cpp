// Opening files by name: trusted links only, no blocking, regular files
// only, no writing through a second name that another account could make.
#include "foundation/file_guard.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <string>

#include "foundation/logger.h"

namespace {

constexpr int kLinkHops = 40;  // the kernel's own limit for a chain of links

std::string parent_of(const std::string& path) {
  size_t cut = path.find_last_of("/\\");
  if (cut == std::string::npos) return ".";
  return cut == 0 ? "/" : path.substr(0, cut);
}

// A directory that cannot be read counts as shared.
bool parent_shared(const std::string& path) {
  struct stat dir {};
  return stat(parent_of(path).c_str(), &dir) != 0 || !file_dir_private(dir);
}

// Logs a refusal without losing the errno that tells the caller why.
void refuse(int err, const char* format, const char* path) {
  log_error(format, path);
  errno = err;
}

// Follows the links at path's name while each is trusted; path then names
// what the last one points to. False (ELOOP, logged) at an untrusted link
// or a chain longer than the kernel would follow.
bool follow_trusted_links(std::string& path) {
  for (int hop = 0; hop <= kLinkHops; ++hop) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return true;
    if (!file_owner_trusted(status.st_uid) || parent_shared(path)) break;
    char target[PATH_MAX];
    ssize_t length = readlink(path.c_str(), target, sizeof target - 1);
    if (length < 0) return false;
    target[length] = '\0';
    path = target[0] == '/' ? std::string(target) : parent_of(path) + "/" + target;
  }
  refuse(ELOOP, "Not following symbolic link '%s'", path.c_str());
  return false;
}

// Whether another account can change the directory of the file: the one
// dir_fd holds, or, for -1, the one path names.
bool dir_shared(int dir_fd, const char* path) {
  if (dir_fd < 0) return parent_shared(path);
  struct stat dir {};
  return fstat(dir_fd, &dir) != 0 || !file_dir_private(dir);
}

// Checks what fd opened: a regular file, and for writing one with no second
// name in a directory that another account can change.
bool opened_file_allowed(int fd, const char* path, bool writing, int dir_fd) {
  struct stat status {};
  if (fstat(fd, &status) != 0) return false;
  if (S_ISDIR(status.st_mode)) {
    errno = EISDIR;
    return false;
  }
  if (!S_ISREG(status.st_mode)) {
    refuse(EINVAL, "Not opening '%s', it is not a regular file", path);
    return false;
  }
  if (writing && status.st_nlink > 1 && dir_shared(dir_fd, path)) {
    refuse(EMLINK,
           "Not writing '%s': it has other names and other accounts can change its directory",
           path);
    return false;
  }
  return true;
}

bool is_writing(const char* mode) { return mode[0] != 'r' || std::strchr(mode, '+') != nullptr; }

}  // namespace

bool file_owner_trusted(uid_t uid) { return uid == 0 || uid == geteuid(); }

bool file_dir_private(const struct stat& dir) {
  return file_owner_trusted(dir.st_uid) &&
         ((dir.st_mode & (S_IWGRP | S_IWOTH)) == 0 || (dir.st_mode & S_ISVTX) != 0);
}

int file_running_as_root() { return geteuid() == 0 ? 1 : 0; }

const char* file_shared_reason(const char* path) {
  struct stat status {};
  if (path == nullptr || stat(path, &status) != 0) return nullptr;
  if (S_ISDIR(status.st_mode) && (status.st_mode & S_ISVTX) != 0) {
    return "it is a shared temporary directory";
  }
  return (status.st_mode & S_IWOTH) != 0 ? "every account may write to it" : nullptr;
}

int file_open_flags(const char* mode) {
  int flags = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  if (mode == nullptr || !is_writing(mode)) return flags | O_RDONLY;
  flags |= std::strchr(mode, '+') != nullptr ? O_RDWR : O_WRONLY;
  if (mode[0] != 'r') flags |= O_CREAT;
  if (mode[0] == 'a') flags |= O_APPEND;
  return flags;
}

void file_explain_open_failure(const char* path) {
  struct stat status {};
  if (errno == ENXIO && path != nullptr && lstat(path, &status) == 0 && !S_ISREG(status.st_mode)) {
    refuse(EINVAL, "Not opening '%s', it is not a regular file", path);
  }
}

FILE* file_stream_on(int fd, const char* path, const char* mode, int dir_fd) {
  if (fd < 0 || path == nullptr || mode == nullptr) return nullptr;
  bool allowed = opened_file_allowed(fd, path, is_writing(mode), dir_fd);
  if (allowed && mode[0] == 'w' && ftruncate(fd, 0) != 0) allowed = false;
  FILE* stream = nullptr;
  if (allowed) {
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    stream = fdopen(fd, mode);
  }
  if (stream == nullptr) {
    int err = errno;
    close(fd);
    errno = err;
  }
  return stream;
}

FILE* file_open(const char* path, const char* mode) {
  if (path == nullptr || mode == nullptr) return nullptr;
  std::string name = path;
  if (!is_writing(mode) && !follow_trusted_links(name)) return nullptr;
  int fd = open(name.c_str(), file_open_flags(mode), 0666);
  if (fd < 0) {
    file_explain_open_failure(name.c_str());
    return nullptr;
  }
  return file_stream_on(fd, name.c_str(), mode, -1);
}

void file_close(FILE** stream) {
  if (stream == nullptr || *stream == nullptr) return;
  fclose(*stream);
  *stream = nullptr;
}

int file_finish(FILE** stream) {
  if (stream == nullptr || *stream == nullptr) return 0;
  FILE* file = *stream;
  *stream = nullptr;
  bool written = fflush(file) == 0 && ferror(file) == 0;
  int err = errno;
  if (fclose(file) != 0) return 0;
  errno = err;
  return written ? 1 : 0;
}
