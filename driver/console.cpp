#include "driver/console.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "driver/action_flows.h"
#include "driver/installer.h"
#include "foundation/str_path.h"
#include "foundation/str_text.h"
#include "questions/question_console.h"
#include "settings/ini_expand.h"

namespace {

constexpr const char* kRule = "======================================================\n";
constexpr int kExitChoice = 4;
constexpr int kSpecialChoice = 5;

void print_formatted(const char* format, const char* value) {
  char line[kLineSize];
  snprintf(line, sizeof line, format, value);
  question_print(line);
}

// The operator's choice: the default for an empty line, otherwise the
// number the line begins with (0 when there is none). False at end of input.
bool read_choice(int default_choice, int* choice) {
  char prompt[kLineSize];
  snprintf(prompt, sizeof prompt, "\nWhat would you like to do[%d]? ", default_choice);
  question_print(prompt);
  char line[kLineSize];
  if (!question_read_line(line, sizeof line)) return false;
  const char* answer = str_trim(line);
  *choice = *answer == '\0' ? default_choice : str_atoi(answer);
  return true;
}

// Runs one choice; true when the menu should come back.
bool run_choice(ini_store* store, int choice) {
  switch (choice) {
    case 1: {
      int result = do_install(store);
      if (result == kFlowQuit) return true;
      show_blurb(store);
      return false;
    }
    case 2: return do_upgrade(store) == kFlowQuit;
    case 3: return do_remove(store) == kFlowQuit;
    case kExitChoice: return false;
    case kSpecialChoice:
      if (special_tag() != nullptr) {
        do_special(store);
        return false;
      }
      [[fallthrough]];
    default:
      question_print("That is not a recognised option, please try again");
      return true;
  }
}

}  // namespace

const char* product_name(ini_store* store) {
  const char* name = ini_get(store, "product");
  return name != nullptr ? name : "NONAME";
}

void show_banner(ini_store* store) {
  question_print(kRule);
  print_formatted("             Welcome to the %s installer\n", product_name(store));
  question_print(" You will be asked a series of questions, for each a\n");
  question_print(" default answer will be provided (thus), to accept the\n");
  question_print(" default simply press <enter>, otherwise enter a new\n");
  question_print(" answer and press <enter>\n");
  question_print(kRule);
}

void show_menu(ini_store* store) {
  const char* name = product_name(store);
  question_print("\n");
  print_formatted("1. Install %s\n", name);
  print_formatted("2. Upgrade %s\n", name);
  print_formatted("3. Remove %s\n", name);
  question_print("4. Exit");
}

void show_blurb(ini_store* store) {
  char path[kPathSize];
  if (str_getcwd(path, kPathSize) == nullptr) path[0] = '\0';
  str_path_join(path, "blurb.txt", kPathSize);
  FILE* blurb = file_open(path, "r");
  if (blurb == nullptr) return;
  question_print("\n");
  char line[kLineSize];
  char expanded[kLineSize];
  while (fgets(line, sizeof line, blurb) != nullptr) {
    ini_expand(store, str_trim(line), expanded, sizeof expanded);
    question_print(expanded);
    question_print("\n");
  }
  file_close(&blurb);
}

void run_menu(ini_store* store) {
  int default_choice = str_cmp(ini_get(store, "action"), "upgrade") == 0 ? 2 : 1;
  show_banner(store);
  bool again = true;
  while (again) {
    int choice = kSpecialChoice;
    if (special_tag() == nullptr) {
      show_menu(store);
      if (automate_mode()) {
        question_print("\n");
        choice = default_choice;
      } else if (!read_choice(default_choice, &choice)) {
        return;
      }
    }
    again = run_choice(store, choice);
  }
}

void copy_progress(const char*, const char*, int) {
  question_print(".");
  fflush(stdout);
}

void copy_failure(const char*, const char*, int) {
  int err = errno;
  char line[kLineSize];
  snprintf(line, sizeof line, "\nError: %s\n", strerror(err));
  question_print(line);
}
