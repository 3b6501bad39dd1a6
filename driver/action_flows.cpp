#include "driver/action_flows.h"

#include <cerrno>
#include <cstring>
#include <string>

#include "copyscript/copy_plan.h"
#include "copyscript/copy_run.h"
#include "copyscript/copy_script.h"
#include "driver/answers.h"
#include "driver/options.h"
#include "driver/run_status.h"
#include "foundation/console.h"
#include "foundation/logger.h"
#include "foundation/str_path.h"
#include "foundation/str_text.h"
#include "questions/question_file.h"
#include "questions/question_walk.h"

namespace {

// What a flow prints after a successful run.
enum class success_report { bytes_and_files, files_removed, files_done };

struct flow_kind {
  const char* heading;  // printed as "[%s]\n"
  const char* section;  // of the question file and of the copy script
  int expand_error_text;
  int stop_on_fail;
  bool count_bytes;
  const char* before_run;
  success_report report;
};

void print_heading(const char* heading) { console_printf("[%s]\n", heading); }

// The copy script's step callbacks: a dot at once for each step, and the
// system's reason for each failure.
void copy_progress(const char*, const char*, int) {
  console_print(".");
  console_flush();
}

void copy_failure(const char*, const char*, int) {
  console_printf("\nError: %s\n", strerror(errno));
}

// "<cwd>/<base name><extension>", bounded to a path.
void product_file(char (&path)[kPathSize], const char* extension) {
  if (str_getcwd(path, kPathSize) == nullptr) path[0] = '\0';
  str_path_join(path, program_base_name(), kPathSize);
  str_append(path, extension, kPathSize);
}

// The walk's result as a flow result; kFlowDone means go on to the script.
// report receives what the walk did; the run's status what went wrong.
int ask_questions(ini_store* store, const flow_kind& kind, walk_report* report) {
  question_set* questions = question_set_create(store);
  char path[kPathSize];
  product_file(path, ".q");
  int result = kFlowDone;
  if (!question_load(questions, path, kind.section)) {
    log_error("Error loading questions");
    run_status_set(kExitFailed, 0, "%s failed: section '%s' of '%s' could not be loaded",
                   kind.heading, kind.section, path);
    result = kFlowFailed;
  } else {
    walk_outcome outcome = question_walk(questions, store, kind.expand_error_text, report);
    if (outcome == walk_outcome::quit) {
      run_status_set(kExitQuit, 0, "the operator quit %s", kind.heading);
      result = kFlowQuit;
    }
    if (outcome == walk_outcome::failure) {
      run_status_set(kExitFailed, 0, "%s failed: %s", kind.heading, report->failure.c_str());
      result = kFlowFailed;
    }
  }
  question_set_free(&questions);
  return result;
}

// The first failing line of script, as the exit status's reason gives it.
std::string line_failure(const copy_script* script, const copy_first_failure& failure) {
  const int index = failure.index;
  const char* destination =
      copy_type(script, index) == k_copy_error ? nullptr : copy_destination(script, index);
  return "copy line " + std::to_string(index + 1) + " (" +
         str_or_empty(copy_source(script, index)) +
         (destination != nullptr ? std::string(" -> ") + destination : "") + "): " + failure.why;
}

// What a finished copy script prints after its "]": the failure with the
// Error line's text (reason, "" when none failed), or the success count.
std::string outcome_text(const flow_kind& kind, bool succeeded, int files, unsigned bytes,
                         const char* reason, const std::string& failure) {
  char text[kLineSize];
  if (!succeeded) {
    // With -status a failure without an Error line's text says why here.
    if (status_mode() && reason[0] == '\0') return "Failed, " + failure + "\n";
    return std::string("Failed, ") + reason;
  }
  if (kind.report == success_report::bytes_and_files) {
    snprintf(text, sizeof text, "Success %d bytes in %d files copied\n", static_cast<int>(bytes),
             files);
  } else if (kind.report == success_report::files_removed) {
    snprintf(text, sizeof text, " Success %d files removed\n", files);
  } else {
    snprintf(text, sizeof text, " Success %d files done.\n", files);
  }
  return text;
}

// Prints the plan of the loaded script and what the run would end with.
copy_first_failure plan_run(copy_script* script, const flow_kind& kind) {
  console_printf("Plan of %s, nothing is changed:\n", kind.heading);
  copy_plan_result planned;
  const bool succeeded = copy_script_plan(script, kind.stop_on_fail, &planned) != 0;
  const copy_first_failure& failure = planned.failure;
  const std::string why = failure.index >= 0 ? line_failure(script, failure) : "";
  const bool error_line = failure.index >= 0 && copy_type(script, failure.index) == k_copy_error;
  const std::string shown =
      outcome_text(kind, succeeded, planned.files, kind.count_bytes ? planned.bytes : 0,
                   error_line ? failure.why.c_str() : "", why);
  const size_t start = shown.find_first_not_of(' ');
  const size_t end = shown.find_last_not_of('\n');
  console_printf("\nThe run would end with: %s\n",
                 shown.substr(start, end == std::string::npos ? 0 : end + 1 - start).c_str());
  if (failure.index >= 0)
    run_status_set(kExitFailed, 0, "%s would fail: %s", kind.heading, why.c_str());
  return failure;
}

// Loads and runs the section; true when every line of it succeeded.
bool run_copy_script(ini_store* store, const flow_kind& kind) {
  copy_script* script = copy_script_create(store);
  char path[kPathSize];
  product_file(path, ".cpy");
  copy_script_set_callbacks(script, copy_progress, copy_failure);
  copy_first_failure failure;
  const bool loaded = copy_script_load(script, path, kind.section) != 0;
  if (loaded && plan_mode()) {
    failure = plan_run(script, kind);
  } else if (loaded) {
    console_print(kind.before_run);
    int files = 0;
    unsigned bytes = 0;
    int succeeded = copy_script_run(script, &files, kind.count_bytes ? &bytes : nullptr,
                                    kind.stop_on_fail, &failure);
    const std::string why = failure.index >= 0 ? line_failure(script, failure) : "";
    console_print("]\n");
    console_print(outcome_text(kind, succeeded != 0, files, bytes, copy_last_error(), why).c_str());
    if (failure.index >= 0)
      run_status_set(kExitFailed, 0, "%s failed: %s", kind.heading, why.c_str());
  } else {
    run_status_set(kExitFailed, 0, "%s failed: section '%s' of '%s' could not be loaded",
                   kind.heading, kind.section, path);
  }
  copy_script_free(&script);
  return loaded && failure.index < 0;
}

// Keeps the answers of a successful action in the answers file, if one was
// given.
void keep_answers(ini_store* store, const flow_kind& kind, const walk_report& report) {
  const char* path = answers_path();
  std::string error;
  if (path == nullptr || plan_mode() || answers_keep(store, path, report.answered, &error)) return;
  console_printf("Error: %s\n", error.c_str());
  run_status_set(kExitFailed, 0, "%s done, but %s", kind.heading, error.c_str());
}

int run_flow(ini_store* store, const flow_kind& kind) {
  print_heading(kind.heading);
  run_status_done();
  walk_report report;
  int result = ask_questions(store, kind, &report);
  if (result == kFlowDone && run_copy_script(store, kind)) keep_answers(store, kind, report);
  return result;
}

}  // namespace

int do_install(ini_store* store) {
  static constexpr flow_kind kInstall{
      "Install", "install", 0, 1, true, "Copying files[", success_report::bytes_and_files};
  return run_flow(store, kInstall);
}

int do_upgrade(ini_store* store) {
  static constexpr flow_kind kUpgrade{
      "Upgrade", "upgrade", 1, 1, true, "Copying files[", success_report::bytes_and_files};
  return run_flow(store, kUpgrade);
}

int do_remove(ini_store* store) {
  static constexpr flow_kind kRemove{
      "Remove", "remove", 0, 0, false, "Removing files[", success_report::files_removed};
  return run_flow(store, kRemove);
}

int do_special(ini_store* store) {
  const char* tag = special_tag();
  if (tag == nullptr) return kFlowFailed;
  const flow_kind special{tag, tag, 0, 0, false, "Executing[", success_report::files_done};
  return run_flow(store, special);
}
