#include "environment/runtime_settings.h"

#include <unistd.h>

#include <cerrno>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "foundation/file_guard.h"
#include "foundation/handles.h"
#include "foundation/logger.h"
#include "foundation/results.h"
#include "foundation/str_path.h"
#include "foundation/str_text.h"
#include "settings/ini_expand.h"
#include "settings/ini_file.h"

namespace {

constexpr const char* kLoopbackAddress = "127.0.0.1";
constexpr unsigned kBuiltInFlags = INI_FIXED | INI_REPLACEABLE;

// The definition table handed to the store, with the texts its rows point at.
struct definition_table {
  std::deque<std::string> texts;  // a deque keeps each text where it is
  std::vector<ini_setting_def> rows;

  const char* keep(const std::string& text) { return texts.emplace_back(text).c_str(); }
  void add(const std::string& name, const char* value, unsigned flags) {
    rows.push_back({keep(name), value != nullptr ? keep(value) : nullptr, flags});
  }
};

std::unique_ptr<definition_table> g_runtime_defs;

std::string working_directory() {
  char buffer[kLineSize];
  const char* cwd = str_getcwd(buffer, sizeof buffer);
  return cwd != nullptr ? std::string(cwd) : std::string();
}

void add_built_in_rows(definition_table& table) {
  char host[kLineSize];
  local_host_name(host, sizeof host);
  log_info("host=%s", host);
  table.add("host", host, kBuiltInFlags);
  const char* system_dir = "/etc";
  log_info("system_dir=%s", system_dir);
  table.add("system_dir", system_dir, kBuiltInFlags);
  const std::string current_dir = working_directory();
  log_info("current_dir=%s", current_dir.c_str());
  table.add("current_dir", current_dir.c_str(), kBuiltInFlags);
  log_info("action=install");
  table.add("action", "install", 0);
}

void add_file_rows(definition_table& table, FILE* stream) {
  char buffer[kLineSize];
  ini_line line;
  while (fgets(buffer, sizeof buffer, stream) != nullptr) {
    if (ini_parse_line(buffer, &line) == 0) continue;
    log_debug("Adding '%s'='%s'", line.name.c_str(), line.value.c_str());
    table.add(line.name, line.value.empty() ? nullptr : line.value.c_str(), INI_REPLACEABLE);
  }
}

}  // namespace

int runtime_settings_load(ini_store* store, const char* path) {
  if (store == nullptr || path == nullptr) return k_fail;
  errno = 0;
  const unique_file stream(file_open(path, "r"));
  if (!stream) {
    char reason[kLineSize];
    log_error("Error opening '%s' for read, %s", path, str_last_error(reason, sizeof reason));
    return k_fail;
  }
  auto table = std::make_unique<definition_table>();
  add_built_in_rows(*table);
  add_file_rows(*table, stream.get());
  table->rows.push_back({nullptr, nullptr, 0});
  ini_setup(store, table->rows.data(), nullptr, 1);
  ini_process_replaceable(store);
  g_runtime_defs = std::move(table);
  return k_ok;
}

void runtime_settings_free() { g_runtime_defs.reset(); }

const ini_setting_def* runtime_settings_defs() {
  return g_runtime_defs ? g_runtime_defs->rows.data() : nullptr;
}

char* local_host_name(char* buffer, unsigned size) {
  if (buffer == nullptr || size == 0) return nullptr;
  errno = 0;
  if (gethostname(buffer, size - 1) != 0) {
    char reason[kLineSize];
    log_error("Gethostname failed, %s", str_last_error(reason, sizeof reason));
    str_copy(buffer, kLoopbackAddress, static_cast<int>(size < kLineSize ? size : kLineSize));
    return buffer;
  }
  buffer[size - 1] = '\0';
  return buffer;
}
