#include "driver/package_check.h"

#include <cerrno>
#include <set>
#include <string>
#include <vector>

#include "copyscript/copy_check.h"
#include "driver/options.h"
#include "environment/init_check.h"
#include "environment/runtime_check.h"
#include "environment/runtime_settings.h"
#include "foundation/check_report.h"
#include "foundation/file_guard.h"
#include "foundation/handles.h"
#include "foundation/section_file.h"
#include "foundation/str_path.h"
#include "foundation/str_text.h"
#include "questions/question_check.h"
#include "settings/ini_expand.h"

namespace {

constexpr const char* kBlurb = "blurb.txt";

// The menu's actions: their sections and their names on the menu.
struct menu_action {
  const char* section;
  const char* name;
};
constexpr menu_action kMenuActions[] = {
    {"install", "Install"}, {"upgrade", "Upgrade"}, {"remove", "Remove"}};

// The product's files, named as a run names them.
struct product {
  std::string dir;  // the working directory
  std::string dat;
  std::string init;
  std::string questions;
  std::string script;

  // dir joined with name, as a run joins them (bounded to a path).
  std::string path(const std::string& name) const {
    char joined[kPathSize];
    str_copy(joined, dir.c_str(), kPathSize);
    str_path_join(joined, name.c_str(), kPathSize);
    return joined;
  }
  // A template's name in messages: its path, from the product's directory
  // when it lies there.
  std::string label(const std::string& path) const {
    const std::string prefix = dir + "/";
    return path.compare(0, prefix.size(), prefix) == 0 ? path.substr(prefix.size()) : path;
  }
};

product product_here() {
  char dir[kPathSize];
  if (str_getcwd(dir, kPathSize) == nullptr) dir[0] = '\0';
  const std::string base = program_base_name();
  return {dir, base + ".dat", base + ".int", base + ".q", base + ".cpy"};
}

// What the files say about settings, for the checks across files.
struct settings_facts {
  ini_store* store;
  const product& files;
  const check_report& report;

  bool declared(const std::string& name) const { return ini_index_of(store, name.c_str()) >= 0; }

