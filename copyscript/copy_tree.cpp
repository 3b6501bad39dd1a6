#include "copyscript/copy_tree.h"

#include <fcntl.h>

#include <cerrno>
#include <memory>
#include <vector>

#include "fileops/file_dir.h"
#include "fileops/file_ops.h"
#include "fileops/file_trust.h"
#include "fileops/wild_match.h"
#include "foundation/logger.h"
#include "foundation/str_text.h"

namespace {

// Lists dir (opened as fileops/file_trust.h says) for names matching pattern.
file_listing* open_listing(const char* dir, const char* pattern) {
  return file_listing_open(file_open_path(dir, O_RDONLY | O_DIRECTORY), dir, pattern,
                           file_status_need::type);
}

// Calls visit(entry) for each entry of listing, in listing order, until it
// returns false; closes the listing. Returns whether anything matched.
template <typename Visit>
bool visit_listing(file_listing* listing, Visit visit) {
  bool found = false;
  file_entry entry;
  while (listing != nullptr && file_dir_next(&entry, listing)) {
    found = true;
    if (!visit(entry)) break;
  }
  file_dir_close(&listing);
  return found;
}

bool excluded(const char* name, const char* not_list) {
  return not_list != nullptr && wild_list_match_nocase(name, not_list);
}

using entry_ptr = std::unique_ptr<file_entry>;

// A path field's directory and pattern, and the line's exclusions.
struct copy_source_parts {
  std::string dir;
  std::string pattern;
  const char* not_list;
  bool whole_trees;
};

copy_source_parts source_parts(const copy_line& line, bool whole_trees) {
  const std::string& path = *line.source;
  return {copy_path_dir(path), copy_path_source_pattern(path),
          line.not_list ? line.not_list->c_str() : nullptr, whole_trees};
}

// The existing directories matching the destination's pattern part, in
// listing order, each held as listed in the directory *parent holds open.
std::vector<entry_ptr> destination_dirs(const copy_line& line, unique_fd* parent) {
  std::vector<entry_ptr> dirs;
  std::optional<std::string> pattern =
      line.destination ? copy_path_destination_pattern(*line.destination) : std::nullopt;
  if (!pattern) return dirs;
  std::string dir = copy_path_dir(*line.destination);
  const char* not_list = line.not_list ? line.not_list->c_str() : nullptr;
  file_listing* listing = open_listing(dir.c_str(), pattern->c_str());
  if (listing != nullptr) parent->reset(fcntl(file_listing_fd(listing), F_DUPFD_CLOEXEC, 0));
  visit_listing(listing, [&](const file_entry& entry) {
    if (file_entry_is_dir(&entry) && !excluded(file_entry_name(&entry), not_list)) {
      dirs.emplace_back(file_entry_clone(&entry));
      dirs.back()->dir_fd = parent->get();
    }
    return true;
  });
  return dirs;
}

// The full path of name in dir for the messages, or a failed step (logged,
// never cut, so two names can never land on one).
bool join_or_refuse(char* target, const char* dir, const file_entry& entry) {
  if (file_path_join(target, dir, file_entry_name(&entry))) return true;
  errno = ENAMETOOLONG;
  file_report(false, file_entry_path(&entry), nullptr, 1);
  return false;
}

// Copies the source's matching entries into one destination directory,
// entered only while it is the directory listed.
int copy_into(const copy_source_parts& source, const file_entry& destination, unsigned* bytes) {
  unique_fd into = file_entry_open_dir(&destination);
  if (!into) return 0;
  int count = 0;
  file_listing* listing = open_listing(source.dir.c_str(), source.pattern.c_str());
  bool found = visit_listing(listing, [&](const file_entry& entry) {
    const char* name = file_entry_name(&entry);
    char target[kPathSize];
    if (excluded(name, source.not_list) || !join_or_refuse(target, destination.path, entry)) {
      return true;
    }
    if (!file_entry_is_dir(&entry)) {
      file_place from{entry.dir_fd, name, entry.path};
      file_place to{into.get(), name, target};
      if (file_copy_at(from, to, 1, bytes) > 0) ++count;
    } else if (source.whole_trees) {
      count += file_copy_tree_at(&entry, into.get(), target, source.not_list, bytes);
    }
    return true;
  });
  if (!found) {
    log_info("No files found to copy in '%s' matching '%s'", source.dir.c_str(),
             source.pattern.c_str());
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

int apply_change(const tree_change& change, const file_entry& entry, int held) {
  return change.owner ? file_entry_chown(&entry, held, change.uid, change.gid)
                      : file_entry_chmod(&entry, held, change.mode);
}

// Changes the listed entries and everything below them; a directory is
// entered, and then changed itself, through the descriptor opened on it.
int change_listing(const tree_change& change, file_listing* listing, const char* not_list) {
  int count = 0;
  bool first = true;
  bool found = visit_listing(listing, [&](const file_entry& entry) {
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
    unique_fd dir;
    if (file_entry_is_dir(&entry)) {
      dir = file_entry_open_dir(&entry);
      if (!dir) return true;  // reported when it changed; the walk goes on
      unique_fd listed(fcntl(dir.get(), F_DUPFD_CLOEXEC, 0));
      file_listing* below = file_listing_open(std::move(listed), path, "*", file_status_need::type);
      count += change_listing(change, below, not_list);
    }
    errno = 0;
    if (!apply_change(change, entry, dir ? dir.get() : -1)) {
      if (errno == EMLINK) {  // refused for this entry alone
        file_report(false, path, nullptr, 1);
        return true;
      }
      file_error("file_%s failed", change.op);
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

// Whether the directory part of a path field may be worked in.
bool dir_trusted(const std::optional<std::string>& path) {
  if (!path) return true;
  std::string dir = copy_path_dir(*path);
  if (file_path_trusted(dir.c_str())) return true;
  file_callback_pair callbacks;
  file_get_callbacks(&callbacks);
  if (callbacks.failed != nullptr) callbacks.failed(dir.c_str(), nullptr, 1);
  return false;
}

}  // namespace

int copy_tree_paths_trusted(const copy_line& line) {
  if (source_is_path(line.type) && !dir_trusted(line.source)) return 0;
  if (destination_is_path(line.type) && !dir_trusted(line.destination)) return 0;
  return 1;
}

int copy_tree_copy(const copy_line& line, int whole_trees, unsigned* bytes) {
  unique_fd parent;
  std::vector<entry_ptr> destinations = destination_dirs(line, &parent);
  if (destinations.empty()) {
    file_error("No destination directories found");
    return 0;
  }
  if (!line.source) return 0;
  copy_source_parts source = source_parts(line, whole_trees != 0);
  int count = 0;
  for (const entry_ptr& destination : destinations) count += copy_into(source, *destination, bytes);
  return count;
}

int copy_tree_remove(const copy_line& line, int with_dirs) {
  if (!line.source) return 0;
  copy_source_parts source = source_parts(line, with_dirs != 0);
  int count = 0;
  visit_listing(open_listing(source.dir.c_str(), source.pattern.c_str()),
                [&](const file_entry& entry) {
                  if (excluded(file_entry_name(&entry), source.not_list)) return true;
                  if (!file_entry_is_dir(&entry)) {
                    count += file_entry_remove(&entry);
                  } else if (source.whole_trees) {
                    count += file_remove_tree_at(&entry, nullptr);
                  }
                  return true;
                });
  return count;
}

int copy_tree_chown(const char* dir, const char* pattern, const char* not_list, int uid, int gid) {
  tree_change change{"chown", "chown'ing", "chown'ing", true, uid, gid, 0};
  return change_listing(change, open_listing(dir, pattern), not_list);
}

int copy_tree_chmod(const char* dir, const char* pattern, const char* not_list, int mode) {
  tree_change change{"chmod", "chmod'ding", "chmod'ing", false, 0, 0, mode};
  return change_listing(change, open_listing(dir, pattern), not_list);
}
