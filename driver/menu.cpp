#include "driver/menu.h"

#include "driver/action_flows.h"
#include "driver/options.h"
#include "driver/run_status.h"
#include "foundation/console.h"
#include "foundation/file_guard.h"
#include "foundation/str_path.h"
#include "foundation/str_text.h"
#include "settings/ini_expand.h"

namespace {

constexpr const char* kRule = "======================================================\n";
constexpr int kExitChoice = 4;
constexpr int kSpecialChoice = 5;

// The operator's choice: the default for an empty line, otherwise the
// number the line begins with (0 when there is none). False at end of input.
bool read_choice(int default_choice, int* choice) {
  console_printf("\nWhat would you like to do[%d]? ", default_choice);
  char line[kLineSize];
  if (!console_read_line(line, sizeof line)) return false;
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
      if (!plan_mode()) show_blurb(store);
      return false;
    }
    case 2: return do_upgrade(store) == kFlowQuit;
    case 3: return do_remove(store) == kFlowQuit;
    case kExitChoice: run_status_done(); return false;
    case kSpecialChoice:
      if (special_tag() != nullptr) {
        do_special(store);
        return false;
      }
      [[fallthrough]];
    default: console_print("That is not a recognised option, please try again"); return true;
  }
}

}  // namespace

const char* product_name(ini_store* store) {
  const char* name = ini_get(store, "product");
  return name != nullptr ? name : "NONAME";
}

void show_banner(ini_store* store) {
  console_print(kRule);
  console_printf("             Welcome to the %s installer\n", product_name(store));
  console_print(" You will be asked a series of questions, for each a\n");
  console_print(" default answer will be provided (thus), to accept the\n");
  console_print(" default simply press <enter>, otherwise enter a new\n");
  console_print(" answer and press <enter>\n");
  console_print(kRule);
}

void show_menu(ini_store* store) {
  const char* name = product_name(store);
  console_print("\n");
  console_printf("1. Install %s\n", name);
  console_printf("2. Upgrade %s\n", name);
  console_printf("3. Remove %s\n", name);
  console_print("4. Exit");
}

void show_blurb(ini_store* store) {
  char path[kPathSize];
  if (str_getcwd(path, kPathSize) == nullptr) path[0] = '\0';
  str_path_join(path, "blurb.txt", kPathSize);
  FILE* blurb = file_open(path, "r");
  if (blurb == nullptr) return;
  console_print("\n");
  char line[kLineSize];
  char expanded[kLineSize];
  while (fgets(line, sizeof line, blurb) != nullptr) {
    ini_expand(store, str_trim(line), expanded, sizeof expanded);
    console_print(expanded);
    console_print("\n");
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
        console_print("\n");
        choice = default_choice;
      } else if (!read_choice(default_choice, &choice)) {
        run_status_set(kExitQuit, 0, "input ended before an action was chosen");
        return;
      }
    }
    again = run_choice(store, choice);
  }
}
