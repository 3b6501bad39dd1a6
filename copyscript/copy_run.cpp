#include "copyscript/copy_run.h"

#include <cerrno>
#include <string>

#include "copyscript/copy_tree.h"
#include "fileops/file_ops.h"
#include "fileops/file_trust.h"
#include "foundation/file_guard.h"
#include "foundation/handles.h"
#include "foundation/logger.h"
#include "foundation/str_path.h"
#include "foundation/str_text.h"
#include "settings/ini_expand.h"
#include "settings/ini_store.h"

namespace {

// Text of the last failing "Error" line.
std::string g_last_error;

// Owner texts (user:group) keep at most 998 characters, file lines read back 998.
constexpr int k_owner_size = kLineMax;
constexpr int k_read_line_size = kLineMax;
// Modes keep their low 16 bits.
constexpr unsigned k_mode_mask = 0xFFFF;

const char* text_of(const std::optional<std::string>& field) {
  return field ? field->c_str() : nullptr;
}

}  // namespace

bool copy_line_allowed(ini_store* store, const copy_line& line) {
  const char* value = line.control ? ini_get(store, line.control->c_str()) : nullptr;
  if (value == nullptr) return true;
  std::string control(value);
  const char* compare = nullptr;
  if (line.control_cmp) {
    compare = ini_get(store, line.control_cmp->c_str());
    if (compare == nullptr) compare = line.control_cmp->c_str();
  }
  if (compare == nullptr) return str_is_true(control.c_str()) != 0;
  return str_icmp(control.c_str(), compare) == 0;
}

std::string copy_template_line(copy_script* script, char* text) {
  char* line = str_trim(text);
  char* expanded = copy_expand(script, line);
  std::string rendered(expanded != nullptr ? expanded : line);
  str_free(&expanded);
  return rendered + "\n";
}

void copy_owner_ids(copy_script* script, const copy_line& line, int* uid, int* gid) {
  char owner[k_owner_size];
  str_copy(owner, text_of(line.destination), k_owner_size);
  ini_expand(script->store, text_of(line.destination), owner, k_owner_size);
  std::string user(owner);
  std::string group(owner);
  size_t colon = user.find(':');
  if (colon != std::string::npos) {
    group = user.substr(colon + 1);
    user.resize(colon);
  }
  *uid = file_user_id(user.c_str());
  log_debug("Found user id for '%s'=%d", user.c_str(), *uid);
  *gid = file_group_id(group.c_str());
  log_debug("Found group id for '%s'=%d", group.c_str(), *gid);
}

// Octal digits, read without any check of the characters.
int copy_line_mode(const copy_line& line) {
  unsigned mode = 0;
  for (const char* c = text_of(line.destination); c != nullptr && *c != '\0'; ++c) {
    mode = mode * 8 + static_cast<unsigned>(*c - '0');
  }
  return static_cast<int>(mode & k_mode_mask);
}

