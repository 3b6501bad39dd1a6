#include "foundation/file_replace.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "foundation/file_guard.h"
#include "foundation/handles.h"

namespace {

constexpr mode_t kKeptMode = 0600;
constexpr int kTemporaryTries = 100;  // names tried before giving up (EEXIST)

const char* g_unused_why = nullptr;

// Sets errno and the reason in words.
void refuse(int err, const char* reason, const char** why) {
  *why = reason;
  errno = err;
}

// Why another account could have changed the file with this status in the
// directory dir_fd holds; null when none could.
const char* foreign_reason(int dir_fd, const struct stat& file) {
  struct stat dir {};
  if (fstat(dir_fd, &dir) != 0 || !file_dir_private(dir)) {
    return "other accounts can change its directory";
  }
  if (!file_owner_trusted(file.st_uid)) return "another account owns it";
  if ((file.st_mode & (S_IWGRP | S_IWOTH)) != 0) return "other accounts may write to it";
  return nullptr;
}

// A name beside `name` that nothing uses yet, created for writing.
unique_fd create_temporary(int dir_fd, const char* name, std::string* temporary) {
  for (int n = 0; n < kTemporaryTries; ++n) {
    *temporary = "." + std::string(name) + "." + std::to_string(getpid()) + "." + std::to_string(n);
    unique_fd fd(openat(dir_fd, temporary->c_str(),
                        O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kKeptMode));
    if (fd || errno != EEXIST) return fd;
  }
  return {};
}

bool write_all(int fd, const std::string& text) {
  size_t done = 0;
  while (done < text.size()) {
    ssize_t written = write(fd, text.data() + done, text.size() - done);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    done += static_cast<size_t>(written);
  }
  return true;
}

// Whether name, in dir_fd, is a symbolic link (its own status).
bool is_link(int dir_fd, const char* name) {
  struct stat status {};
  return fstatat(dir_fd, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode);
}

}  // namespace

FILE* file_open_kept(int dir_fd, const char* name, const char** why) {
  if (why == nullptr) why = &g_unused_why;
  *why = nullptr;
  if (name == nullptr) {
    errno = EINVAL;
    return nullptr;
  }
  unique_fd fd(openat(dir_fd, name, file_open_flags("r")));
  struct stat status {};
  if (!fd || fstat(fd.get(), &status) != 0) {
    if (errno == ELOOP) refuse(ELOOP, "it is a symbolic link", why);
    return nullptr;
  }
  if (!S_ISREG(status.st_mode)) {
    refuse(EINVAL, "it is not a regular file", why);
    return nullptr;
  }
  if (const char* reason = foreign_reason(dir_fd, status)) {
    refuse(EACCES, reason, why);
    return nullptr;
  }
  return file_stream_on(fd.release(), name, "r", dir_fd);
}

int file_replace_kept(int dir_fd, const char* name, const std::string& text, const char** why) {
  if (why == nullptr) why = &g_unused_why;
  *why = nullptr;
  if (name == nullptr) {
    errno = EINVAL;
    return 0;
  }
  if (is_link(dir_fd, name)) {
    refuse(ELOOP, "it is a symbolic link", why);
    return 0;
  }
  std::string temporary;
  unique_fd fd = create_temporary(dir_fd, name, &temporary);
  if (!fd) return 0;
  bool done = fchmod(fd.get(), kKeptMode) == 0 && write_all(fd.get(), text) && fsync(fd.get()) == 0;
  if (done) done = close(fd.release()) == 0;
  // A link put at the name meanwhile would be replaced, not followed; it
  // is refused all the same, as at the start.
  if (done && is_link(dir_fd, name)) {
    refuse(ELOOP, "it is a symbolic link", why);
    done = false;
  }
  if (done) done = renameat(dir_fd, temporary.c_str(), dir_fd, name) == 0;
  if (done) return 1;
  const int err = errno;
  unlinkat(dir_fd, temporary.c_str(), 0);
  errno = err;
  return 0;
}
