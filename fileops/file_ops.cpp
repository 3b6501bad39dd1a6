// Single files: the step callbacks, path tests, copy, move, remove, rename,
// ids, path names and the error line (modes and owners: file_change.cpp).
#include "fileops/file_ops.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <string>

#include "fileops/file_dir.h"
#include "fileops/file_trust.h"
#include "foundation/formatter.h"
#include "foundation/handles.h"
#include "foundation/logger.h"
#include "foundation/results.h"
#include "foundation/str_path.h"

namespace {

// Copies move 8,192-byte chunks through one stream buffer of sixteen of
// them, so a large file costs a sixteenth of the reads and writes that a
// chunk at a time would; the counter grows by what each write put out.
constexpr size_t kChunkSize = 8192;
constexpr size_t kStreamChunks = 16;
alignas(4096) char g_stream[kChunkSize * kStreamChunks];

bool is_separator(char c) { return c == '/' || c == '\\'; }

// The last separator of path, or nullptr.
const char* last_separator(const char* path) {
  const char* found = nullptr;
  for (const char* at = path; *at != '\0'; ++at) {
    if (is_separator(*at)) found = at;
  }
  return found;
}

bool same_inode(const struct stat& one, const struct stat& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// Opens a copy source: only a regular file can be read to its end, and a
// FIFO or a device is refused before a byte is read.
unique_fd open_source(int dir_fd, const char* name, const char* path) {
  unique_fd fd = file_open_beside(dir_fd, name, path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
  struct stat status {};
  if (fd && fstat(fd.get(), &status) == 0 && !S_ISREG(status.st_mode)) {
    errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    fd.reset();
  }
  return fd;
}

constexpr int kWriteFlags = O_WRONLY | O_NONBLOCK | O_CLOEXEC | O_NOFOLLOW;

bool write_all(int fd, const char* data, size_t size) {
  while (size > 0) {
    ssize_t written = write(fd, data, size);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    data += written;
    size -= static_cast<size_t>(written);
  }
  return true;
}

// Streams source into destination; false once either side fails (logged).
bool copy_stream(int source, int destination, const char* source_path, const char* destination_path,
                 unsigned* bytes) {
  for (;;) {
    ssize_t got = read(source, g_stream, sizeof g_stream);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      file_error("Error reading from '%s'", source_path);
      return false;
    }
    if (got == 0) return true;
    if (!write_all(destination, g_stream, static_cast<size_t>(got))) {
      file_error("Error writing to '%s'", destination_path);
      return false;
    }
    if (bytes != nullptr) *bytes += static_cast<unsigned>(got);
  }
}

// Opens an existing destination for writing and empties it, unless it is
// not a regular file, is the source itself, or has other names where other
// accounts can change its directory. A link at its name is never written
// through (ELOOP). Failures are logged.
unique_fd open_existing(const file_place& destination, int in, const char* source_path) {
  unique_fd out(openat(destination.dir_fd, destination.name, kWriteFlags));
  struct stat status {};
  if (out && fstat(out.get(), &status) == 0 && !S_ISREG(status.st_mode)) {
    errno = EINVAL;
    out.reset();
  }
  if (!out) {
    file_error("Error opening '%s' for write", destination.path);
    return out;
  }
  struct stat source_status {};
  if (in >= 0 && fstat(in, &source_status) == 0 && same_inode(status, source_status)) {
    log_error("Error copying '%s' to '%s', the same file", source_path, destination.path);
    return {};
  }
  if (file_refuse_second_name(status, file_dir_shared(destination.dir_fd), "writing",
                              destination.path)) {
    return {};
  }
  if (ftruncate(out.get(), 0) != 0) {
    file_error("Error opening '%s' for write", destination.path);
    return {};
  }
  return out;
}

// The destination named the very file the source is, by its status: then a
// skipped copy is still the error it always was.
bool names_source(const file_place& destination, int in) {
  struct stat status {};
  struct stat source_status {};
  return in >= 0 && fstatat(destination.dir_fd, destination.name, &status, 0) == 0 &&
         fstat(in, &source_status) == 0 && same_inode(status, source_status);
}

// Copies the opened source (in, or the errno of its failed open) to
// destination as file_copy says.
int copy_opened(unique_fd in, int in_error, const char* source_path, const file_place& destination,
                int overwrite, unsigned* bytes) {
  unique_fd out(openat(destination.dir_fd, destination.name, kWriteFlags | O_CREAT | O_EXCL, 0666));
  if (!out && errno != EEXIST) {
    file_error("Error opening '%s' for write", destination.path);
    return k_fail;
  }
  if (!out) {
    if (names_source(destination, in.get())) {
      log_error("Error copying '%s' to '%s', the same file", source_path, destination.path);
      return k_fail;
    }
    unique_fd readable(openat(destination.dir_fd, destination.name,
                              O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
    if (overwrite == 0 && readable) return k_skipped;
    errno = 0;
    out = open_existing(destination, in.get(), source_path);
    if (!out) return k_fail;
  }
  if (!in) {
    errno = in_error;
    file_error("Error opening '%s' for read", source_path);
    return k_fail;
  }
  if (!copy_stream(in.get(), out.get(), source_path, destination.path, bytes)) return k_fail;
  errno = 0;
  if (close(out.release()) != 0) {
    file_error("Error writing to '%s'", destination.path);
    return k_fail;
  }
  return k_ok;
}

// Removes name from dir_fd, a directory too when it is empty.
int remove_name(int dir_fd, const char* name) {
  if (unlinkat(dir_fd, name, 0) == 0) return k_ok;
  if (errno != EISDIR) return k_fail;
  return unlinkat(dir_fd, name, AT_REMOVEDIR) == 0 ? k_ok : k_fail;
}

}  // namespace

int file_path_type(const char* path) {
  struct stat status {};
  if (path == nullptr || stat(path, &status) != 0) {
    log_debug("'%s' does not exist", str_or_empty(path));
    return 0;
  }
  if (S_ISDIR(status.st_mode)) {
    log_debug("'%s' exists and is a directory", path);
    return 2;
  }
  log_debug("'%s' exists and is a file", path);
  return 1;
}

int file_exists(const char* path) {
  struct stat status {};
  return path != nullptr && stat(path, &status) == 0 ? 1 : 0;
}

int file_is_dir(const char* path) {
  struct stat status {};
  return path != nullptr && stat(path, &status) == 0 && S_ISDIR(status.st_mode) ? 1 : 0;
}

int file_copy_at(const file_place& source, const file_place& destination, int overwrite,
                 unsigned* bytes) {
  errno = 0;
  unique_fd in = open_source(source.dir_fd, source.name, source.path);
  int in_error = errno;
  int result = copy_opened(std::move(in), in_error, source.path, destination, overwrite, bytes);
  if (result != k_skipped) file_report(result == k_ok, source.path, destination.path, 1);
  return result;
}

int file_copy(const char* source, const char* destination, int overwrite, unsigned* bytes) {
  errno = 0;
  if (source == nullptr || destination == nullptr) {
    file_report(false, source, destination, 1);
    return k_fail;
  }
  std::string name;
  unique_fd to = file_open_parent(destination, &name);
  if (!to) {
    file_error("Error opening '%s' for write", destination);
    file_report(false, source, destination, 1);
    return k_fail;
  }
  errno = 0;
  unique_fd in = file_open_path(source, O_RDONLY | O_NONBLOCK | O_NOCTTY);
  struct stat status {};
  if (in && fstat(in.get(), &status) == 0 && !S_ISREG(status.st_mode)) {
    errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    in.reset();
  }
  int in_error = errno;
  file_place target{to.get(), name.c_str(), destination};
  int result = copy_opened(std::move(in), in_error, source, target, overwrite, bytes);
  if (result != k_skipped) file_report(result == k_ok, source, destination, 1);
  return result;
}

int file_move(const char* source, const char* destination, int overwrite, unsigned* bytes) {
  if (file_copy(source, destination, overwrite, bytes) == k_fail) return k_fail;
  errno = 0;
  if (file_remove(source) == k_fail) {
    file_error("Error removing moved file '%s'", source);
    return k_fail;
  }
  return k_ok;
}

int file_remove(const char* path) {
  std::string name;
  unique_fd dir = file_open_parent(path, &name);
  return dir ? remove_name(dir.get(), name.c_str()) : k_fail;
}

int file_rename(const char* source, const char* destination) {
  if (source == nullptr || destination == nullptr) return k_fail;
  std::string from_name;
  std::string to_name;
  unique_fd from = file_open_parent(source, &from_name);
  if (!from) return k_fail;
  unique_fd to = file_open_parent(destination, &to_name);
  if (!to) return k_fail;
  return renameat(from.get(), from_name.c_str(), to.get(), to_name.c_str()) == 0 ? k_ok : k_fail;
}

int file_entry_remove(const file_entry* entry) {
  if (entry == nullptr) return k_fail;
  int flags = S_ISDIR(entry->status.st_mode) ? AT_REMOVEDIR : 0;
  return unlinkat(entry->dir_fd, entry->name.c_str(), flags) == 0 ? k_ok : k_fail;
}

int file_user_id(const char* user) {
  const passwd* entry = user != nullptr ? getpwnam(user) : nullptr;
  return entry != nullptr ? static_cast<int>(entry->pw_uid) : -1;
}

int file_group_id(const char* group) {
  const struct group* entry = group != nullptr ? getgrnam(group) : nullptr;
  return entry != nullptr ? static_cast<int>(entry->gr_gid) : -1;
}

int file_user_group_id(const char* user) {
  const passwd* entry = user != nullptr ? getpwnam(user) : nullptr;
  return entry != nullptr ? static_cast<int>(entry->pw_gid) : -1;
}

char* file_base_name(const char* path, char* buffer, int size) {
  if (path == nullptr || buffer == nullptr || size < 1) return nullptr;
  const char* separator = last_separator(path);
  str_copy(buffer, separator != nullptr ? separator + 1 : path, size);
  return buffer;
}

char* file_dir_name(const char* path, char* buffer, int size) {
  if (path == nullptr || buffer == nullptr || size < 1) return nullptr;
  const char* separator = last_separator(path);
  int length = separator != nullptr ? static_cast<int>(separator - path) : str_len(path);
  str_copy(buffer, path, length + 1 < size ? length + 1 : size);
  return buffer;
}
