#include "copyscript/copy_plan.h"

#include <algorithm>
#include <string>
#include <vector>

#include "copyscript/copy_tree.h"
#include "fileops/file_trust.h"
#include "fileops/file_view.h"
#include "fileops/wild_match.h"
#include "foundation/console.h"
#include "foundation/file_guard.h"
#include "foundation/handles.h"
#include "foundation/str_text.h"
#include "settings/ini_store.h"

namespace {

// One plan in progress: the view it works on, the bytes its copies would
// write, and why the line at hand would fail.
struct planner {
  copy_script* script;
  file_view* view;
  unsigned bytes = 0;
  std::string why;
};

using entries = std::vector<file_view_entry>;

const char* kind_of(const file_view_status& status) {
  if (status.is_dir) return "dir";
  if (status.is_link) return "link";
  return status.is_regular ? "file" : "special";
}

// "uid:gid mode", as the plan shows what would stand at a name.
std::string owner_and_mode(const file_view_status& status) {
  char text[64];
  snprintf(text, sizeof text, "%u:%u %04o", static_cast<unsigned>(status.uid),
           static_cast<unsigned>(status.gid), static_cast<unsigned>(status.mode));
  return text;
}

int fail(planner& plan, const std::string& why) {
  plan.why = why;
  return 0;
}

bool excluded_nocase(const std::string& name, const std::optional<std::string>& not_list) {
  return not_list && wild_list_match_nocase(name.c_str(), not_list->c_str()) != 0;
}

// Below the top level a tree copy compares its exclusions exactly.
bool excluded_exact(const std::string& name, const char* not_list) {
  return not_list != nullptr && wild_list_match(name.c_str(), not_list) != 0;
}

std::string joined(const std::string& dir, const std::string& name) {
  return file_view_key(dir + "/" + name);
}

// A name the run would give up on rather than cut.
bool too_long(planner& plan, const std::string& path) {
  if (path.size() <= static_cast<size_t>(kPathMax)) return false;
  console_printf("  skip %s: longer than %d characters\n", path.c_str(), kPathMax);
  fail(plan, "a path would be longer than 255 characters");
  return true;
}

bool is_dir_in_view(planner& plan, const std::string& path) {
  return file_view_type(plan.view, path) == 2;
}

// Whether a file opened for writing by name (Ini, WFile, RFile) would open:
// its directory there, and nothing at its name but a regular file.
bool writable(planner& plan, const std::string& path) {
  std::string dir = copy_path_dir(path);
  if (!is_dir_in_view(plan, dir)) return fail(plan, "no directory " + dir) != 0;
  file_view_status at = file_view_stat(plan.view, path);
  if (at.is_link) return fail(plan, "a link stands at " + path + ", never written through") != 0;
  if (at.exists && !at.is_regular)
    return fail(plan, "a " + std::string(kind_of(at)) + " stands at " + path) != 0;
  return true;
}

// Prints a file written at path with size bytes (null: not known ahead) and
// lays it into the view.
void write_file(planner& plan, const char* verb, const std::string& what, const std::string& path,
                const off_t* size) {
  file_view_status at = file_view_stat(plan.view, path);
  std::string state =
      at.exists ? "over the file there, which keeps " + owner_and_mode(at)
                : "new file " + owner_and_mode(file_view_new_status(plan.view, path, false));
  std::string bytes = size != nullptr ? std::to_string(*size) + " bytes" : "size not known ahead";
  console_printf("  %s %s%s (%s, %s)\n", verb, what.c_str(), path.c_str(), bytes.c_str(),
                 state.c_str());
  file_view_write(plan.view, path, size != nullptr ? *size : 0);
}

void make_dir(planner& plan, const std::string& path) {
  console_printf("  make dir %s (%s)\n", path.c_str(),
                 owner_and_mode(file_view_new_status(plan.view, path, true)).c_str());
  file_view_make_dir(plan.view, path);
}

// ---- copies ------------------------------------------------------------------

int copy_file(planner& plan, const file_view_entry& source, const std::string& target) {
  file_view_status at = file_view_stat(plan.view, target);
  if (at.exists && !at.is_regular) {  // a link too: never written through
    console_printf("  fail %s: a %s stands there\n", target.c_str(), kind_of(at));
    return fail(plan, "a " + std::string(kind_of(at)) + " stands at " + target);
  }
  if (source.path == target) return fail(plan, "copies " + target + " onto itself");
  const std::string what = source.path + " -> ";
  if (source.status.is_link) {  // opened only when no other account controls it
    if (file_view_type(plan.view, source.path) != 1 || !file_path_trusted(source.path.c_str())) {
      off_t empty = 0;
      write_file(plan, "copy (fails, a link it will not follow, leaving it empty)", what, target,
                 &empty);
      return fail(plan, source.path + " is a link the run will not follow");
    }
    write_file(plan, "copy through the link", what, target, nullptr);
    return 1;
  }
  if (!source.status.is_regular) {
    off_t empty = 0;
    write_file(plan, "copy (fails, not a regular file, leaving it empty)", what, target, &empty);
    return fail(plan, source.path + " is not a regular file");
  }
  write_file(plan, "copy", what, target, &source.status.size);
  plan.bytes += static_cast<unsigned>(source.status.size);
  return 1;
}

int copy_below(planner& plan, const std::string& from, const std::string& into,
               const char* not_list, const std::string& top);

// A directory copied whole into target (made when missing, counted then).
int copy_tree(planner& plan, const file_view_entry& source, const std::string& target,
              const char* not_list, const std::string& top) {
  file_view_status at = file_view_stat(plan.view, target);
  int made = 0;
  if (!at.exists) {
    make_dir(plan, target);
    made = 1;
  } else if (!at.is_dir) {
    console_printf("  fail %s: a %s stands there\n", target.c_str(), kind_of(at));
    return fail(plan, "a " + std::string(kind_of(at)) + " stands at " + target);
  }
  return made + copy_below(plan, source.path, target, not_list, top);
}

int copy_below(planner& plan, const std::string& from, const std::string& into,
               const char* not_list, const std::string& top) {
  int count = 0;
  for (const file_view_entry& entry : file_view_list(plan.view, from, "*")) {
    const std::string target = joined(into, entry.name);
    if (excluded_exact(entry.name, not_list) || too_long(plan, target)) continue;
    if (!entry.status.is_dir) {
      count += copy_file(plan, entry, target);
    } else if (entry.path != top) {  // never a copy into itself
      count += copy_tree(plan, entry, target, not_list, top);
    }
  }
  return count;
}

// The directories matching the destination's pattern that are not left out.
entries destination_dirs(planner& plan, const copy_line& line) {
  entries dirs;
  std::optional<std::string> pattern =
      line.destination ? copy_path_destination_pattern(*line.destination) : std::nullopt;
  if (!pattern) return dirs;
  const std::string dir = copy_path_dir(*line.destination);
  for (file_view_entry& entry : file_view_list(plan.view, dir, pattern->c_str())) {
    if (entry.status.is_dir && !excluded_nocase(entry.name, line.not_list)) {
      dirs.push_back(std::move(entry));
    }
  }
  return dirs;
}

std::string names_of(const entries& list) {
  std::string names;
  for (const file_view_entry& entry : list) {
    if (!names.empty()) names += ", ";
    names += entry.status.is_dir ? entry.name + "/" : entry.name;
  }
  return names;
}

int copy_into(planner& plan, const copy_line& line, const file_view_entry& into, bool whole_trees) {
  const std::string dir = copy_path_dir(*line.source);
  const std::string pattern = copy_path_source_pattern(*line.source);
  entries sources = file_view_list(plan.view, dir, pattern.c_str());
  if (sources.empty()) {
    console_printf("  no sources in %s match %s\n", dir.c_str(), pattern.c_str());
    return 0;
  }
  console_printf("  sources in %s matching %s: %s\n", dir.c_str(), pattern.c_str(),
                 names_of(sources).c_str());
  const char* not_list = line.not_list ? line.not_list->c_str() : nullptr;
  int count = 0;
  for (const file_view_entry& source : sources) {
    const std::string target = joined(into.path, source.name);
    if (excluded_nocase(source.name, line.not_list)) {
      console_printf("  leave out %s\n", source.path.c_str());
      continue;
    }
    if (too_long(plan, target)) continue;  // a directory CopyFile skips too, as the run does
    if (!source.status.is_dir) {
      count += copy_file(plan, source, target);
    } else if (whole_trees) {
      count += copy_tree(plan, source, target, not_list, target);
    } else {
      console_printf("  skip dir %s (CopyFile copies files only)\n", source.path.c_str());
    }
  }
  return count;
}

int plan_copy(planner& plan, const copy_line& line, bool whole_trees) {
  entries dirs = destination_dirs(plan, line);
  if (dirs.empty()) {
    console_printf("  no destination directory matches %s\n",
                   line.destination ? line.destination->c_str() : "(none)");
    return fail(plan, "No destination directories found");
  }
  std::string paths;
  for (const file_view_entry& dir : dirs) paths += (paths.empty() ? "" : ", ") + dir.path;
  console_printf("  destination directories: %s\n", paths.c_str());
  if (!line.source) return 0;
  int count = 0;
  for (const file_view_entry& into : dirs) count += copy_into(plan, line, into, whole_trees);
  if (count == 0 && plan.why.empty()) plan.why = "nothing matched it";
  return count;
}

// ---- making, writing, renaming ----------------------------------------------

// As file_mkdir: each missing directory on the way made in turn; done when
// one was made or the last one tried was there already.
int plan_mkdir(planner& plan, const std::string& path) {
  if (path.size() > static_cast<size_t>(kPathMax)) return fail(plan, "File name too long");
  if (!file_path_trusted(path.c_str())) return fail(plan, "a link on the way is not trusted");
  const std::string key = file_view_key(path);
  bool made = false;
  bool last_there = false;
  for (size_t at = 1; at <= key.size(); ++at) {
    if (at < key.size() && key[at] != '/') continue;
    const std::string part = key.substr(0, at);
    last_there = file_view_stat(plan.view, part).exists;
    if (last_there || !is_dir_in_view(plan, copy_path_dir(part))) continue;
    make_dir(plan, part);
    made = true;
  }
  if (!made && last_there) console_printf("  %s is there already\n", key.c_str());
  return made || last_there ? 1 : fail(plan, "cannot make " + key);
}

// A template's size as Ini would write it, when its text is on disk.
bool template_size(planner& plan, const std::string& source, off_t* size) {
  std::optional<std::string> disk = file_view_disk_path(plan.view, source);
  if (!disk) return false;
  unique_file in(file_open_named(disk->c_str(), "r"));
  if (!in) return false;
  char piece[k_template_line_size];
  *size = 0;
  while (fgets(piece, sizeof piece, in.get()) != nullptr) {
    *size += static_cast<off_t>(copy_template_line(plan.script, piece).size());
  }
  return true;
}

int plan_ini(planner& plan, const copy_line& line) {
  const std::string& target = *line.destination;
  if (!writable(plan, target)) return 0;
  file_view_status source = file_view_stat(plan.view, *line.source);
  const bool readable =
      source.is_regular || (source.is_link && file_view_type(plan.view, *line.source) == 1);
  off_t empty = 0;
  if (!readable) {  // the run opens the destination first
    write_file(plan, "empty", "(no template at " + *line.source + ") ", target, &empty);
    return fail(plan, "no template " + *line.source);
  }
  off_t size = 0;
  const bool known = template_size(plan, *line.source, &size);
  write_file(plan, "write", "from template " + *line.source + ": ", target,
             known ? &size : nullptr);
  return 1;
}

int plan_write_file(planner& plan, const copy_line& line) {
  const std::string& path = *line.source;
  if (!writable(plan, path)) return 0;
  const char* name = line.destination->c_str();
  const char* value = ini_get(plan.script->store, name);
  const std::string text = value != nullptr ? value : name;
  off_t size = static_cast<off_t>(text.size());
  write_file(plan, "write", "\"" + text + "\" to ", path, &size);
  return 1;
}

int plan_read_file(planner& plan, const copy_line& line) {
  const std::string& path = *line.source;
  if (!writable(plan, path)) return 0;
  off_t empty = 0;
  write_file(plan, "empty", "(RFile opens its file for writing and reads nothing) ", path, &empty);
  return 1;
}

// As rename(2): the source there, the destination's directory there, and
// what stands at the destination replaceable by it.
bool renames(planner& plan, const std::string& from, const std::string& to) {
  file_view_status source = file_view_stat(plan.view, from);
  if (!source.exists) return fail(plan, "no " + from) != 0;
  if (!is_dir_in_view(plan, copy_path_dir(to))) return fail(plan, "no directory for " + to) != 0;
  file_view_status target = file_view_stat(plan.view, to);
  if (!target.exists || file_view_key(from) == file_view_key(to)) return true;
  if (target.is_dir != source.is_dir) return fail(plan, "cannot replace " + to) != 0;
  if (target.is_dir && !file_view_list(plan.view, to, "*").empty()) {
    return fail(plan, to + " is a directory that is not empty") != 0;
  }
  return true;
}

// ---- removing, owners, modes -------------------------------------------------

void remove_one(planner& plan, const file_view_entry& entry) {
  console_printf("  remove %s %s\n", kind_of(entry.status), entry.path.c_str());
  file_view_remove(plan.view, entry.path);
}

int remove_tree(planner& plan, const file_view_entry& dir) {
  int count = 0;
  for (const file_view_entry& entry : file_view_list(plan.view, dir.path, "*")) {
    if (entry.status.is_dir) {
      count += remove_tree(plan, entry);
    } else {
      remove_one(plan, entry);
      ++count;
    }
  }
  remove_one(plan, dir);
  return count + 1;
}

int plan_remove(planner& plan, const copy_line& line, bool with_dirs) {
  const std::string dir = copy_path_dir(*line.source);
  const std::string pattern = copy_path_source_pattern(*line.source);
  int count = 0;
  for (const file_view_entry& entry : file_view_list(plan.view, dir, pattern.c_str())) {
    if (excluded_nocase(entry.name, line.not_list)) {
      console_printf("  leave out %s\n", entry.path.c_str());
    } else if (!entry.status.is_dir) {
      remove_one(plan, entry);
      ++count;
    } else if (with_dirs) {
      count += remove_tree(plan, entry);
    } else {
      console_printf("  skip dir %s (RmFile removes files only)\n", entry.path.c_str());
    }
  }
  if (count == 0) {
    console_printf("  nothing in %s matches %s\n", dir.c_str(), pattern.c_str());
    plan.why = "nothing matched it";
  }
  return count;
}

// One owner or mode change over a tree.
struct change {
  bool owner;
  int uid;
  int gid;
  int mode;
  const std::optional<std::string>& not_list;
};

void change_one(planner& plan, const change& wanted, const file_view_entry& entry) {
  const char* path = entry.path.c_str();
  if (!wanted.owner) {
    if (entry.status.is_link) {
      console_printf("  leave link %s (a link has no mode of its own)\n", path);
      return;
    }
    console_printf("  chmod %s to %04o\n", path, static_cast<unsigned>(wanted.mode & 07777));
    file_view_chmod(plan.view, entry.path, static_cast<mode_t>(wanted.mode));
    return;
  }
  if (entry.status.is_link && !file_owner_trusted(entry.status.uid) &&
      file_owner_trusted(static_cast<uid_t>(wanted.uid))) {
    console_printf("  leave link %s to its owner\n", path);
    return;
  }
  console_printf("  chown %s to %d:%d\n", path, wanted.uid, wanted.gid);
  file_view_chown(plan.view, entry.path, static_cast<uid_t>(wanted.uid),
                  static_cast<gid_t>(wanted.gid));
}

// The entries of dir matching pattern and everything below them, a
// directory's contents before the directory itself.
int change_listing(planner& plan, const change& wanted, const std::string& dir,
                   const char* pattern) {
  int count = 0;
  for (const file_view_entry& entry : file_view_list(plan.view, dir, pattern)) {
    if (excluded_nocase(entry.path, wanted.not_list)) {
      console_printf("  leave out %s\n", entry.path.c_str());
      continue;
    }
    if (entry.status.is_dir) count += change_listing(plan, wanted, entry.path, "*");
    change_one(plan, wanted, entry);
    ++count;
  }
  return count;
}

int plan_change(planner& plan, const copy_line& line, bool owner) {
  change wanted{owner, 0, 0, copy_line_mode(line), line.not_list};
  if (owner) {
    copy_owner_ids(plan.script, line, &wanted.uid, &wanted.gid);
    if (wanted.uid == -1) return fail(plan, "this host has no user " + *line.destination);
    if (wanted.gid == -1) wanted.gid = wanted.uid;
  }
  const std::string pattern = copy_path_source_pattern(*line.source);
  int count = change_listing(plan, wanted, copy_path_dir(*line.source), pattern.c_str());
  if (count == 0) plan.why = "nothing matched it";
  return count;
}

// ---- one line -----------------------------------------------------------------

// MkDir, Ini and Rename fall back to a plain copy when they fail.
int plan_copy_group(planner& plan, const copy_line& line) {
  if (line.type == k_copy_file || line.type == k_copy_dir) {
    return plan_copy(plan, line, line.type == k_copy_dir);
  }
  int done = 0;
  if (line.type == k_copy_mkdir) done = plan_mkdir(plan, *line.source);
  if (line.type == k_copy_ini) done = plan_ini(plan, line);
  if (line.type == k_copy_rename && renames(plan, *line.source, *line.destination)) {
    console_printf("  rename %s -> %s\n", line.source->c_str(), line.destination->c_str());
    file_view_rename(plan.view, *line.source, *line.destination);
    done = 1;
  }
  if (done) return done;
  console_printf("  that fails (%s), so the line falls back to a copy\n", plan.why.c_str());
  plan.why.clear();
  return plan_copy(plan, line, false);
}

int plan_exist(planner& plan, const copy_line& line) {
  const char* value = file_view_type(plan.view, *line.source) != 0 ? "true" : "false";
  console_printf("  set %s to %s\n", line.destination->c_str(), value);
  ini_set(plan.script->store, line.destination->c_str(), value);
  return 1;
}

int plan_error(planner& plan, const copy_line& line) {
  const char* value = ini_get(plan.script->store, line.source->c_str());
  if (value == nullptr || !str_is_false(value)) return 1;
  return fail(plan, line.destination ? *line.destination : "");
}

// The line with "\" read as "/" in its path fields, as the run reads path
// texts; the names the plan then lists keep theirs as part of the name.
copy_line with_slashes(const copy_line& line) {
  auto slashes = [](std::optional<std::string>& field) {
    if (field) std::replace(field->begin(), field->end(), '\\', '/');
  };
  copy_line paths = line;
  if (line.type != k_copy_error) slashes(paths.source);
  if ((line.type & k_copy_group) != 0 && line.type != k_copy_mkdir) slashes(paths.destination);
  return paths;
}

int plan_line(planner& plan, const copy_line& written) {
  if (!written.source) return 0;
  const copy_line line = with_slashes(written);
  if (line.type & k_copy_group) return plan_copy_group(plan, line);
  if (line.type & k_remove_group) return plan_remove(plan, line, line.type == k_copy_rm_dir);
  switch (line.type) {
    case k_copy_exist: return plan_exist(plan, line);
    case k_copy_chown: return plan_change(plan, line, true);
    case k_copy_chmod: return plan_change(plan, line, false);
    case k_copy_error: return plan_error(plan, line);
    case k_copy_wfile: return plan_write_file(plan, line);
    case k_copy_rfile: return plan_read_file(plan, line);
    default: return fail(plan, "unknown operation");
  }
}

// "Line 5: CopyFile <source> <not> <destination> [<control> [<comparison>]]",
// the fields as the run reads them.
void print_line(int index, const copy_line& line) {
  const copy_operation_word* op = copy_operation_of(line.type);
  std::string text = op != nullptr ? op->word : "?";
  for (const std::optional<std::string>* field :
       {&line.source, &line.not_list, &line.destination, &line.control, &line.control_cmp}) {
    if (*field) {
      text += " " + **field;
    } else if (field == &line.not_list && op != nullptr && (op->fields & k_field_not) != 0) {
      text += " -";  // no exclusion
    }
  }
  console_printf("Line %d: %s\n", index + 1, text.c_str());
}

// Says how the line's control decides; false when it says no.
bool control_lets_run(ini_store* store, const copy_line& line) {
  const bool runs = copy_line_allowed(store, line);
  if (!line.control) return true;
  const char* value = ini_get(store, line.control->c_str());
  console_printf("  %s: %s is %s%s%s\n", runs ? "runs" : "skipped", line.control->c_str(),
                 value != nullptr ? value : "not set", line.control_cmp ? ", compared with " : "",
                 line.control_cmp ? line.control_cmp->c_str() : "");
  return runs;
}

void print_changes(file_view* view) {
  std::vector<file_view_change> changes = file_view_changes(view);
  console_printf("\nNames it would change (%zu):\n", changes.size());
  for (const file_view_change& changed : changes) {
    if (!changed.after.exists) {
      console_printf("  removed %s %s\n", kind_of(changed.before), changed.path.c_str());
      continue;
    }
    console_printf("  %s %s %s %s\n", changed.before.exists ? "changed" : "new",
                   kind_of(changed.after), owner_and_mode(changed.after).c_str(),
                   changed.path.c_str());
  }
}

}  // namespace

