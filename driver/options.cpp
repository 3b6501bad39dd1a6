#include "driver/options.h"

#include <string>

#include "environment/httpd_conf.h"
#include "foundation/console.h"
#include "foundation/str_text.h"

namespace {

std::string g_base_name;
int g_automated = 0;
int g_check = 0;
int g_plan = 0;
std::string g_tag;
bool g_has_tag = false;
std::string g_answers;
bool g_has_answers = false;
int g_status = 0;

// One option: its word, the word shown for its argument (null when it takes
// none), its line of help, and what it does (argument: the word after it).
struct option_def {
  const char* name;
  const char* argument;
  const char* help;
  option_outcome (*apply)(logger* log, const char* argument);
};

option_outcome set_debug(logger* log, const char*) {
  log_set_level(log, static_cast<unsigned>(log_level::debug));
  log_info("Logging set to debug");
  return {};
}

option_outcome show_version(logger*, const char*) {
  console_printf("Installer version %s\n", kInstallerVersion);
  return {true, 0};
}

option_outcome set_automate(logger*, const char*) {
  log_info("Automated install/upgrade...");
  g_automated = 1;
  return {};
}

option_outcome set_special(logger*, const char* tag) {
  g_tag = tag;
  g_has_tag = true;
  log_info("Special mode [%s]", g_tag.c_str());
  return {};
}

option_outcome set_httpd_conf(logger*, const char* path) {
  httpd_conf_set_main(path);
  log_info("Httpd conf given [%s]", path);
  return {};
}

option_outcome set_answers(logger*, const char* path) {
  g_answers = path;
  g_has_answers = true;
  log_info("Answers file [%s]", path);
  return {};
}

option_outcome set_check(logger*, const char*) {
  log_info("Checking the product's files");
  g_check = 1;
  return {};
}

option_outcome set_plan(logger*, const char*) {
  log_info("Planning: nothing is changed but the log");
  g_plan = 1;
  return {};
}

option_outcome set_status(logger*, const char*) {
  g_status = 1;
  log_info("Exit status tells the outcome");
  return {};
}

option_outcome show_help(logger*, const char*);

constexpr option_def kOptions[] = {
    {"-debug", nullptr, "log at debug level (the log's level already)", set_debug},
    {"-version", nullptr, "print the version and exit", show_version},
    {"-automate", nullptr, "take every default (menu and questions), ask nothing", set_automate},
    {"-check", nullptr, "check the product's data files, run nothing", set_check},
    {"-plan", nullptr, "ask as usual, then print what the action would do", set_plan},
    {"-special", "<tag>", "run the <tag> sections of the questions and copy script", set_special},
    {"-httpd-conf", "<path>", "read the web server's configuration from <path> only",
     set_httpd_conf},
    {"-answers", "<file>", "answers to start from, kept there after a success", set_answers},
    {"-status", nullptr, "exit 0 done, 2 failed, 3 quit, 4 start-up failed", set_status},
    {"-help", nullptr, "print this help and exit", show_help},
};

// The files a run reads and writes, named as a run names them (base name
// and extension, in the working directory), each with what it holds.
void print_files() {
  struct product_file {
    const char* extension;  // after the base name; null: the name alone
    const char* name;
    const char* what;
  };
  static constexpr product_file kFiles[] = {
      {".dat", nullptr, "run-time settings (read)"},
      {".int", nullptr, "start-up commands (read)"},
      {".q", nullptr, "questions of each action (read)"},
      {".cpy", nullptr, "copy script of each action (read)"},
      {nullptr, "blurb.txt", "shown after an install (read)"},
      {".log", nullptr, "the log (appended; old ones kept as .log0 to .log4)"},
      {nullptr, "<file>", "-answers: read at start, rewritten after success"},
  };
  console_print("Files, in the working directory:\n");
  for (const product_file& file : kFiles) {
    const std::string name =
        file.name != nullptr ? file.name : std::string(g_base_name) + file.extension;
    console_printf("  %-20s %s\n", name.c_str(), file.what);
  }
}

option_outcome show_help(logger*, const char*) {
  console_printf("Usage: %s [option]...\n", g_base_name.c_str());
  for (const option_def& option : kOptions) {
    std::string shown(option.name);
    if (option.argument != nullptr) shown = shown + " " + option.argument;
    console_printf("  %-20s %s\n", shown.c_str(), option.help);
  }
  print_files();
  console_print("Examples:\n");
  console_printf("  ./%s -check            list the mistakes in the product's files\n",
                 g_base_name.c_str());
  console_printf("  ./%s -plan -automate   show what an unattended run would do\n",
                 g_base_name.c_str());
  return {true, 0};
}

const option_def* find_option(const char* arg) {
  for (const option_def& option : kOptions) {
    if (str_cmp(arg, option.name) == 0) return &option;
  }
  return nullptr;
}

}  // namespace

const char* program_base_name() { return g_base_name.c_str(); }

void set_program_base_name(const char* name) { g_base_name = str_or_empty(name); }

int automate_mode() { return g_automated; }

int check_mode() { return g_check; }

int plan_mode() { return g_plan; }

const char* special_tag() { return g_has_tag ? g_tag.c_str() : nullptr; }

const char* answers_path() { return g_has_answers ? g_answers.c_str() : nullptr; }

int status_mode() { return g_status; }

option_outcome parse_options(logger* log, char** argv, int argc) {
  if (argv == nullptr || argc < 2) return {};
  for (int i = 1; i < argc; ++i) {
    const option_def* option = find_option(argv[i]);
    if (option == nullptr) continue;
    const char* argument = nullptr;
    if (option->argument != nullptr) {
      if (i + 1 >= argc) {
        console_printf("Usage: install %s %s\n", option->name, option->argument);
        return {true, 1};
      }
      argument = str_or_empty(argv[++i]);
    }
    const option_outcome outcome = option->apply(log, argument);
    if (outcome.end) return outcome;
  }
  return {};
}

bool option_given(char** argv, int argc, const char* name) {
  if (argv == nullptr || name == nullptr) return false;
  for (int i = 1; i < argc; ++i) {
    const option_def* option = find_option(argv[i]);
    if (option == nullptr) continue;
    if (str_cmp(option->name, name) == 0) return true;
    if (option->argument != nullptr) ++i;
  }
  return false;
}
