// Single files: the step callbacks, path tests, copy, move, remove, rename,
// modes, owners, ids, path names and the error line.
#include "fileops/file_ops.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>

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

file_callback_pair g_callbacks;

void report(bool ok, const char* source, const char* destination, int is_file) {
  file_step_callback callback = ok ? g_callbacks.done : g_callbacks.failed;
  if (callback != nullptr) callback(source, destination, is_file);
}

bool is_separator(char c) { return c == '/' || c == '\\'; }

// The last separator of path, or nullptr.
const char* last_separator(const char* path) {
  const char* found = nullptr;
  for (const char* at = path; *at != '\0'; ++at) {
    if (is_separator(*at)) found = at;
  }
  return found;
}

// The destination names the very file the source names (one inode), so
// truncating it would destroy the source.
bool same_file(const char* source, const char* destination) {
  struct stat source_status {};
  struct stat destination_status {};
  return stat(destination, &destination_status) == 0 && stat(source, &source_status) == 0 &&
         source_status.st_dev == destination_status.st_dev &&
         source_status.st_ino == destination_status.st_ino;
}

bool readable(const char* path) {
  unique_fd fd(open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  return static_cast<bool>(fd);
}

// Opens a copy source: only a regular file can be read to its end.
unique_fd open_source(const char* path) {
  unique_fd fd(open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (fd && fstat(fd.get(), &status) == 0 && !S_ISREG(status.st_mode)) {
    errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    fd.reset();
  }
  return fd;
}

// fchmodat2, the kernel's own "change a mode without following a link",
// where the C library does not call it yet: one system call where the
// library's fchmodat opens the path, checks it and changes the mode through
// /proc. The number is the same on every architecture listed.
#if defined(SYS_fchmodat2)
constexpr long kFchmodat2 = SYS_fchmodat2;
#elif defined(__x86_64__) || defined(__aarch64__) || defined(__riscv)
constexpr long kFchmodat2 = 452;
#else
constexpr long kFchmodat2 = -1;
#endif
bool g_fchmodat2_missing = kFchmodat2 < 0;

// fchmodat(AT_SYMLINK_NOFOLLOW): 0 or -1 with errno, EOPNOTSUPP for a link.
// A kernel without the call says ENOSYS; a system-call filter that does not
// know it may say EPERM instead, so the library's way is asked then too (a
// real EPERM comes back from it the same).
int chmod_no_follow(const char* path, mode_t mode) {
  if (!g_fchmodat2_missing) {
    if (syscall(kFchmodat2, AT_FDCWD, path, mode, AT_SYMLINK_NOFOLLOW) == 0) return 0;
    if (errno != ENOSYS && errno != EPERM) return -1;
    if (errno == ENOSYS) g_fchmodat2_missing = true;
    errno = 0;
  }
  return fchmodat(AT_FDCWD, path, mode, AT_SYMLINK_NOFOLLOW);
}

constexpr int kWriteFlags = O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC | O_NOFOLLOW;

// Creates destination when nothing stands at its name. A file made here is
// new, so it cannot be the source, and nothing was there to keep: the checks
// for those cases are left to the callers that found something.
unique_fd create_new(const char* destination) {
  int saved = errno;
  unique_fd out(open(destination, kWriteFlags | O_EXCL, 0666));
  errno = saved;
  return out;
}

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
bool copy_stream(int source, int destination, const char* source_path,
                 const char* destination_path, unsigned* bytes) {
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

// Copies between opened ends (the destination is opened here unless out
// already holds it); the destination's close is checked too, since a full
// disk may only show there. A link at the destination's name is never
// written through (the open fails with ELOOP): the tree being installed into
// may have been planted by a less trusted account.
bool copy_contents(const char* source, const char* destination, unsigned* bytes, unique_fd out) {
  if (!out) out.reset(open(destination, kWriteFlags | O_TRUNC, 0666));
  if (!out) {
    file_error("Error opening '%s' for write", destination);
    return false;
  }
  unique_fd in = open_source(source);
  if (!in) {
    file_error("Error opening '%s' for read", source);
    return false;
  }
  if (!copy_stream(in.get(), out.get(), source, destination, bytes)) return false;
  errno = 0;
  if (close(out.release()) != 0) {
    file_error("Error writing to '%s'", destination);
    return false;
  }
  return true;
}

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

int file_copy(const char* source, const char* destination, int overwrite, unsigned* bytes) {
  errno = 0;
  if (source == nullptr || destination == nullptr) {
    report(false, source, destination, 1);
    return k_fail;
  }
  unique_fd fresh = create_new(destination);
  if (fresh) {
    bool copied = copy_contents(source, destination, bytes, std::move(fresh));
    report(copied, source, destination, 1);
    return copied ? k_ok : k_fail;
  }
  if (same_file(source, destination)) {
    log_error("Error copying '%s' to '%s', the same file", source, destination);
    report(false, source, destination, 1);
    return k_fail;
  }
  if (overwrite == 0 && readable(destination)) return k_skipped;
  errno = 0;
  bool copied = copy_contents(source, destination, bytes, unique_fd());
  report(copied, source, destination, 1);
  return copied ? k_ok : k_fail;
}

int file_move(const char* source, const char* destination, int overwrite, unsigned* bytes) {
  if (file_copy(source, destination, overwrite, bytes) == k_fail) return k_fail;
  errno = 0;
  if (remove(source) != 0) {
    file_error("Error removing moved file '%s'", source);
    return k_fail;
  }
  return k_ok;
}

int file_remove(const char* path) { return path != nullptr && remove(path) == 0 ? k_ok : k_fail; }

int file_rename(const char* source, const char* destination) {
  if (source == nullptr || destination == nullptr) return k_fail;
  return rename(source, destination) == 0 ? k_ok : k_fail;
}

int file_chmod(const char* path, int mode) {
  if (path == nullptr) return k_fail;
  errno = 0;
  auto new_mode = static_cast<mode_t>(mode);
  if (chmod_no_follow(path, new_mode) == 0) return k_ok;
  if (errno == EOPNOTSUPP) {
    // Refused for a link (it has no mode of its own), or the system cannot
    // change a mode without following links: then decide by the link status.
    struct stat status {};
    if (lstat(path, &status) == 0 && S_ISLNK(status.st_mode)) return k_ok;
    errno = 0;
    if (chmod(path, new_mode) == 0) return k_ok;
  }
  file_error("Error changing mode of '%s' to %d", path, mode);
  return k_fail;
}

int file_chown(const char* path, int uid, int gid) {
  if (path == nullptr || uid == -1) return k_fail;
  if (gid == -1) gid = uid;
  errno = 0;
  if (lchown(path, static_cast<uid_t>(uid), static_cast<gid_t>(gid)) == 0) return k_ok;
  file_error("Error changing ownership of '%s' to uid=%d, gid=%d", path, uid, gid);
  return k_fail;
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
  char message[kLineSize];
  va_list args;
  va_start(args, format);
  int written = vsnprintf(message, sizeof message, format, args);
  va_end(args);
  if (written < 0 || written >= kLineMax) message[kLineMax] = '\0';
  log_error("%s%s", message, str_error_suffix(err).c_str());
}
