// Trees: making directories with their parents, copying, moving and removing
// whole directories. Walks read one directory stream per level and decide
// "directory or not" from the entry's own link status, so a symbolic link is
// never walked into, on the source side or the destination side; memory
// grows with the depth of a tree, not its size. The paths a walk starts from
// pass the owner test of file_trust.h.
#include <sys/stat.h>

#include <cerrno>

#include "fileops/file_dir.h"
#include "fileops/file_ops.h"
#include "fileops/file_trust.h"
#include "fileops/wild_match.h"
#include "foundation/logger.h"
#include "foundation/results.h"

namespace {

constexpr mode_t kDirMode = 0775;

void report(bool ok, const char* source, const char* destination, int is_file) {
  file_callback_pair callbacks;
  file_get_callbacks(&callbacks);
  file_step_callback callback = ok ? callbacks.done : callbacks.failed;
  if (callback != nullptr) callback(source, destination, is_file);
}

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
  report(false, path, nullptr, is_file);
}

// One mkdir; true when it made the directory. A failure leaves its errno.
bool make_one(const char* path) {
  if (mkdir(path, kDirMode) != 0) return false;
  log_debug("Directory created '%s'", path);
  report(true, path, nullptr, 1);
  return true;
}

// What a copy or move walk carries down the tree.
struct tree_walk {
  const char* exclude;
  int recursive;
  unsigned* bytes;
  bool move;
  struct stat top_destination;  // never walked as a source (a copy into itself)
};

int walk_dir(const tree_walk& walk, const char* source_dir, const char* pattern,
             const char* destination_dir);
int remove_tree(const char* path, const char* exclude, int recursive);

bool is_top_destination(const tree_walk& walk, const file_entry* entry) {
  return entry->status.st_dev == walk.top_destination.st_dev &&
         entry->status.st_ino == walk.top_destination.st_ino;
}

// A sub-directory: moved or copied whole, or only made, as the walk says.
int walk_subdir(const tree_walk& walk, const file_entry* entry, const char* target) {
  if (!walk.recursive) return file_mkdir(target, 1) != 0 ? 1 : 0;
  if (is_top_destination(walk, entry)) return 0;
  int count = walk_dir(walk, entry->path, "*", target);
  if (!walk.move) return count;
  if (remove_tree(entry->path, walk.exclude, walk.recursive) > 0) return count + 1;
  file_error("Failed to remove moved directory '%s'", target);
  return count;
}

int walk_entry(const tree_walk& walk, const file_entry* entry, const char* destination_dir) {
  const char* name = file_entry_name(entry);
  char target[kPathSize];
  if (excluded(name, walk.exclude) || !file_path_join(target, destination_dir, name)) return 0;
  if (file_entry_is_dir(entry)) return walk_subdir(walk, entry, target);
  int result = walk.move ? file_move(entry->path, target, walk.recursive, walk.bytes)
                         : file_copy(entry->path, target, 1, walk.bytes);
  return result != k_fail ? 1 : 0;
}

// Makes a missing destination with its parents: 1 made, 0 already there,
// -1 failed or a link stands at its name (never followed, whoever owns it).
int ensure_destination(const char* destination_dir) {
  if (file_is_link(destination_dir)) {
    refuse_link(destination_dir, 1);
    return -1;
  }
  if (file_path_type(destination_dir) != 0) return 0;
  return file_mkdir(destination_dir, 1) != 0 ? 1 : -1;
}

int walk_listing(const tree_walk& walk, const char* source_dir, const char* pattern,
                 const char* destination_dir) {
  int count = 0;
  file_listing* listing = nullptr;
  file_entry* entry = file_dir_open(&listing, source_dir, pattern);
  if (entry == nullptr) return 0;
  do {
    count += walk_entry(walk, entry, destination_dir);
  } while (file_dir_next(entry, listing));
  file_entry_free(&entry);
  file_dir_close(&listing);
  return count;
}

int walk_dir(const tree_walk& walk, const char* source_dir, const char* pattern,
             const char* destination_dir) {
  int made = ensure_destination(destination_dir);
  if (made < 0) return 0;
  return made + walk_listing(walk, source_dir, pattern, destination_dir);
}

int start_walk(const char* source_dir, const char* pattern, const char* exclude,
               const char* destination_dir, int recursive, unsigned* bytes, bool move) {
  if (source_dir == nullptr || destination_dir == nullptr) return 0;
  if (!file_parent_trusted(destination_dir)) {
    report(false, destination_dir, nullptr, 1);
    return 0;
  }
  int made = ensure_destination(destination_dir);
  if (made < 0) return 0;
  tree_walk walk{exclude, recursive, bytes, move, {}};
  stat(destination_dir, &walk.top_destination);
  return made + walk_listing(walk, source_dir, pattern != nullptr ? pattern : "*",
                             destination_dir);
}

// Removes one listed entry below a tree being removed; 1 when it went.
int remove_entry(const file_entry* entry, const char* exclude) {
  if (file_entry_is_dir(entry)) {
    int count = remove_tree(entry->path, exclude, 1);
    report(count > 0, entry->path, nullptr, 0);
    return count;
  }
  bool removed = file_remove(entry->path) != 0;
  report(removed, entry->path, nullptr, 0);
  return removed ? 1 : 0;
}

// A link at path is removed itself: listing it would list where it points.
int remove_tree(const char* path, const char* exclude, int recursive) {
  int count = 0;
  file_listing* listing = nullptr;
  bool walk = recursive && !file_is_link(path);
  file_entry* entry = walk ? file_dir_open(&listing, path, "*") : nullptr;
  if (entry != nullptr) {
    do {
      if (!excluded(file_entry_name(entry), exclude)) count += remove_entry(entry, exclude);
    } while (file_dir_next(entry, listing));
    file_entry_free(&entry);
    file_dir_close(&listing);
  }
  bool removed = file_remove(path) != 0;
  report(removed, path, nullptr, 0);
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

int file_mkdir(const char* path, int parents) {
  if (path == nullptr) return k_fail;
  if (!file_path_trusted(path)) {
    report(false, path, nullptr, 1);
    return k_fail;
  }
  char dir[kPathSize];
  int length = str_copy(dir, path, kPathSize);
  if (length > 0 && is_separator(dir[length - 1])) dir[--length] = '\0';
  errno = 0;
  bool made = false;
  int last_error = 0;
  auto attempt = [&](const char* part) {
    if (make_one(part)) {
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
  report(false, path, nullptr, 1);
  return k_fail;
}

int file_remove_tree(const char* path, const char* exclude, int recursive) {
  if (path == nullptr) return 0;
  if (!file_parent_trusted(path)) {
    report(false, path, nullptr, 0);
    return 0;
  }
  return remove_tree(path, exclude, recursive);
}
