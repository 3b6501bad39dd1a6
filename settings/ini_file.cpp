#include "settings/ini_file.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <string_view>

#include "foundation/file_guard.h"
#include "foundation/handles.h"
#include "foundation/logger.h"
#include "foundation/results.h"
#include "foundation/str_text.h"
#include "settings/ini_store.h"

namespace {

constexpr std::string_view kBlockStart = "vhost";
constexpr std::string_view kBlockEnd = "vend";

bool is_space(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }
bool is_blank(char c) { return c == ' ' || c == '\t'; }

std::string_view trimmed(std::string_view line) {
  while (!line.empty() && is_space(line.front())) line.remove_prefix(1);
  while (!line.empty() && is_space(line.back())) line.remove_suffix(1);
  return line;
}

// file_name cut to a path's length, with ".ini" appended when its last
// component has no extension.
std::string load_name(const char* file_name) {
  std::string name(file_name);
  if (name.size() > static_cast<size_t>(kPathMax)) name.resize(kPathMax);
  const size_t last_separator = name.find_last_of("/\\");
  const size_t dot = name.rfind('.');
  const bool has_extension =
      dot != std::string::npos && (last_separator == std::string::npos || dot > last_separator);
  if (!has_extension) name += ".ini";
  if (name.size() > static_cast<size_t>(kPathMax)) name.resize(kPathMax);
  return name;
}

unique_file open_for_read(const std::string& name) {
  log_debug("Opening ini file '%s'", name.c_str());
  return unique_file(file_open(name.c_str(), "r"));
}

// Calls on_setting(line) for each setting line of the stream until it
// returns false.
template <typename Fn>
void for_each_line(FILE* stream, Fn on_setting) {
  char buffer[kLineSize];
  ini_line line;
  while (fgets(buffer, sizeof buffer, stream) != nullptr) {
    if (ini_parse_line(buffer, &line) != 0 && !on_setting(line)) return;
  }
}

// The state of a load: which virtual host is known and whether lines apply.
struct load_state {
  ini_store* store;
  std::string vhost;
  bool vhost_known = false;
  bool applying = true;
};

// Learns the virtual-host name from the variable that "vhost_match" names.
void find_vhost(load_state& state) {
  const char* variable = ini_get(state.store, "vhost_match");
  if (variable == nullptr) {
    log_error("No vhost_match specified, will not match any vhost lines");
    return;
  }
  const std::string match(variable);
  const char* site = getenv(match.c_str());
  if (site == nullptr) {
    log_error("Ini vhost NOT found, vhost_match=%s", match.c_str());
    return;
  }
  state.vhost = site;
  state.vhost_known = true;
  ini_set(state.store, "vhost", state.vhost.c_str());
}

void load_line(load_state& state, const ini_line& line) {
  if (line.name == kBlockEnd) {
    state.applying = true;
  } else if (line.name == kBlockStart) {
    if (!state.vhost_known) find_vhost(state);
    state.applying = state.vhost_known && state.vhost == line.value;
  } else if (state.applying) {
    ini_set(state.store, line.name.c_str(), line.value.c_str());
  }
}

}  // namespace

int ini_parse_line(const char* text, ini_line* out) {
  if (text == nullptr || out == nullptr) return 0;
  const std::string_view line = trimmed(text);
  if (line.empty() || line.front() == '#') return 0;
  size_t name_end = 0;
  while (name_end < line.size() && !is_blank(line[name_end])) ++name_end;
  size_t value_start = name_end;
  while (value_start < line.size() && is_blank(line[value_start])) ++value_start;
  out->name.assign(line.substr(0, name_end));
  out->value.assign(line.substr(value_start));
  return 1;
}

int ini_load(ini_store* store, const char* file_name, const char* vhost) {
  if (store == nullptr || !store->set_up || file_name == nullptr) return k_fail;
  const std::string name = load_name(file_name);
  const unique_file stream = open_for_read(name);
  if (!stream) return k_fail;
  ini_clear_options(store, INI_OPT_KEEP_FIXED);
  log_debug("Ini loading file '%s'", name.c_str());
  load_state state{store, vhost != nullptr ? vhost : "", vhost != nullptr};
  for_each_line(stream.get(), [&state](const ini_line& line) {
    load_line(state, line);
    return true;
  });
  ini_add_options(store, INI_OPT_KEEP_FIXED);
  return k_ok;
}

const char* ini_read_file_value(ini_store* store, const char* file_name, int index) {
  // Shared by every call and never cleared: a miss returns the last hit.
  static char result[kLineSize];
  const char* wanted = ini_name_at(store, index);
  if (wanted == nullptr || file_name == nullptr) return nullptr;
  const unique_file stream = open_for_read(load_name(file_name));
  if (!stream) return nullptr;
  for_each_line(stream.get(), [&](const ini_line& line) {
    if (line.name != wanted) return true;
    str_copy(result, line.value.c_str(), sizeof result);
    return false;
  });
  return result[0] != '\0' ? result : nullptr;
}

int ini_save(ini_store* store, const char* file_name) {
  if (store == nullptr || !store->set_up || file_name == nullptr) return k_fail;
  errno = 0;
  const unique_file stream(file_open(file_name, "w"));
  if (!stream) {
    char reason[kLineSize];
    log_error("Ini error opening '%s' for write, %s", file_name,
              str_last_error(reason, sizeof reason));
    return k_fail;
  }
  log_debug("Ini saving file '%s'", file_name);
  for (int i = 0; i < ini_count(store); ++i) {
    const char* name = ini_name_at(store, i);
    for (const char* value = ini_get_value(store, i); value != nullptr;
         value = ini_get_next_value(store, i)) {
      fprintf(stream.get(), "%s %s\n", name, value);
    }
  }
  return k_ok;
}
