#include "fileops/file_view.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>
#include <optional>
#include <set>
#include <string_view>

#include "fileops/file_dir.h"
#include "fileops/file_ops.h"
#include "fileops/file_trust.h"
#include "fileops/wild_match.h"

namespace {

constexpr mode_t kFileMode = 0666;
constexpr mode_t kDirMode = 0775;
constexpr mode_t kModeBits = 07777;

// A name the plan touched: what stands there now, and for a directory the
// real directory whose names show below it (none for one the plan made).
struct record {
  file_view_status now;
  std::optional<std::string> backing;
};

file_view_status from_stat(const struct stat& status) {
  file_view_status view;
  view.exists = true;
  view.is_dir = S_ISDIR(status.st_mode);
  view.is_link = S_ISLNK(status.st_mode);
  view.is_regular = S_ISREG(status.st_mode);
  view.uid = status.st_uid;
  view.gid = status.st_gid;
  view.mode = status.st_mode & kModeBits;
  view.size = status.st_size;
  return view;
}

// The disk's status of path's own name, read as the walks read it.
file_view_status disk_status(const std::string& path) {
  file_entry* entry = file_entry_new(path.c_str());
  file_view_status status;
  if (entry != nullptr) status = from_stat(entry->status);
  file_entry_free(&entry);
  return status;
}

// What every name below key starts with.
std::string below_prefix(const std::string& key) { return key == "/" ? key : key + "/"; }

std::string parent_of(const std::string& key) {
  size_t slash = key.rfind('/');
  if (slash == std::string::npos) return "";
  return slash == 0 ? "/" : key.substr(0, slash);
}

std::string join(const std::string& dir, const std::string& name) {
  return dir.empty() ? name : below_prefix(dir) + name;
}

// The path of an element of a map or a set keyed by path.
template <typename Value>
const std::string& path_of(const std::pair<const std::string, Value>& element) {
  return element.first;
}
const std::string& path_of(const std::string& element) { return element; }

// Calls visit(element) for each element of names (a map or set keyed by
// path) that stands below key, in path order.
template <typename Names, typename Visit>
void for_each_below(Names& names, const std::string& key, Visit visit) {
  const std::string prefix = below_prefix(key);
  for (auto at = names.lower_bound(prefix);
       at != names.end() && std::string_view(path_of(*at)).starts_with(prefix); ++at) {
    visit(*at);
  }
}

bool same_state(const file_view_status& a, const file_view_status& b) {
  if (a.exists != b.exists) return false;
  if (!a.exists) return true;
  return a.is_dir == b.is_dir && a.is_link == b.is_link && a.is_regular == b.is_regular &&
         a.uid == b.uid && a.gid == b.gid && a.mode == b.mode;
}

}  // namespace

struct file_view {
  std::map<std::string, record> records;
  // Names written by the plan: a rewrite counts as a change even when the
  // owner and mode stay.
  std::set<std::string> written;
  uid_t uid = geteuid();
  gid_t gid = getegid();
  mode_t mask = 0;
};

namespace {

// The nearest record at or above key, or null.
const std::pair<const std::string, record>* nearest_record(const file_view& view,
                                                           const std::string& key) {
  for (std::string at = key; !at.empty(); at = parent_of(at)) {
    auto found = view.records.find(at);
    if (found != view.records.end()) return &*found;
    if (at == "/") break;
  }
  return nullptr;
}

// The real path standing at key in the view, or none for a name the plan
// made, removed or placed under one it made or removed.
std::optional<std::string> backing_of(const file_view& view, const std::string& key) {
  const auto* found = nearest_record(view, key);
  if (found == nullptr) return key;
  const record& held = found->second;
  if (found->first == key) return held.now.exists ? held.backing : std::nullopt;
  if (!held.now.exists || !held.now.is_dir || !held.backing) return std::nullopt;
  return join(*held.backing, key.substr(below_prefix(found->first).size()));
}

file_view_status status_of(const file_view& view, const std::string& key) {
  auto found = view.records.find(key);
  if (found != view.records.end()) return found->second.now;
  std::optional<std::string> backing = backing_of(view, key);
  return backing ? disk_status(*backing) : file_view_status{};
}

// The record of key, made from what the view shows there when it has none.
record& touch(file_view& view, const std::string& key) {
  auto found = view.records.find(key);
  if (found != view.records.end()) return found->second;
  record made{status_of(view, key), backing_of(view, key)};
  return view.records.emplace(key, std::move(made)).first->second;
}

// Marks every record below key as removed, so nothing made there earlier
// shows through a directory made again at key.
void remove_below(file_view& view, const std::string& key) {
  for_each_below(view.records, key, [](auto& below) { below.second = record{}; });
}

}  // namespace

