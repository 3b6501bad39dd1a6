// Directory listing over one directory stream, refilling one entry per name.
#include "fileops/file_dir.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "fileops/file_ops.h"
#include "fileops/wild_match.h"
#include "foundation/handles.h"
#include "foundation/str_path.h"

struct file_listing {
  std::string dir;
  std::string pattern;
  unique_dir stream;
  // No "\" in dir: joining turns that into "/", naming another directory
  // than the one the stream reads.
  bool plain_dir;
};

namespace {

constexpr const char* kReadlinkFailed = "READLINK FAILED";

bool is_dot_or_dot_dot(const char* name) {
  return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// Takes path and its link status into entry and, for a link, its target,
// read as name relative to the directory dir_fd (AT_FDCWD and the path
// itself for a lone entry).
void fill_entry(file_entry* entry, const char* path, const struct stat& status, int dir_fd,
                const char* name) {
  if (entry->path != path) str_copy(entry->path, path, kPathSize);
  entry->status = status;
  entry->link_target.clear();
  if (!S_ISLNK(status.st_mode)) return;
  char target[kPathSize];
  errno = 0;
  ssize_t length = readlinkat(dir_fd, name, target, kPathMax);
  if (length < 0) {
    file_error("Error reading symlink '%s'", path);
    entry->link_target = kReadlinkFailed;
  } else {
    entry->link_target.assign(target, static_cast<size_t>(length));
  }
}

bool read_status(file_entry* entry) {
  struct stat status {};
  if (lstat(entry->path, &status) != 0) return false;
  fill_entry(entry, entry->path, status, AT_FDCWD, entry->path);
  return true;
}

}  // namespace

file_entry* file_dir_open(file_listing** listing, const char* dir, const char* pattern) {
  if (listing == nullptr || dir == nullptr || pattern == nullptr) return nullptr;
  *listing = nullptr;
  errno = 0;
  unique_dir stream(opendir(dir));
  if (!stream) {
    file_error("Error opening dir '%s'", dir);
    return nullptr;
  }
  auto* opened =
      new file_listing{dir, pattern, std::move(stream), std::strchr(dir, '\\') == nullptr};
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
  while (const dirent* found = readdir(listing->stream.get())) {
    const char* name = found->d_name;
    if (is_dot_or_dot_dot(name) || !wild_match(name, listing->pattern.c_str())) continue;
    char path[kPathSize];
    struct stat status {};
    if (!file_path_join(path, listing->dir.c_str(), name)) continue;
    // Read from the open directory when the joined path names the same entry,
    // so the path is not walked again for every name.
    int dir_fd = listing->plain_dir && std::strchr(name, '\\') == nullptr
                     ? dirfd(listing->stream.get())
                     : AT_FDCWD;
    const char* lookup = dir_fd == AT_FDCWD ? path : name;
    if (fstatat(dir_fd, lookup, &status, AT_SYMLINK_NOFOLLOW) != 0) continue;
    fill_entry(entry, path, status, dir_fd, lookup);
    return 1;
  }
  return 0;
}

void file_dir_close(file_listing** listing) {
  if (listing == nullptr) return;
  delete *listing;
  *listing = nullptr;
}

file_entry* file_entry_new(const char* path) {
  if (path == nullptr || str_len(path) > kPathMax) return nullptr;
  auto* entry = new file_entry;
  str_copy(entry->path, path, kPathSize);
  if (!read_status(entry)) {
    delete entry;
    return nullptr;
  }
  return entry;
}

file_entry* file_entry_clone(const file_entry* entry) {
  if (entry == nullptr) return nullptr;
  return new file_entry(*entry);
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
  if (entry == nullptr) return nullptr;
  const char* name = entry->path;
  for (const char* at = entry->path; *at != '\0'; ++at) {
    if (*at == '/' || *at == '\\') name = at + 1;
  }
  return name;
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
