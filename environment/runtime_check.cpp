#include "environment/runtime_check.h"

#include <cerrno>
#include <map>

#include "environment/runtime_settings.h"
#include "foundation/file_guard.h"
#include "foundation/handles.h"
#include "foundation/str_text.h"
#include "settings/ini_expand.h"
#include "settings/ini_file.h"

namespace {

struct dat_line {
  const std::string& file;
  int line;
  int index;  // the setting's index in the store
  const ini_line& row;
};

bool is_built_in(ini_store* store, const std::string& name) {
  for (int index = 0; index < kRuntimeBuiltIns; ++index) {
    if (name == str_or_empty(ini_name_at(store, index))) return true;
  }
  return false;
}

// The references as written, before the one-time pass.
void check_references(ini_store* store, const dat_line& at, check_report* report) {
  for (const std::string& name : ini_reference_names(at.row.value.c_str())) {
    const int target = ini_index_of_nocase(store, name.c_str());
    if (target < 0) {
      check_error(report, at.file, at.line,
                  "$(%s) names no setting of this file and no built-in one: references here are "
                  "filled in once, at start, so the value keeps '$(%s)' as written; declare %s on "
                  "a line of its own in this file, or correct the name",
                  name.c_str(), name.c_str(), name.c_str());
    } else if ((ini_flags_at(store, target) & INI_REPLACEABLE) == 0) {
      check_warning(report, at.file, at.line,
                    "$(%s) becomes empty: here only this file's settings and host, system_dir and "
                    "current_dir are filled in; write the value itself",
                    name.c_str());
    } else {
      report->uses.push_back({at.file, at.line, ini_name_at(store, target),
                              setting_use_kind::reference, "", check_severity::warning});
    }
  }
}

// What the one-time pass left: a reference to a setting that exists is one
// that never settled.
void check_settled(ini_store* store, const dat_line& at, check_report* report) {
  for (const std::string& name : ini_reference_names(ini_get_value(store, at.index))) {
    if (ini_index_of_nocase(store, name.c_str()) < 0) continue;
    check_error(report, at.file, at.line,
                "the references in this value never settle (it refers back to itself, directly "
                "or through other settings): a run leaves it as written, '$(%s)' and all; write "
                "one of the values out",
                name.c_str());
    return;
  }
}

void check_name(ini_store* store, const dat_line& at, std::map<std::string, int>& first,
                check_report* report) {
  const std::string& name = at.row.name;
  if (is_built_in(store, name)) {
    check_warning(report, at.file, at.line,
                  "'%s' is a built-in setting: a run reads the built-in value, so this line is "
                  "never used; remove it%s",
                  name.c_str(),
                  name == "action" ? " (to make Upgrade the menu's default, set action from the "
                                     "init file: Copy action upgrade <setting> <value>)"
                                   : "");
    return;
  }
  auto [earlier, added] = first.emplace(name, at.line);
  if (!added) {
    check_warning(report, at.file, at.line,
                  "'%s' is already declared on line %d: a run reads only the first, so this "
                  "value is never used; remove one of the two lines",
                  name.c_str(), earlier->second);
  }
}

}  // namespace

void runtime_settings_check(ini_store* store, const char* path, const std::string& file,
                            check_report* report) {
  if (store == nullptr || path == nullptr || report == nullptr) return;
  const unique_file stream =
      check_open(path, file, report,
                 "a run ends at once, before the banner, without a word on "
                 "the console; put the run-time settings file in the directory the installer is "
                 "started from");
  if (!stream) return;
  std::map<std::string, int> first;
  int index = kRuntimeBuiltIns;
  check_read_lines(stream.get(), kLineSize, [&](int line, char* text) {
    ini_line row;
    if (ini_parse_line(text, &row) == 0) return;
    const dat_line at{file, line, index++, row};
    check_name(store, at, first, report);
    check_references(store, at, report);
    check_settled(store, at, report);
  });
}