file_view* file_view_create() {
  auto* view = new file_view;
  view->mask = umask(0);
  umask(view->mask);
  return view;
}

void file_view_free(file_view** view) {
  if (view == nullptr) return;
  delete *view;
  *view = nullptr;
}

std::string file_view_key(const std::string& path) {
  std::string key;
  for (char c : path) {
    if (c == '/' && !key.empty() && key.back() == '/') continue;
    key += c;
  }
  if (key.size() > 1 && key.back() == '/') key.pop_back();
  return key;
}

file_view_status file_view_stat(file_view* view, const std::string& path) {
  if (view == nullptr) return {};
  return status_of(*view, file_view_key(path));
}

int file_view_type(file_view* view, const std::string& path) {
  if (view == nullptr) return 0;
  const std::string key = file_view_key(path);
  file_view_status status = status_of(*view, key);
  if (status.is_link) {
    std::optional<std::string> backing = backing_of(*view, key);
    return backing ? file_path_type(backing->c_str()) : 0;
  }
  if (!status.exists) return 0;
  return status.is_dir ? 2 : 1;
}

std::vector<file_view_entry> file_view_list(file_view* view, const std::string& dir,
                                            const char* pattern) {
  std::vector<file_view_entry> entries;
  if (view == nullptr || pattern == nullptr) return entries;
  const std::string key = file_view_key(dir);
  if (!status_of(*view, key).is_dir) return entries;
  std::map<std::string, bool> listed;
  if (std::optional<std::string> backing = backing_of(*view, key)) {
    file_listing* listing =
        file_listing_open(file_open_path(backing->c_str(), O_RDONLY | O_DIRECTORY),
                          backing->c_str(), pattern, file_status_need::full);
    file_entry entry;
    while (listing != nullptr && file_dir_next(&entry, listing)) {
      const std::string path = join(key, entry.name);
      listed[entry.name] = true;
      auto held = view->records.find(path);
      file_view_status status =
          held != view->records.end() ? held->second.now : from_stat(entry.status);
      if (status.exists) entries.push_back({entry.name, path, status});
    }
    file_dir_close(&listing);
  }
  const size_t skip = below_prefix(key).size();
  for_each_below(view->records, key, [&](const auto& below) {
    const std::string name = below.first.substr(skip);
    if (name.find('/') != std::string::npos || listed.count(name) != 0) return;
    if (below.second.now.exists && wild_match(name.c_str(), pattern)) {
      entries.push_back({name, below.first, below.second.now});
    }
  });
  return entries;
}

file_view_status file_view_new_status(file_view* view, const std::string& path, bool dir) {
  file_view_status status;
  if (view == nullptr) return status;
  file_view_status parent = status_of(*view, parent_of(file_view_key(path)));
  status.exists = true;
  status.is_dir = dir;
  status.is_regular = !dir;
  status.uid = view->uid;
  status.gid = view->gid;
  status.mode = (dir ? kDirMode : kFileMode) & ~view->mask;
  if (parent.exists && (parent.mode & S_ISGID) != 0) {
    status.gid = parent.gid;
    if (dir) status.mode |= S_ISGID;
  }
  return status;
}

std::optional<std::string> file_view_disk_path(file_view* view, const std::string& path) {
  if (view == nullptr) return std::nullopt;
  return backing_of(*view, file_view_key(path));
}

void file_view_make_dir(file_view* view, const std::string& path) {
  if (view == nullptr) return;
  const std::string key = file_view_key(path);
  file_view_status made = file_view_new_status(view, key, true);
  remove_below(*view, key);
  record& held = touch(*view, key);
  held.now = made;
  held.backing.reset();
}