namespace {

// Writes the template at source to destination, line by line, trimmed and
// with settings expanded (unknown references kept).
int write_ini(copy_script* script, const char* source, const char* destination) {
  unique_file out(file_open_named(destination, "w"));
  if (!out) {
    file_error("Error creating ini file '%s'", str_or_empty(destination));
    return 0;
  }
  unique_file in(file_open_named(source, "r"));
  if (!in) {
    file_error("Error reading ini file '%s'", str_or_empty(source));
    return 0;
  }
  log_info("Writing INI file '%s' to '%s'", source, destination);
  char buffer[k_template_line_size];
  while (fgets(buffer, sizeof buffer, in.get()) != nullptr) {
    fputs(copy_template_line(script, buffer).c_str(), out.get());
  }
  if (ferror(in.get())) return 0;
  FILE* written = out.release();
  if (!file_finish(&written)) {
    file_error("Error writing ini file '%s'", destination);
    return 0;
  }
  return 1;
}

int rename_path(const char* source, const char* destination) {
  if (file_rename(source, destination)) return 1;
  int err = errno;
  char reason[kLineSize];
  file_error("Error renaming '%s'->'%s', %s", str_or_empty(source), str_or_empty(destination),
             str_error_text(err, reason, kLineSize));
  return 0;
}

// MkDir, Ini and Rename fall back to a plain copy when they fail.
int run_copy_group(copy_script* script, const copy_line& line, unsigned* bytes) {
  const char* source = text_of(line.source);
  const char* destination = text_of(line.destination);
  if (line.type == k_copy_mkdir && file_mkdir(source, 1)) return 1;
  if (line.type == k_copy_ini && write_ini(script, source, destination)) return 1;
  if (line.type == k_copy_rename && rename_path(source, destination)) return 1;
  return copy_tree_copy(line, line.type == k_copy_dir, bytes);
}

int run_exist(ini_store* store, const copy_line& line) {
  const char* value = file_path_type(text_of(line.source)) != 0 ? "true" : "false";
  ini_set(store, text_of(line.destination), value);
  return 1;
}

int run_chown(copy_script* script, const copy_line& line) {
  int uid = -1;
  int gid = -1;
  copy_owner_ids(script, line, &uid, &gid);
  if (!line.source) return 0;
  return copy_tree_chown(copy_path_dir(*line.source).c_str(),
                         copy_path_source_pattern(*line.source).c_str(), text_of(line.not_list),
                         uid, gid);
}

int run_chmod(const copy_line& line) {
  int mode = copy_line_mode(line);
  if (!line.source) return 0;
  return copy_tree_chmod(copy_path_dir(*line.source).c_str(),
                         copy_path_source_pattern(*line.source).c_str(), text_of(line.not_list),
                         mode);
}

int run_error(ini_store* store, const copy_line& line) {
  const char* value = line.source ? ini_get(store, line.source->c_str()) : nullptr;
  if (value == nullptr || !str_is_false(value)) return 1;
  g_last_error = str_or_empty(text_of(line.destination));
  return 0;
}

int run_write_file(ini_store* store, const copy_line& line) {
  const char* path = text_of(line.source);
  unique_file out(file_open_named(path, "w"));
  if (!out) {
    file_error("Failed to write (%s)", str_or_empty(path));
    return 0;
  }
  const char* name = text_of(line.destination);
  const char* value = ini_get(store, name);
  fputs(str_or_empty(value != nullptr ? value : name), out.get());
  FILE* written = out.release();
  if (!file_finish(&written)) {
    file_error("Failed to write (%s)", str_or_empty(path));
    return 0;
  }
  return 1;
}

// Opens its file with "w", like WFile, so it empties the file and reads
// nothing back; the setting then stays as it was.
int run_read_file(ini_store* store, const copy_line& line) {
  const char* path = text_of(line.source);
  unique_file file(file_open_named(path, "w"));
  if (!file) {
    file_error("Failed to read (%s)", str_or_empty(path));
    return 0;
  }
  std::string joined;
  char buffer[k_read_line_size];
  while (joined.size() < static_cast<size_t>(kLineMax) &&
         fgets(buffer, sizeof buffer, file.get()) != nullptr) {
    joined += buffer;
  }
  if (joined.size() > static_cast<size_t>(kLineMax)) joined.resize(kLineMax);
  if (!joined.empty()) ini_set(store, text_of(line.destination), joined.c_str());
  return 1;
}

int dispatch(copy_script* script, const copy_line& line, unsigned* bytes) {
  if (line.type & k_copy_group) return run_copy_group(script, line, bytes);
  if (line.type & k_remove_group) return copy_tree_remove(line, line.type == k_copy_rm_dir);
  switch (line.type) {
    case k_copy_exist: return run_exist(script->store, line);
    case k_copy_chown: return run_chown(script, line);
    case k_copy_chmod: return run_chmod(line);
    case k_copy_error: return run_error(script->store, line);
    case k_copy_wfile: return run_write_file(script->store, line);
    case k_copy_rfile: return run_read_file(script->store, line);
    default: break;
  }
  file_error("How did we get here!");
  return 0;
}

// Why line index failed, for copy_first_failure.
std::string failure_reason(const copy_script* script, int index, unsigned errors_before) {
  if (copy_type(script, index) == k_copy_error) return g_last_error;
  if (log_error_count() != errors_before) return log_last_error();
  return "nothing matched it";
}

}  // namespace

int copy_line_run(copy_script* script, int index, unsigned* bytes_out) {
  const copy_line* line = copy_line_at(script, index);
  if (line == nullptr) return 0;
  if (!copy_line_allowed(script->store, *line)) {
    log_debug("Doing nothing due to controlling setting");
    return -1;
  }
  if (!copy_tree_paths_trusted(*line)) return 0;
  errno = 0;
  return dispatch(script, *line, bytes_out);
}

int copy_script_run(copy_script* script, int* files_out, unsigned* bytes_out, int stop_on_fail,
                    copy_first_failure* first_failure) {
  if (files_out != nullptr) *files_out = 0;
  if (bytes_out != nullptr) *bytes_out = 0;
  if (first_failure != nullptr) *first_failure = {};
  if (script == nullptr) return 0;
  log_info("Processing copy script...");
  for (int index = 0; index < copy_count(script); ++index) {
    log_debug("Processing [%d:%s->%s,%s,%s,%s]", static_cast<int>(copy_type(script, index)),
              str_or_empty(copy_source(script, index)),
              str_or_empty(copy_destination(script, index)), str_or_empty(copy_not(script, index)),
              str_or_empty(copy_control(script, index)),
              str_or_empty(copy_control_cmp(script, index)));
    const unsigned errors_before = log_error_count();
    int result = copy_line_run(script, index, bytes_out);
    if (result == 0) {
      if (first_failure != nullptr && first_failure->index < 0) {
        *first_failure = {index, failure_reason(script, index, errors_before)};
      }
      if (stop_on_fail) {
        log_info("Stop on fail set, stopping...");
        return 0;
      }
      log_info("Stop on fail NOT set, continuing...");
    } else if (result > 0 && files_out != nullptr) {
      *files_out += result;
    }
  }
  log_info("Copy script completed successfully");
  return 1;
}

const char* copy_last_error() { return g_last_error.c_str(); }
