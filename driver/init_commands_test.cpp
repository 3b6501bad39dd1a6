#include "driver/init_commands.h"

#include <string>

#include "foundation/str_text.h"
#include "foundation/test_scratch.h"

namespace {

using InitCommandsTest = scratch_test;

// A line runs when it has no expected value, or when the value of its
// condition setting (else the condition word itself) is exactly that value.
TEST_F(InitCommandsTest, ConditionsCompareExactly) {
  const std::string lines =
      "Copy r1 ran action upgrade\nCopy r2 ran action Upgrade\nCopy r3 ran word word\n"
      "Copy r4 ran - true\nCopy r5 ran action install\nCopy a b action\nCopy r6 ran - -\n";
  const ini_setting_def defs[] = {{"action", "upgrade", 0}, {nullptr, nullptr, 0}};
  ini_store* store = ini_create();
  ini_setup(store, defs, nullptr, 1);
  init_list* list = init_list_create();
  EXPECT_EQ(init_load(list, write_file("install.int", lines).c_str()), 1);
  run_init_commands(store, list);
  std::string results;
  for (const char* name : {"r1", "r2", "r3", "r4", "r5", "r6"}) {
    results += str_or_empty(ini_get(store, name)) + std::string("|");
  }
  EXPECT_EQ(results, "ran||ran|||ran|");  // r6: a carried condition name alone
  init_list_free(&list);
  ini_destroy(&store);
}

}  // namespace