void file_view_write(file_view* view, const std::string& path, off_t size) {
  if (view == nullptr) return;
  const std::string key = file_view_key(path);
  file_view_status made = file_view_new_status(view, key, false);
  record& held = touch(*view, key);
  if (!held.now.exists) held.now = made;
  held.now.size = size;
  held.backing.reset();
  view->written.insert(key);
}

void file_view_remove(file_view* view, const std::string& path) {
  if (view == nullptr) return;
  const std::string key = file_view_key(path);
  remove_below(*view, key);
  record& held = touch(*view, key);
  held.now = file_view_status{};
  held.backing.reset();
  view->written.erase(key);
}

void file_view_rename(file_view* view, const std::string& from, const std::string& to) {
  if (view == nullptr) return;
  const std::string from_key = file_view_key(from);
  const std::string to_key = file_view_key(to);
  if (from_key == to_key) return;
  record moved{status_of(*view, from_key), backing_of(*view, from_key)};
  // What the plan laid below from goes along, under to.
  auto moved_path = [&](const std::string& path) { return to_key + path.substr(from_key.size()); };
  std::vector<std::pair<std::string, record>> below;
  for_each_below(view->records, from_key, [&](const auto& held) {
    below.emplace_back(moved_path(held.first), held.second);
  });
  std::vector<std::string> written_below;
  for_each_below(view->written, from_key,
                 [&](const std::string& path) { written_below.push_back(moved_path(path)); });
  const bool was_written = view->written.count(from_key) != 0;
  file_view_remove(view, from_key);
  remove_below(*view, to_key);
  touch(*view, to_key) = moved;
  for (auto& [key, held] : below) view->records[key] = std::move(held);
  view->written.insert(written_below.begin(), written_below.end());
  if (was_written || !moved.backing || *moved.backing != to_key) view->written.insert(to_key);
}

void file_view_chown(file_view* view, const std::string& path, uid_t uid, gid_t gid) {
  if (view == nullptr) return;
  record& held = touch(*view, file_view_key(path));
  if (!held.now.exists) return;
  held.now.uid = uid;
  held.now.gid = gid;
}

void file_view_chmod(file_view* view, const std::string& path, mode_t mode) {
  if (view == nullptr) return;
  record& held = touch(*view, file_view_key(path));
  if (held.now.exists && !held.now.is_link) held.now.mode = mode & kModeBits;
}

namespace {

using change_list = std::map<std::string, file_view_change>;

void note_change(file_view& view, const std::string& key, const file_view_status& now,
                 change_list* changes) {
  file_view_status disk = disk_status(key);
  const bool written = now.exists && view.written.count(key) != 0;
  if (written || !same_state(disk, now)) (*changes)[key] = {key, disk, now};
}

// The names below key that no record holds, where the view shows something
// other than the disk's own names (a directory removed, moved or moved to):
// each compared, disk against view.
void note_below(file_view& view, const std::string& key, change_list* changes) {
  std::map<std::string, bool> names;
  if (disk_status(key).is_dir) {
    file_listing* listing = file_listing_open(file_open_path(key.c_str(), O_RDONLY | O_DIRECTORY),
                                              key.c_str(), "*", file_status_need::type);
    file_entry entry;
    while (listing != nullptr && file_dir_next(&entry, listing)) names[entry.name] = true;
    file_dir_close(&listing);
  }
  for (const file_view_entry& entry : file_view_list(&view, key, "*")) names[entry.name] = true;
  for (const auto& [name, listed] : names) {
    const std::string path = join(key, name);
    if (view.records.count(path) != 0) continue;  // noted with its record
    file_view_status now = status_of(view, path);
    note_change(view, path, now, changes);
    if (now.is_dir || disk_status(path).is_dir) note_below(view, path, changes);
  }
}

}  // namespace

std::vector<file_view_change> file_view_changes(file_view* view) {
  std::vector<file_view_change> list;
  if (view == nullptr) return list;
  change_list changes;
  for (const auto& [key, held] : view->records) {
    note_change(*view, key, held.now, &changes);
    const bool elsewhere = !held.backing || *held.backing != key;
    if (elsewhere && (held.now.is_dir || disk_status(key).is_dir)) note_below(*view, key, &changes);
  }
  for (auto& [key, changed] : changes) list.push_back(std::move(changed));
  return list;
}
