#include "driver/installer.h"

#include <cerrno>
#include <string>
#include <vector>

#include "driver/answers.h"
#include "driver/init_commands.h"
#include "driver/known_settings.h"
#include "driver/menu.h"
#include "driver/options.h"
#include "driver/package_check.h"
#include "driver/run_status.h"
#include "environment/init_file.h"
#include "environment/runtime_settings.h"
#include "foundation/console.h"
#include "foundation/file_guard.h"
#include "foundation/logger.h"
#include "foundation/str_path.h"
#include "foundation/str_text.h"
#include "questions/question_walk.h"
#include "settings/ini_store.h"

namespace {

// Swaps the extension of the path for another ("<cwd>/install.log" to
// "<cwd>/install.dat").
void change_extension(char (&path)[kPathSize], const char* extension) {
  str_strip_ext(path);
  str_append(path, extension, kPathSize);
}

// Reads the answers file, when one was given, and checks it against the
// settings the product knows. False, printed, when it cannot be used.
bool load_answers(ini_store* store, init_list* commands, answers_file* answers) {
  const char* path = answers_path();
  if (path == nullptr) return true;
  char questions[kPathSize];
  char script[kPathSize];
  str_copy(questions, program_base_name(), kPathSize);
  str_append(questions, ".q", kPathSize);
  str_copy(script, program_base_name(), kPathSize);
  str_append(script, ".cpy", kPathSize);
  std::string error;
  if (answers_read(path, answers, &error) &&
      answers_check(store, known_settings(store, commands, questions, script), answers, &error)) {
    return true;
  }
  console_printf("%s\n", error.c_str());
  run_status_set(kExitStartup, 0, "%s", error.c_str());
  return false;
}

// Loads the init file and the answers, then sets the answers, runs the
// init commands and sets the answers again (so the commands see them, and
// they win over what the commands found). False when either cannot be
// loaded: nothing has been done then.
bool start_up(ini_store* store, char (&path)[kPathSize]) {
  init_list* commands = init_list_create();
  change_extension(path, ".int");
  bool loaded = init_load(commands, path) != 0;
  if (!loaded) {
    console_print("Error: Failed to load init file '");
    console_print(path);
    console_print("', ");
    console_print(init_last_error());
    console_print("\n");
    run_status_set(kExitStartup, 0, "the init file '%s' could not be loaded, %s", path,
                   init_last_error());
  }
  answers_file answers;
  if (loaded) loaded = load_answers(store, commands, &answers);
  if (loaded) {
    answers_apply(store, answers);
    run_init_commands(store, commands);
    answers_apply(store, answers);
  }
  init_list_free(&commands);
  return loaded;
}

// As root, the product's files are taken as root's own: its copy script
// runs as root. A directory or data file that every account may change (a
// shared temporary directory, say) could hand that to anyone, so nothing is
// read from it. Prints why and returns false.
bool product_files_trusted(const char* dir) {
  if (!file_running_as_root()) return true;
  if (const char* reason = file_shared_reason(dir)) {
    console_printf(
        "Error: Refusing to run in '%s', %s; move the product's files to a "
        "directory that only root can write\n",
        dir, reason);
    return false;
  }
  static constexpr const char* kDataFiles[] = {".dat", ".int", ".q", ".cpy"};
  std::vector<std::string> files{"blurb.txt"};
  for (const char* extension : kDataFiles)
    files.push_back(program_base_name() + std::string(extension));
  for (const std::string& file : files) {
    char path[kPathSize];
    str_copy(path, dir, kPathSize);
    str_path_join(path, file.c_str(), kPathSize);
    if (const char* reason = file_shared_reason(path)) {
      console_printf(
          "Error: Refusing to read '%s', %s; remove that permission (chmod o-w) "
          "first\n",
          path, reason);
      return false;
    }
  }
  return true;
}

void wait_for_enter() {
  console_print("\n<Press enter to exit>");
  char line[kLineSize];
  console_read_line(line, sizeof line);
}

// Opens the log, reads the options, loads the run-time settings and the
// init file, runs the init commands and the menu. Returns the exit status
// an option asks for, or -1 to end the run as usual.
int run_with(logger* log, ini_store* store, int argc, char** argv) {
  char path[kPathSize];
  if (str_getcwd(path, kPathSize) == nullptr) path[0] = '\0';
  if (!product_files_trusted(path)) return option_given(argv, argc, "-status") ? kExitStartup : 1;
  str_path_join(path, program_base_name(), kPathSize);
  str_append(path, ".log", kPathSize);
  log_set_current(log);
  log_open(log, path);
  log_flush_every(log, 1);
  log_info("Log file opened in '%s'", path);

  option_outcome options = parse_options(log, argv, argc);
  if (options.end) return options.status;
  if (check_mode()) return run_package_check(store);
  question_set_unattended(automate_mode());

  change_extension(path, ".dat");
  errno = 0;
  if (runtime_settings_load(store, path) == 0) {
    run_status_set(kExitStartup, errno, "the run-time settings file '%s' could not be read", path);
    return -1;
  }
  if (start_up(store, path)) run_menu(store);
  runtime_settings_free();
  return -1;
}

}  // namespace

int run_installer(int argc, char** argv) {
  logger* log = log_create(static_cast<unsigned>(log_level::debug));
  ini_store* store = ini_create();
  char name[kPathSize];
  set_program_base_name(
      str_base_name(name, argc > 0 && argv != nullptr ? argv[0] : nullptr, kPathSize));

  int status = run_with(log, store, argc, argv);
  console_flush();
  ini_destroy(&store);
  log_free(&log);
  if (status >= 0) return status;
  if (status_mode() && run_status() != kExitDone) {
    console_end_line();
    console_printf("Exit status %d: %s\n", run_status(), run_status_reason());
  }
  if (!automate_mode()) wait_for_enter();
  return status_mode() ? run_status() : 0;
}
