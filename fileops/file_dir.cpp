// Directory listing over one open directory, refilling one entry per name.
#include "fileops/file_dir.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "fileops/file_base.h"
#include "fileops/file_trust.h"
#include "fileops/wild_match.h"
#include "foundation/str_path.h"

struct file_listing {
  std::string dir;
  std::string pattern;
  unique_dir stream;
  bool shared;  // another account can change the directory's entries
  file_status_need need;
};

namespace {

constexpr const char* kReadlinkFailed = "READLINK FAILED";
constexpr int kListFlags = O_RDONLY | O_DIRECTORY;

bool is_dot_or_dot_dot(const char* name) {
  return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// Reads the status and, for a link, the target of entry's name in its
// directory. False when the status cannot be read.
bool read_status(file_entry* entry) {
  struct stat status {};
  if (fstatat(entry->dir_fd, entry->name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return false;
  entry->status = status;
  entry->link_target.clear();
  if (!S_ISLNK(status.st_mode)) return true;
  char target[kPathSize];
  errno = 0;
  ssize_t length = readlinkat(entry->dir_fd, entry->name.c_str(), target, kPathMax);
  if (length < 0) {
    file_error("Error reading symlink '%s'", entry->path);
    entry->link_target = kReadlinkFailed;
  } else {
    entry->link_target.assign(target, static_cast<size_t>(length));
  }
  return true;
}

// The type bits of a listed type that needs no status call, else 0 (a
// directory's identity and a link's owner are read in full).
mode_t listed_type(unsigned char type) {
  switch (type) {
    case DT_REG: return S_IFREG;
    case DT_FIFO: return S_IFIFO;
    case DT_SOCK: return S_IFSOCK;
    case DT_CHR: return S_IFCHR;
    case DT_BLK: return S_IFBLK;
    default: return 0;
  }
}

// A name whose full path would not fit: never cut, so it is a failed step.
void refuse_long_name(const file_listing* listing) {
  errno = ENAMETOOLONG;
  file_report(false, listing->dir.c_str(), nullptr, 1);
}

}  // namespace

file_listing* file_listing_open(unique_fd dir, const char* path, const char* pattern,
                                file_status_need need) {
  if (path == nullptr || pattern == nullptr) return nullptr;
  bool shared = dir && file_dir_shared(dir.get());
  unique_dir stream(dir ? fdopendir(dir.get()) : nullptr);
  if (!stream) {
    file_error("Error opening dir '%s'", path);
    return nullptr;
  }
  dir.release();  // the stream owns it now
  return new file_listing{path, pattern, std::move(stream), shared, need};
}

int file_listing_fd(const file_listing* listing) {
  return listing != nullptr && listing->stream ? dirfd(listing->stream.get()) : -1;
}

file_entry* file_dir_open(file_listing** listing, const char* dir, const char* pattern) {
  if (listing == nullptr || dir == nullptr || pattern == nullptr) return nullptr;
  *listing = nullptr;
  errno = 0;
  file_listing* opened =
      file_listing_open(file_open_path(dir, kListFlags), dir, pattern, file_status_need::full);
  if (opened == nullptr) return nullptr;
  auto* entry = new file_entry;
  if (!file_dir_next(entry, opened)) {
    delete entry;
    delete opened;
    return nullptr;
  }
  *listing = opened;
  return entry;
}

int file_dir_next(file_entry* entry, file_listing* listing) {
  if (entry == nullptr || listing == nullptr || !listing->stream) return 0;
  int dir_fd = dirfd(listing->stream.get());
  while (const dirent* found = readdir(listing->stream.get())) {
    const char* name = found->d_name;
    if (is_dot_or_dot_dot(name) || !wild_match(name, listing->pattern.c_str())) continue;
    char path[kPathSize];
    if (!file_path_join(path, listing->dir.c_str(), name)) {
      refuse_long_name(listing);
      continue;
    }
    entry->own_dir.reset();
    entry->dir_fd = dir_fd;
    entry->dir_shared = listing->shared;
    entry->name = name;
    str_copy(entry->path, path, kPathSize);
    mode_t type = listing->need == file_status_need::type ? listed_type(found->d_type) : 0;
    if (type != 0) {
      entry->status = {};
      entry->status.st_mode = type;
      entry->link_target.clear();
      return 1;
    }
    if (read_status(entry)) return 1;
  }
  return 0;
}

void file_dir_close(file_listing** listing) {
  if (listing == nullptr) return;
  delete *listing;
  *listing = nullptr;
}

unique_fd file_entry_open_dir(const file_entry* entry) {
  if (entry == nullptr) return {};
  errno = 0;
  unique_fd dir(openat(entry->dir_fd, entry->name.c_str(), kListFlags | O_NOFOLLOW | O_CLOEXEC));
  struct stat now {};
  if (dir && fstat(dir.get(), &now) == 0 &&
      (now.st_dev != entry->status.st_dev || now.st_ino != entry->status.st_ino)) {
    dir.reset();
    errno = ESTALE;
  }
  if (dir) return dir;
  int err = errno;
  struct stat status {};
  bool link = fstatat(entry->dir_fd, entry->name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
              S_ISLNK(status.st_mode);
  errno = link ? ELOOP : err;
  file_error(link ? "Not following symbolic link '%s'" : "Error opening dir '%s'", entry->path);
  errno = link ? ELOOP : err;
  // Something else now stands at the name: a failed step of its own, where
  // an unreadable directory is only logged, as it always was.
  if (errno == ELOOP || errno == ESTALE || errno == ENOTDIR) {
    file_report(false, entry->path, nullptr, 1);
  }
  return {};
}

file_entry* file_entry_new(const char* path) {
  if (path == nullptr) return nullptr;
  if (str_len(path) > kPathMax) {
    errno = ENAMETOOLONG;
    return nullptr;
  }
  auto* entry = new file_entry;
  str_copy(entry->path, path, kPathSize);
  entry->own_dir = file_open_parent(path, &entry->name);
  entry->dir_fd = entry->own_dir.get();
  entry->dir_shared = entry->own_dir && file_dir_shared(entry->dir_fd);
  if (!entry->own_dir || !read_status(entry)) {
    delete entry;
    return nullptr;
  }
  return entry;
}

file_entry* file_entry_clone(const file_entry* entry) {
  if (entry == nullptr) return nullptr;
  auto* copy = new file_entry;
  std::memcpy(copy->path, entry->path, sizeof copy->path);
  copy->link_target = entry->link_target;
  copy->status = entry->status;
  copy->name = entry->name;
  copy->dir_shared = entry->dir_shared;
  copy->dir_fd = entry->dir_fd;
  if (entry->own_dir) {
    copy->own_dir.reset(fcntl(entry->dir_fd, F_DUPFD_CLOEXEC, 0));
    copy->dir_fd = copy->own_dir.get();
  }
  return copy;
}

int file_entry_stat(file_entry* entry) {
  if (entry == nullptr) return 0;
  return read_status(entry) ? 1 : 0;
}

void file_entry_free(file_entry** entry) {
  if (entry == nullptr) return;
  delete *entry;
  *entry = nullptr;
}

const char* file_entry_path(const file_entry* entry) {
  return entry != nullptr ? entry->path : nullptr;
}

const char* file_entry_name(const file_entry* entry) {
  return entry != nullptr ? entry->name.c_str() : nullptr;
}

const char* file_entry_link_target(const file_entry* entry) {
  return file_entry_is_link(entry) ? entry->link_target.c_str() : nullptr;
}

const struct stat* file_entry_status(const file_entry* entry) {
  return entry != nullptr ? &entry->status : nullptr;
}

int file_entry_is_dir(const file_entry* entry) {
  return entry != nullptr && S_ISDIR(entry->status.st_mode) ? 1 : 0;
}

int file_entry_is_link(const file_entry* entry) {
  return entry != nullptr && S_ISLNK(entry->status.st_mode) ? 1 : 0;
}
