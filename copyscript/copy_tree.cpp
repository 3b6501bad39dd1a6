#include "copyscript/copy_tree.h"

#include <string>
#include <vector>

#include "fileops/file_dir.h"
#include "fileops/file_ops.h"
#include "fileops/file_trust.h"
#include "fileops/wild_match.h"
#include "foundation/logger.h"
#include "foundation/str_path.h"
#include "foundation/str_text.h"

namespace {

// Calls visit(entry) for each entry of dir matching pattern, in listing
// order, until it returns false. Returns whether anything matched.
template <typename Visit>
bool walk_listing(const char* dir, const char* pattern, Visit visit) {
  file_listing* listing = nullptr;
  file_entry* entry = file_dir_open(&listing, dir, pattern);
  bool found = entry != nullptr;
  while (entry != nullptr) {
    if (!visit(*entry) || !file_dir_next(entry, listing)) file_entry_free(&entry);
  }
  file_dir_close(&listing);
  return found;
}

bool excluded(const char* name, const char* not_list) {
  return not_list != nullptr && wild_list_match_nocase(name, not_list);
}

// The existing directories matching the destination's pattern part, by full
// path, in listing order.
std::vector<std::string> destination_dirs(const copy_script* script, int index) {
  std::vector<std::string> dirs;
  char dir[kPathSize];
  char pattern[kPathSize];
  if (copy_destination_pattern(script, index, pattern, kPathSize) == nullptr ||
      copy_destination_dir(script, index, dir, kPathSize) == nullptr) {
    return dirs;
  }
  const char* not_list = copy_not(script, index);
  walk_listing(dir, pattern, [&](const file_entry& entry) {
    if (file_entry_is_dir(&entry) && !excluded(file_entry_name(&entry), not_list)) {
      dirs.emplace_back(file_entry_path(&entry));
    }
    return true;
  });
  return dirs;
}

struct copy_source_parts {
  char dir[kPathSize];
  char pattern[kPathSize];
  const char* not_list;
  bool whole_trees;
};

// Copies the source's matching entries into one destination directory.
int copy_into(const copy_source_parts& source, const std::string& destination, unsigned* bytes) {
  int count = 0;
  bool found = walk_listing(source.dir, source.pattern, [&](const file_entry& entry) {
    const char* name = file_entry_name(&entry);
    if (excluded(name, source.not_list)) return true;
    char target[kPathSize];
    str_copy(target, destination.c_str(), kPathSize);
    str_path_join(target, name, kPathSize);
    const char* path = file_entry_path(&entry);
    if (!file_entry_is_dir(&entry)) {
      if (file_copy(path, target, 1, bytes) > 0) ++count;
    } else if (source.whole_trees) {
      count += file_copy_dir(path, "*", source.not_list, target, 1, bytes);
    }
    return true;
  });
  if (!found) {
    log_info("No files found to copy in '%s' matching '%s'", source.dir, source.pattern);
  }
  return count;
}

// One owner or mode change, with the words of its log lines.
struct tree_change {
  const char* op;        // "chown" / "chmod"
  const char* skipping;  // as in "Not chown'ing"
  const char* finished;  // as in "Finished chown'ing"
  bool owner;            // file_chown with uid/gid, else file_chmod with mode
  int uid;
  int gid;
  int mode;
};

int apply_change(const tree_change& change, const char* path) {
  return change.owner ? file_chown(path, change.uid, change.gid) : file_chmod(path, change.mode);
}

int change_tree(const tree_change& change, const char* dir, const char* pattern,
                const char* not_list) {
  int count = 0;
  bool first = true;
  bool found = walk_listing(dir, pattern, [&](const file_entry& entry) {
    if (first && not_list != nullptr) {
      log_debug("Found files to %s, not doing '%s'", change.op, not_list);
    } else if (first) {
      log_debug("Found files to %s, doing all of them", change.op);
    }
    first = false;
    const char* path = file_entry_path(&entry);
    if (excluded(path, not_list)) {
      log_debug("Not %s '%s'", change.skipping, path);
      return true;
    }
    if (file_entry_is_dir(&entry)) count += change_tree(change, path, "*", not_list);
    if (!apply_change(change, path)) {
      copy_error("file_%s failed", change.op);
      return false;
    }
    ++count;
    return true;
  });
  if (!found) log_debug("No files found to %s", change.op);
  log_debug("Finished %s, %d files done", change.finished, count);
  return count;
}

// Whether the line's source, and for the operations that write to it its
// destination, name a path (not a setting, an owner, a mode or a text).
bool source_is_path(uint32_t type) { return type != k_copy_exist && type != k_copy_error; }
bool destination_is_path(uint32_t type) {
  return type == k_copy_file || type == k_copy_dir || type == k_copy_ini || type == k_copy_rename;
}

bool dir_trusted(const char* dir) {
  if (dir == nullptr || file_path_trusted(dir)) return true;
  file_callback_pair callbacks;
  file_get_callbacks(&callbacks);
  if (callbacks.failed != nullptr) callbacks.failed(dir, nullptr, 1);
  return false;
}

}  // namespace

int copy_tree_paths_trusted(const copy_script* script, int index) {
  uint32_t type = copy_type(script, index);
  char dir[kPathSize];
  if (source_is_path(type) && !dir_trusted(copy_source_dir(script, index, dir, kPathSize))) {
    return 0;
  }
  if (destination_is_path(type) &&
      !dir_trusted(copy_destination_dir(script, index, dir, kPathSize))) {
    return 0;
  }
  return 1;
}

int copy_tree_copy(const copy_script* script, int index, int whole_trees, unsigned* bytes) {
  std::vector<std::string> destinations = destination_dirs(script, index);
  if (destinations.empty()) {
    copy_error("No destination directories found");
    return 0;
  }
  copy_source_parts source{};
  if (copy_source_dir(script, index, source.dir, kPathSize) == nullptr ||
      copy_source_pattern(script, index, source.pattern, kPathSize) == nullptr) {
    return 0;
  }
  source.not_list = copy_not(script, index);
  source.whole_trees = whole_trees != 0;
  int count = 0;
  for (const std::string& destination : destinations)
    count += copy_into(source, destination, bytes);
  return count;
}

int copy_tree_remove(const copy_script* script, int index, int with_dirs) {
  char dir[kPathSize];
  char pattern[kPathSize];
  if (copy_source_dir(script, index, dir, kPathSize) == nullptr ||
      copy_source_pattern(script, index, pattern, kPathSize) == nullptr) {
    return 0;
  }
  const char* not_list = copy_not(script, index);
  int count = 0;
  walk_listing(dir, pattern, [&](const file_entry& entry) {
    if (excluded(file_entry_name(&entry), not_list)) return true;
    const char* path = file_entry_path(&entry);
    if (!file_entry_is_dir(&entry)) {
      count += file_remove(path);
    } else if (with_dirs) {
      count += file_remove_tree(path, nullptr, 1);
    }
    return true;
  });
  return count;
}

int copy_tree_chown(const char* dir, const char* pattern, const char* not_list, int uid, int gid) {
  tree_change change{"chown", "chown'ing", "chown'ing", true, uid, gid, 0};
  return change_tree(change, dir, pattern, not_list);
}

int copy_tree_chmod(const char* dir, const char* pattern, const char* not_list, int mode) {
  tree_change change{"chmod", "chmod'ding", "chmod'ing", false, 0, 0, mode};
  return change_tree(change, dir, pattern, not_list);
}
