// Owner and mode changes, of a path given as text or of a listed entry.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "fileops/file_dir.h"
#include "fileops/file_ops.h"
#include "fileops/file_trust.h"
#include "foundation/handles.h"
#include "foundation/logger.h"
#include "foundation/results.h"

namespace {

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

// Changes the mode of name in dir_fd without following a link, or of what
// dir_fd itself refers to (an O_PATH descriptor) with AT_EMPTY_PATH. 0 or -1
// with errno. A kernel without fchmodat2 says ENOSYS; a system-call filter
// that does not know it may say EPERM instead, so the library's way (or
// /proc for a descriptor) is asked then too (a real EPERM comes back the
// same).
int chmod_at(int dir_fd, const char* name, mode_t mode, int flags) {
  if (!g_fchmodat2_missing) {
    if (syscall(kFchmodat2, dir_fd, name, mode, flags) == 0) return 0;
    if (errno != ENOSYS && errno != EPERM) return -1;
    if (errno == ENOSYS) g_fchmodat2_missing = true;
    errno = 0;
  }
  if ((flags & AT_EMPTY_PATH) == 0) return fchmodat(dir_fd, name, mode, flags);
  char proc[64];
  snprintf(proc, sizeof proc, "/proc/self/fd/%d", dir_fd);
  return chmod(proc, mode);
}

// One owner or mode change.
struct change {
  bool owner;
  int uid;
  int gid;
  int mode;
};

// Changes name in dir_fd (flags AT_SYMLINK_NOFOLLOW) or what dir_fd refers
// to (AT_EMPTY_PATH), whose status is status: 0 or -1 with errno. A link has
// no mode of its own and is left alone; a link that another account made is
// not handed to root or the running user, so it never passes for theirs.
int change_at(int dir_fd, const char* name, int flags, const struct stat& status,
              const change& wanted, const char* path) {
  if (S_ISLNK(status.st_mode) && !wanted.owner) return 0;
  if (!wanted.owner) return chmod_at(dir_fd, name, static_cast<mode_t>(wanted.mode), flags);
  if (S_ISLNK(status.st_mode) && !file_owner_trusted(status.st_uid) &&
      file_owner_trusted(static_cast<uid_t>(wanted.uid))) {
    log_info("Leaving link '%s' to its owner", path);
    return 0;
  }
  return fchownat(dir_fd, name, static_cast<uid_t>(wanted.uid), static_cast<gid_t>(wanted.gid),
                  flags);
}

// Changes a listed entry: through held when the caller holds it open; by
// name when no other account can change its directory (nothing can be
// swapped in); else through a descriptor of the name itself, checked for
// what it is now, so that what is checked is what is changed.
int change_entry(const file_entry* entry, int held, const change& wanted) {
  struct stat now {};
  if (held >= 0) {
    if (fstat(held, &now) != 0) return -1;
    return change_at(held, "", AT_EMPTY_PATH, now, wanted, entry->path);
  }
  if (!entry->dir_shared) {
    return change_at(entry->dir_fd, entry->name.c_str(), AT_SYMLINK_NOFOLLOW, entry->status, wanted,
                     entry->path);
  }
  unique_fd fd(openat(entry->dir_fd, entry->name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  if (!fd || fstat(fd.get(), &now) != 0) return -1;
  if (file_refuse_second_name(now, true,
                              wanted.owner ? "changing the owner of" : "changing the mode of",
                              entry->path)) {
    return -1;
  }
  return change_at(fd.get(), "", AT_EMPTY_PATH, now, wanted, entry->path);
}

// Changes entry, null when it could not be found (errno says why); failures
// are logged.
int change_logged(const file_entry* entry, const char* path, int held, const change& wanted) {
  if (entry != nullptr) errno = 0;
  if (entry != nullptr && change_entry(entry, held, wanted) == 0) return k_ok;
  if (errno == EMLINK) return k_fail;  // refused, and said why
  if (wanted.owner) {
    file_error("Error changing ownership of '%s' to uid=%d, gid=%d", path, wanted.uid, wanted.gid);
  } else {
    file_error("Error changing mode of '%s' to %d", path, wanted.mode);
  }
  return k_fail;
}

}  // namespace

int file_chmod(const char* path, int mode) {
  if (path == nullptr) return k_fail;
  errno = 0;
  file_entry* entry = file_entry_new(path);
  int result = change_logged(entry, path, -1, change{false, 0, 0, mode});
  file_entry_free(&entry);
  return result;
}

int file_chown(const char* path, int uid, int gid) {
  if (path == nullptr || uid == -1) return k_fail;
  if (gid == -1) gid = uid;
  errno = 0;
  file_entry* entry = file_entry_new(path);
  int result = change_logged(entry, path, -1, change{true, uid, gid, 0});
  file_entry_free(&entry);
  return result;
}

int file_entry_chmod(const file_entry* entry, int held, int mode) {
  if (entry == nullptr) return k_fail;
  return change_logged(entry, entry->path, held, change{false, 0, 0, mode});
}

int file_entry_chown(const file_entry* entry, int held, int uid, int gid) {
  if (entry == nullptr || uid == -1) return k_fail;
  if (gid == -1) gid = uid;
  return change_logged(entry, entry->path, held, change{true, uid, gid, 0});
}
