#include "driver/installer.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include "foundation/str_path.h"
#include "foundation/str_text.h"

namespace {

std::string base_name;
int automated = 0;
std::string tag;
bool has_tag = false;

// Objects that live for the whole run, freed at shut-down or before an
// option ends the process.
struct run_state {
  logger* log = nullptr;
};
run_state state;

void free_run_state() {
  log_free(&state.log);
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
    }
  }
}

int run_installer(int argc, char** argv) {
  state.log = log_create(static_cast<unsigned>(log_level::debug));

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

  free_run_state();
  if (!automated) wait_for_enter();
  return 0;
}
