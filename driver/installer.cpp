#include "driver/installer.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include "driver/console.h"
#include "driver/init_commands.h"
#include "environment/httpd_conf.h"
#include "environment/init_file.h"
#include "environment/runtime_settings.h"
#include "foundation/str_path.h"
#include "foundation/str_text.h"
#include "questions/question_walk.h"
#include "settings/ini_store.h"

namespace {

std::string base_name;
int automated = 0;
std::string tag;
bool has_tag = false;

// Objects that live for the whole run, freed at shut-down or before an
// option ends the process.
struct run_state {
  logger* log = nullptr;
  ini_store* store = nullptr;
  bool settings_loaded = false;
};
run_state state;

void free_run_state() {
  if (state.settings_loaded) runtime_settings_free();
  state.settings_loaded = false;
  ini_destroy(&state.store);
  log_free(&state.log);
}

// Swaps the extension of the path for another ("<cwd>/install.log" to
// "<cwd>/install.dat").
void change_extension(char (&path)[kPathSize], const char* extension) {
  str_strip_ext(path);
  str_append(path, extension, kPathSize);
}

// Loads the init file and runs its commands; false when it cannot be read.
bool run_init_file(char (&path)[kPathSize]) {
  init_list* commands = init_list_create();
  change_extension(path, ".int");
  bool loaded = init_load(commands, path) != 0;
  if (loaded) {
    run_init_commands(state.store, commands);
  } else {
    printf("Error: Failed to load init file '%s', %s\n", path, init_last_error());
  }
  init_list_free(&commands);
  return loaded;
}

[[noreturn]] void end_process(int status) {
  fflush(stdout);
  free_run_state();
  std::exit(status);
}

void wait_for_enter() {
  fputs("\n<Press enter to exit>", stdout);
  fflush(stdout);
  char line[kLineSize];
  if (fgets(line, sizeof line, stdin) == nullptr) return;
}

}  // namespace

const char* program_base_name() { return base_name.c_str(); }

int automate_mode() { return automated; }

const char* special_tag() { return has_tag ? tag.c_str() : nullptr; }

void parse_options(logger* log, char** argv, int argc) {
  if (argv == nullptr || argc < 2) return;
  for (int i = 1; i < argc; ++i) {
    const char* arg = argv[i];
    if (str_cmp(arg, "-debug") == 0) {
      log_set_level(log, static_cast<unsigned>(log_level::debug));
      log_info("Logging set to debug");
    } else if (str_cmp(arg, "-version") == 0) {
      printf("Installer version %s\n", kInstallerVersion);
      end_process(0);
    } else if (str_cmp(arg, "-automate") == 0) {
      log_info("Automated install/upgrade...");
      automated = 1;
    } else if (str_cmp(arg, "-special") == 0) {
      if (i + 1 >= argc) {
        printf("Usage: install -special <tag>\n");
        end_process(1);
      }
      tag = str_or_empty(argv[++i]);
      has_tag = true;
      log_info("Special mode [%s]", tag.c_str());
    } else if (str_cmp(arg, "-httpd-conf") == 0) {
      if (i + 1 >= argc) {
        printf("Usage: install -httpd-conf <path>\n");
        end_process(1);
      }
      httpd_conf_set_main(argv[++i]);
      log_info("Httpd conf given [%s]", argv[i]);
    }
  }
}

int run_installer(int argc, char** argv) {
  state.log = log_create(static_cast<unsigned>(log_level::debug));
  state.store = ini_create();

  char path[kPathSize];
  str_base_name(path, argc > 0 && argv != nullptr ? argv[0] : nullptr, kPathSize);
  base_name = path;

  if (str_getcwd(path, kPathSize) == nullptr) path[0] = '\0';
  str_path_join(path, base_name.c_str(), kPathSize);
  str_append(path, ".log", kPathSize);
  log_set_current(state.log);
  log_open(state.log, path);
  log_flush_every(state.log, 1);
  log_info("Log file opened in '%s'", path);

  parse_options(state.log, argv, argc);
  question_set_unattended(automated);

  change_extension(path, ".dat");
  state.settings_loaded = runtime_settings_load(state.store, path) != 0;
  if (state.settings_loaded && run_init_file(path)) run_menu(state.store);

  free_run_state();
  if (!automated) wait_for_enter();
  return 0;
}