int copy_script_plan(copy_script* script, int stop_on_fail, copy_plan_result* result) {
  copy_plan_result outcome;
  if (script == nullptr) {
    if (result != nullptr) *result = outcome;
    return 0;
  }
  file_callback_pair saved;
  file_get_callbacks(&saved);
  file_set_callbacks(nullptr, nullptr);
  planner plan{script, file_view_create(), 0, {}};
  outcome.completed = 1;
  for (int index = 0; index < copy_count(script); ++index) {
    const copy_line& line = *copy_line_at(script, index);
    print_line(index, line);
    if (!control_lets_run(script->store, line)) continue;
    plan.why.clear();
    int done = copy_tree_paths_trusted(line) ? plan_line(plan, line)
                                             : fail(plan, "a link on the way is not trusted");
    if (done > 0) {
      console_printf("  done: %d\n", done);
      outcome.files += done;
      continue;
    }
    if (plan.why.empty()) plan.why = "nothing matched it";
    console_printf("  fails: %s\n", plan.why.c_str());
    if (outcome.failure.index < 0) outcome.failure = {index, plan.why};
    if (stop_on_fail) {
      console_print("  The run stops here: it stops at the first failing line.\n");
      outcome.completed = 0;
      break;
    }
  }
  outcome.bytes = plan.bytes;
  print_changes(plan.view);
  file_view_free(&plan.view);
  file_set_callback_pair(&saved);
  if (result != nullptr) *result = outcome;
  return outcome.completed;
}
