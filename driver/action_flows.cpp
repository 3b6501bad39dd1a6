#include "driver/action_flows.h"

#include <cerrno>
#include <cstring>

#include "copyscript/copy_run.h"
#include "copyscript/copy_script.h"
#include "driver/options.h"
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
int ask_questions(ini_store* store, const flow_kind& kind) {
  question_set* questions = question_set_create(store);
  char path[kPathSize];
  product_file(path, ".q");
  int result = kFlowDone;
  if (!question_load(questions, path, kind.section)) {
    log_error("Error loading questions");
    result = kFlowFailed;
  } else {
    walk_outcome outcome = question_walk(questions, store, kind.expand_error_text);
    if (outcome == walk_outcome::quit) result = kFlowQuit;
    if (outcome == walk_outcome::failure) result = kFlowFailed;
  }
  question_set_free(&questions);
  return result;
}

void report_run(const flow_kind& kind, int succeeded, int files, unsigned bytes) {
  if (!succeeded) {
    console_printf("]\nFailed, %s", copy_last_error());
  } else if (kind.report == success_report::bytes_and_files) {
    console_printf("]\nSuccess %d bytes in %d files copied\n", static_cast<int>(bytes), files);
  } else if (kind.report == success_report::files_removed) {
    console_printf("]\n Success %d files removed\n", files);
  } else {
    console_printf("]\n Success %d files done.\n", files);
  }
}

void run_copy_script(ini_store* store, const flow_kind& kind) {
  copy_script* script = copy_script_create(store);
  char path[kPathSize];
  product_file(path, ".cpy");
  copy_script_set_callbacks(script, copy_progress, copy_failure);
  if (copy_script_load(script, path, kind.section)) {
    console_print(kind.before_run);
    int files = 0;
    unsigned bytes = 0;
    int succeeded =
        copy_script_run(script, &files, kind.count_bytes ? &bytes : nullptr, kind.stop_on_fail);
    report_run(kind, succeeded, files, bytes);
  }
  copy_script_free(&script);
}

int run_flow(ini_store* store, const flow_kind& kind) {
  print_heading(kind.heading);
  int result = ask_questions(store, kind);
  if (result == kFlowDone) run_copy_script(store, kind);
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