  // The first line that sets name (of the init file only, and above
  // `before` there, when init_before > 0); nullptr when none, or when name is
  // fixed and so never set.
  const setting_use* writer(const std::string& name, int init_before = 0) const {
    if ((ini_flags_of(store, name.c_str()) & INI_FIXED) != 0) return nullptr;
    for (const setting_use& use : report.uses) {
      if (use.name != name) continue;
      if (use.kind != setting_use_kind::written && use.kind != setting_use_kind::failure_flag) {
        continue;
      }
      if (init_before == 0 || (use.file == files.init && use.line < init_before)) return &use;
    }
    return nullptr;
  }
};

void check_template_files(const product& files, check_report* report,
                          std::vector<std::string>& order) {
  std::set<std::string> seen;
  const std::vector<check_place> templates = report->templates;
  for (const check_place& place : templates) {
    if (!seen.insert(place.name).second) continue;
    const std::string label = files.label(place.name);
    order.push_back(label);
    copy_check_template(place, label, report);
  }
}

// blurb.txt is printed after an install, each line trimmed, with its
// references filled in (unknown ones dropped).
void check_blurb(const product& files, check_report* report) {
  errno = 0;
  const unique_file stream(file_open(files.path(kBlurb).c_str(), "r"));
  if (!stream) return;
  check_read_lines(stream.get(), kLineSize, [&](int line, char* text) {
    for (const std::string& name : ini_reference_names(str_trim(text))) {
      report->uses.push_back({kBlurb, line, name, setting_use_kind::reference,
                              "it expands to nothing", check_severity::warning});
    }
  });
}

// A reference in the run-time settings file to one of its own settings that
// a later step sets: the file's value is what it gets.
void check_filled_later(const settings_facts& facts, const setting_use& use, check_report* report) {
  const setting_use* later = facts.writer(use.name);
  if (later == nullptr) return;
  check_warning(report, use.file, use.line,
                "$(%s) takes the value %s has in this file, not the one %s:%d sets later: "
                "references here are filled in once, at start; refer to %s where the value is "
                "used (a question, the copy script, a template) instead",
                use.name.c_str(), use.name.c_str(), later->file.c_str(), later->line,
                use.name.c_str());
}

// References and reads of names that nothing sets.
void check_unset(const settings_facts& facts, check_report* report) {
  const std::string& dat = facts.files.dat;
  const std::vector<setting_use> uses = report->uses;
  for (const setting_use& use : uses) {
    const bool reference = use.kind == setting_use_kind::reference;
    if (!reference && use.kind != setting_use_kind::read) continue;
    if (use.file == dat) {
      check_filled_later(facts, use, report);
      continue;
    }
    const bool init = use.file == facts.files.init;
    if (facts.declared(use.name) || facts.writer(use.name, init ? use.line : 0) != nullptr) {
      continue;
    }
    const std::string shown = reference ? "$(" + use.name + ")" : "'" + use.name + "'";
    const std::string why =
        init ? "that is set before this line runs (" + dat +
                   ", the built-ins and the init lines "
                   "above)"
             : "(" + dat + " declares none, and no init command, question or copy line sets one)";
    const char* format = "%s names no setting %s: %s; declare %s in %s, or correct the name";
    if (reference || use.severity == check_severity::error) {
      check_error(report, use.file, use.line, format, shown.c_str(), why.c_str(), use.effect,
                  use.name.c_str(), dat.c_str());
    } else {
      check_warning(report, use.file, use.line, format, shown.c_str(), why.c_str(), use.effect,
                    use.name.c_str(), dat.c_str());
    }
  }
}

void check_failure_flag(const settings_facts& facts, const setting_use& use, check_report* report) {
  const char* dat = facts.files.dat.c_str();
  const char* name = use.name.c_str();
  if (!facts.declared(use.name)) {
    check_warning(report, use.file, use.line,
                  "failure flag '%s' is not declared in %s: it exists only after a failed "
                  "look-up, so a control that names it alone lets its question or copy line run "
                  "when the look-up succeeds as well; declare '%s false' in %s",
                  name, dat, name, dat);
    return;
  }
  const char* value = ini_get(facts.store, name);
  if (value != nullptr && str_is_false(value)) return;
  check_warning(report, use.file, use.line,
                "failure flag '%s' starts as '%s' in %s, not false: a look-up only ever sets it "
                "to true, so whatever it controls acts as if the look-up had failed; declare "
                "'%s false'",
                name, str_or_empty(value), dat, name);
}

// Settings written but not declared, or fixed; failure flags not false.
void check_written(const settings_facts& facts, check_report* report) {
  const char* dat = facts.files.dat.c_str();
  std::set<std::string> told;
  const std::vector<setting_use> uses = report->uses;
  for (const setting_use& use : uses) {
    if (use.kind == setting_use_kind::failure_flag) check_failure_flag(facts, use, report);
    if (use.kind != setting_use_kind::written || !told.insert(use.name).second) continue;
    const char* name = use.name.c_str();
    if ((ini_flags_of(facts.store, name) & INI_FIXED) != 0) {
      check_warning(report, use.file, use.line,
                    "'%s' is a fixed built-in setting: a run drops the value written here; use "
                    "a setting of your own",
                    name);
    } else if (!facts.declared(use.name)) {
      check_warning(report, use.file, use.line,
                    "'%s' is not declared in %s: the first value written creates it, and every "
                    "later one (an answer given again, say) is queued behind that one and never "
                    "read; declare %s in %s",
                    name, dat, name, dat);
    }
  }
}

const check_place* section_in(const check_report& report, const std::string& file,
                              const std::string& name) {
  for (const check_place& place : report.sections) {
    if (place.file == file && section_file_same(place.name, name)) return &place;
  }
  return nullptr;
}

bool is_menu_section(const std::string& name) {
  for (const menu_action& action : kMenuActions) {
    if (section_file_same(name, action.section)) return true;
  }
  return false;
}

void check_menu_sections(const product& files, check_report* report) {
  for (const menu_action& action : kMenuActions) {
    if (section_in(*report, files.questions, action.section) == nullptr) {
      check_error(report, files.questions, 0,
                  "no [%s] section: choosing %s from the menu fails before any question (\"Error "
                  "loading questions\" in the log) and does nothing; add the section [%s] (it "
                  "may be empty)",
                  action.section, action.name, action.section);
    }
    if (section_in(*report, files.script, action.section) == nullptr) {
      check_error(report, files.script, 0,
                  "no [%s] section: %s asks its questions and then does nothing, without a word; "
                  "add the section [%s]",
                  action.section, action.name, action.section);
    }
  }
}

// Sections of the special actions, which need both files.
void check_special_sections(const product& files, check_report* report) {
  const char* base = program_base_name();
  const std::vector<check_place> sections = report->sections;
  for (const check_place& place : sections) {
    if (is_menu_section(place.name)) continue;
    const bool in_questions = place.file == files.questions;
    const std::string& other = in_questions ? files.script : files.questions;
    if (section_in(*report, other, place.name) != nullptr) continue;
    const char* name = place.name.c_str();
    if (in_questions) {
      check_warning(report, place.file, place.line,
                    "[%s] has no lines in %s: '%s -special %s' asks these questions and then "
                    "does nothing; add the section [%s] to %s",
                    name, other.c_str(), base, name, name, other.c_str());
    } else {
      check_error(report, place.file, place.line,
                  "[%s] has no questions in %s: '%s -special %s' fails before these lines run "
                  "(\"Error loading questions\" in the log); add the section [%s] to %s (it may "
                  "be empty)",
                  name, other.c_str(), base, name, name, other.c_str());
    }
  }
}

}  // namespace

int run_package_check(ini_store* store) {
  const product files = product_here();
  check_report report;
  std::vector<std::string> order{files.dat, files.init, files.questions, files.script};

  const bool loaded = runtime_settings_load(store, files.path(files.dat).c_str()) != 0;
  runtime_settings_check(store, files.path(files.dat).c_str(), files.dat, &report);
  init_check_file(files.path(files.init).c_str(), files.init, &report);
  const bool questions_read =
      question_check_file(files.path(files.questions).c_str(), files.questions, &report);
  const bool script_read =
      copy_check_file(store, files.path(files.script).c_str(), files.script, &report);
  check_template_files(files, &report, order);
  check_blurb(files, &report);
  order.push_back(kBlurb);

  // Without its settings a run ends at once; what the other files do with
  // settings is then beside the point.
  if (loaded) {
    const settings_facts facts{store, files, report};
    check_unset(facts, &report);
    check_written(facts, &report);
  }
  if (questions_read && script_read) {
    check_menu_sections(files, &report);
    check_special_sections(files, &report);
  }
  if (loaded) runtime_settings_free();
  return check_report_print(report, order);
}
