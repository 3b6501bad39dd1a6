// Trees: making directories with their parents, copying, moving and removing
// whole directories. A walk holds the directories it works in open, one per
// level on each side, lists them (file_dir.h) and acts on each listed name
// relative to them, deciding "directory or not" from the name's own link
// status; a directory is entered only when it is still the one listed. So
// no link is ever walked into, on the source side or the destination side,
// whoever swaps what while the walk runs; memory and descriptors grow with
// the depth of a tree (at most 128 levels fit in 255 characters), not its
// size. The paths a walk starts from are opened as file_trust.h says.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "fileops/file_dir.h"
#include "fileops/file_ops.h"
#include "fileops/file_trust.h"
#include "fileops/wild_match.h"
#include "foundation/logger.h"
#include "foundation/results.h"

namespace {

constexpr mode_t kDirMode = 0775;

bool is_separator(char c) { return c == '/' || c == '\\'; }

bool excluded(const char* name, const char* exclude) {
  return exclude != nullptr && wild_list_match(name, exclude) != 0;
}

// A link where a walk needs a directory of its own: files written below it
// would land wherever it points. Logged and reported; errno stays ELOOP for
// the failure callback.
void refuse_link(const char* path, int is_file) {
  errno = ELOOP;
  file_error("Not following symbolic link '%s'", path);
  errno = ELOOP;
  file_report(false, path, nullptr, is_file);
}

// One mkdir of name in dir_fd; true when it made the directory. A failure
// leaves its errno.
bool make_one(int dir_fd, const char* name, const char* path) {
  if (mkdirat(dir_fd, name, kDirMode) != 0) return false;
  log_debug("Directory created '%s'", path);
  file_report(true, path, nullptr, 1);
  return true;
}

// One mkdir of a path text, relative to its parent opened as file_trust.h
// says.
bool make_path(const char* path) {
  std::string name;
  unique_fd parent = file_open_parent(path, &name);
  return parent && make_one(parent.get(), name.c_str(), path);
}

// Opens the existing directory name of dir_fd as a destination: a link or
// anything else standing there fails it (logged and reported).
unique_fd open_destination(int dir_fd, const char* name, const char* path) {
  unique_fd dir(openat(dir_fd, name, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (dir) return dir;
  int err = errno;
  struct stat status {};
  if (fstatat(dir_fd, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode)) {
    refuse_link(path, 1);
    return {};
  }
  errno = err;
  file_error("Error opening dir '%s'", path);
  file_report(false, path, nullptr, 1);
  return {};
}

// A destination directory below the top: made when missing (counted in
// *made), then held.
unique_fd ensure_below(int dir_fd, const char* name, const char* path, int* made) {
  errno = 0;
  if (make_one(dir_fd, name, path)) {
    *made = 1;
  } else if (errno != EEXIST) {
    file_error("Error creating directory '%s'", path);
    file_report(false, path, nullptr, 1);
    return {};
  }
  return open_destination(dir_fd, name, path);
}

// The full path of name below dir for the messages; false (logged and
// reported, never cut) when it would exceed 255 characters.
bool join_or_refuse(char* target, const char* dir, const char* name, const char* source) {
  if (file_path_join(target, dir, name)) return true;
  errno = ENAMETOOLONG;
  file_report(false, source, nullptr, 1);
  return false;
}

// What a copy or move walk carries down the tree.
struct tree_walk {
  const char* exclude;
  int recursive;
  unsigned* bytes;
  bool move;
  struct stat top_destination;  // never walked as a source (a copy into itself)
};

// A destination directory held open, with its path for the messages.
struct held_dir {
  int fd;
  const char* path;
};

int walk_listing(const tree_walk& walk, unique_fd source, const char* source_path,
                 const char* pattern, const held_dir& destination);
int remove_at(int dir_fd, const char* name, const char* path, const struct stat& status,
              const char* exclude, int recursive);

bool is_top_destination(const tree_walk& walk, const file_entry* entry) {
  return entry->status.st_dev == walk.top_destination.st_dev &&
         entry->status.st_ino == walk.top_destination.st_ino;
}

// Walks the listed directory entry into the destination directory held as
// below; a move then removes what is left of the source.
int walk_into(const tree_walk& walk, const file_entry* entry, const held_dir& below) {
  unique_fd source = file_entry_open_dir(entry);
  if (!source) return 0;
  int count = walk_listing(walk, std::move(source), entry->path, "*", below);
  if (!walk.move) return count;
  if (remove_at(entry->dir_fd, entry->name.c_str(), entry->path, entry->status, walk.exclude,
                walk.recursive) > 0) {
    return count + 1;
  }
  file_error("Failed to remove moved directory '%s'", below.path);
  return count;
}

// A sub-directory copied or moved whole: its destination made first, then
// the source entered (only while it is the directory listed).
int walk_subdir(const tree_walk& walk, const file_entry* entry, const held_dir& destination,
                const char* target) {
  if (is_top_destination(walk, entry)) return 0;
  int made = 0;
  unique_fd below = ensure_below(destination.fd, entry->name.c_str(), target, &made);
  if (!below) return 0;
  return made + walk_into(walk, entry, held_dir{below.get(), target});
}

int walk_file(const tree_walk& walk, const file_entry* entry, const held_dir& destination,
              const char* target) {
  file_place from{entry->dir_fd, entry->name.c_str(), entry->path};
  file_place to{destination.fd, entry->name.c_str(), target};
  int result = file_copy_at(from, to, walk.move ? walk.recursive : 1, walk.bytes);
  if (!walk.move || result == k_fail) return result != k_fail ? 1 : 0;
  errno = 0;
  if (file_entry_remove(entry) != 0) return 1;
  file_error("Error removing moved file '%s'", entry->path);
  return 0;
}

int walk_entry(const tree_walk& walk, const file_entry* entry, const held_dir& destination) {
  const char* name = entry->name.c_str();
  char target[kPathSize];
  if (excluded(name, walk.exclude)) return 0;
  if (!join_or_refuse(target, destination.path, name, entry->path)) return 0;
  if (!file_entry_is_dir(entry)) return walk_file(walk, entry, destination, target);
  if (walk.recursive) return walk_subdir(walk, entry, destination, target);
  errno = 0;
  if (make_one(destination.fd, name, target) || errno == EEXIST) return 1;
  file_error("Error creating directory '%s'", target);
  file_report(false, target, nullptr, 1);
  return 0;
}

int walk_listing(const tree_walk& walk, unique_fd source, const char* source_path,
                 const char* pattern, const held_dir& destination) {
  file_listing* listing =
      file_listing_open(std::move(source), source_path, pattern, file_status_need::type);
  if (listing == nullptr) return 0;
  int count = 0;
  file_entry entry;
  while (file_dir_next(&entry, listing)) count += walk_entry(walk, &entry, destination);
  file_dir_close(&listing);
  return count;
}

// The top destination: made with its parents when missing (counted in
// *made), then held; a link at its name is never followed, whoever owns it.
unique_fd ensure_top(const char* path, int* made) {
  std::string name;
  unique_fd parent = file_open_parent(path, &name);
  struct stat status {};
  bool missing = parent ? fstatat(parent.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0
                        : errno != ELOOP;
  if (missing) {
    if (file_mkdir(path, 1) == 0) return {};
    *made = 1;
    parent = file_open_parent(path, &name);
  }
  if (!parent) {
    file_report(false, path, nullptr, 1);
    return {};
  }
  return open_destination(parent.get(), name.c_str(), path);
}

int start_walk(const char* source_dir, const char* pattern, const char* exclude,
               const char* destination_dir, int recursive, unsigned* bytes, bool move) {
  if (source_dir == nullptr || destination_dir == nullptr) return 0;
  int made = 0;
  unique_fd destination = ensure_top(destination_dir, &made);
  if (!destination) return 0;
  tree_walk walk{exclude, recursive, bytes, move, {}};
  fstat(destination.get(), &walk.top_destination);
  unique_fd source = file_open_path(source_dir, O_RDONLY | O_DIRECTORY);
  return made + walk_listing(walk, std::move(source), source_dir,
                             pattern != nullptr ? pattern : "*",
                             held_dir{destination.get(), destination_dir});
}

// Removes one listed entry below a tree being removed; 1 when it went.
int remove_entry(const file_entry* entry, const char* exclude) {
  if (file_entry_is_dir(entry)) {
    int count =
        remove_at(entry->dir_fd, entry->name.c_str(), entry->path, entry->status, exclude, 1);
    file_report(count > 0, entry->path, nullptr, 0);
    return count;
  }
  bool removed = file_entry_remove(entry) != 0;
  file_report(removed, entry->path, nullptr, 0);
  return removed ? 1 : 0;
}

// Removes the listed contents of a directory held open.
int remove_below(unique_fd dir, const char* path, const char* exclude) {
  file_listing* listing = file_listing_open(std::move(dir), path, "*", file_status_need::type);
  if (listing == nullptr) return 0;
  int count = 0;
  file_entry entry;
  while (file_dir_next(&entry, listing)) {
    if (!excluded(entry.name.c_str(), exclude)) count += remove_entry(&entry, exclude);
  }
  file_dir_close(&listing);
  return count;
}

// Removes name of dir_fd (with the status it was found with, none when it
// could not be read) and, for a directory with recursive, what is below it
// first. A link is removed itself: never listed, since listing it would list
// where it points.
int remove_at(int dir_fd, const char* name, const char* path, const struct stat& status,
              const char* exclude, int recursive) {
  int count = 0;
  if (recursive && (S_ISDIR(status.st_mode) || status.st_mode == 0)) {
    file_entry listed;
    listed.dir_fd = dir_fd;
    listed.name = name;
    listed.status = status;
    str_copy(listed.path, path, kPathSize);
    unique_fd below = file_entry_open_dir(&listed);
    if (below) count = remove_below(std::move(below), path, exclude);
  }
  int flags = S_ISDIR(status.st_mode) ? AT_REMOVEDIR : 0;
  bool removed = unlinkat(dir_fd, name, flags) == 0;
  file_report(removed, path, nullptr, 0);
  return count + (removed ? 1 : 0);
}

}  // namespace

int file_copy_dir(const char* source_dir, const char* pattern, const char* exclude,
                  const char* destination_dir, int recursive, unsigned* bytes) {
  return start_walk(source_dir, pattern, exclude, destination_dir, recursive, bytes, false);
}

int file_move_dir(const char* source_dir, const char* pattern, const char* exclude,
                  const char* destination_dir, int recursive, unsigned* bytes) {
  return start_walk(source_dir, pattern, exclude, destination_dir, recursive, bytes, true);
}

int file_copy_tree_at(const file_entry* source, int into_fd, const char* target,
                      const char* exclude, unsigned* bytes) {
  if (source == nullptr || target == nullptr) return 0;
  int made = 0;
  unique_fd below = ensure_below(into_fd, source->name.c_str(), target, &made);
  if (!below) return 0;
  tree_walk walk{exclude, 1, bytes, false, {}};
  fstat(below.get(), &walk.top_destination);
  return made + walk_into(walk, source, held_dir{below.get(), target});
}

int file_remove_tree_at(const file_entry* entry, const char* exclude) {
  if (entry == nullptr) return 0;
  return remove_at(entry->dir_fd, entry->name.c_str(), entry->path, entry->status, exclude, 1);
}

int file_mkdir(const char* path, int parents) {
  if (path == nullptr) return k_fail;
  if (str_len(path) > kPathMax) {  // never made under a cut name
    errno = ENAMETOOLONG;
    file_error("Error creating directory '%.255s'", path);
    file_report(false, path, nullptr, 1);
    return k_fail;
  }
  if (!file_path_trusted(path)) {
    file_report(false, path, nullptr, 1);
    return k_fail;
  }
  char dir[kPathSize];
  int length = str_copy(dir, path, kPathSize);
  if (length > 0 && is_separator(dir[length - 1])) dir[--length] = '\0';
  errno = 0;
  bool made = false;
  int last_error = 0;
  auto attempt = [&](const char* part) {
    if (make_path(part)) {
      made = true;
    } else {
      last_error = errno;
    }
  };
  if (parents) {
    int start = dir[0] != '\0' && dir[1] == ':' ? 3 : 1;
    for (int at = start; at < length; ++at) {
      if (!is_separator(dir[at])) continue;
      dir[at] = '\0';
      attempt(dir);
      dir[at] = '/';
    }
  }
  attempt(dir);
  if (made || last_error == EEXIST) return k_ok;
  errno = last_error;
  file_error("Error creating directory '%s'", path);
  file_report(false, path, nullptr, 1);
  return k_fail;
}

int file_remove_tree(const char* path, const char* exclude, int recursive) {
  if (path == nullptr) return 0;
  std::string name;
  unique_fd parent = file_open_parent(path, &name);
  if (!parent) {
    file_report(false, path, nullptr, 0);
    return 0;
  }
  struct stat status {};
  fstatat(parent.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW);
  return remove_at(parent.get(), name.c_str(), path, status, exclude, recursive);
}
