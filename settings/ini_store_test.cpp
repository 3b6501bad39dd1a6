#include "settings/ini_store.h"

#include <cstdlib>

#include "foundation/test_scratch.h"

namespace {

// "ba" falls back to "fixed", then to "a"; "loop" to itself; 99 is no index.
constexpr ini_setting_def kDefs[] = {
    {"single", "one", 0},        {"multi", "first", INI_MULTI}, {"fixed", "stone", INI_FIXED},
    {"path", nullptr, INI_PATH}, {"single", "shadowed", 0},     {"a", "from a", 0},
    {"ba", nullptr, 0},          {"loop", nullptr, 0},          {nullptr, nullptr, 0}};
constexpr int kAssocs[] = {6, 2, 6, 5, 7, 7, 99, 0, -1};

// Every value of the setting, each followed by ",".
std::string values(ini_store* store, const char* name) {
  std::string all;
  for (const char* v = ini_get(store, name); v; v = ini_get_next(store, name)) all.append(v) += ',';
  return all;
}

using Store = scratch_test;

// An added value has its path separators rewritten, then meets the fixed
// and empty checks; a single-valued setting loses the value after the cursor.
TEST_F(Store, AddingAndFindingValues) {
  ini_store* store = ini_create();
  ini_setup(store, kDefs, kAssocs, 1);
  // Each row: the setting, the value, the result, and the values afterwards.
  const char* rows[][4] = {{"single", "", "-1", "one,"},
                           {"fixed", "moved", "-1", "stone,"},
                           {"multi", "second", "1", "first,second,"},
                           {"path", "C:\\Program Files\\app/x", "1", "C:/Program Files/app/x,"},
                           {"single", nullptr, "0", "one,"},
                           {"single", "two", "1", "two,"}};
  for (const auto& row : rows) {
    EXPECT_EQ(ini_set(store, row[0], row[1]), atoi(row[2])) << row[0];
    EXPECT_EQ(values(store, row[0]), row[3]) << row[0];
  }
  // An own value handed back in must survive its own replacement.
  EXPECT_EQ(ini_set(store, "single", ini_get(store, "single")), 1);
  EXPECT_EQ(values(store, "single"), "two,");
  ini_clear_options(store, INI_OPT_SINGLE | INI_OPT_KEEP_FIXED);
  EXPECT_EQ(ini_set(store, "fixed", "moved") + ini_set(store, "single", "three"), 2);
  ini_set(store, "single", "four");
  ini_add_options(store, INI_OPT_SINGLE);
  ini_get(store, "single");
  EXPECT_EQ(ini_set(store, "single", "five"), 1);
  EXPECT_EQ(values(store, "single"), "two,five,four,");
  EXPECT_EQ(ini_set_value_fmt(store, 1, "%s", std::string(1500, 'x').c_str()), 1);
  EXPECT_EQ(values(store, "multi"), "first,second," + std::string(999, 'x') + ",");
  // The first setting of a name is the one found; one without a value falls
  // back to its associations, the last one deciding.
  EXPECT_STREQ(ini_get_value(store, 4), "shadowed");
  EXPECT_EQ(ini_index_of(store, "Single"), -1);
  EXPECT_EQ(ini_index_of_nocase(store, "SINGLE"), 0);
  EXPECT_STREQ(ini_get(store, "ba"), "from a");  // the last association decides
  EXPECT_EQ(ini_get(store, "loop"), nullptr);    // no hang
  EXPECT_EQ(logged("Ini association index 99 invalid."), 1);
  // An unknown name is created and collects every value; a masked one stays
  // out of the log.
  for (const char* value : {"A", "B", ""}) EXPECT_EQ(ini_set(store, "answer", value), 1);
  EXPECT_EQ(values(store, "answer"), "A,B,,");
  ini_set_options(store,
                  INI_OPT_CREATE | INI_OPT_NEW_LOCKED | INI_OPT_NEW_MASKED | INI_OPT_MASK_LOG);
  EXPECT_EQ(ini_set(store, "blank", ""), -1);
  EXPECT_EQ(ini_set(store, "locked", "hunter2") + ini_set(store, "locked", "hunter3"), 2);
  EXPECT_EQ(ini_flags_of(store, "locked"), INI_FIXED | INI_MASKED);
  EXPECT_EQ(logged("hunter"), 0);
  ini_destroy(&store);
}

}  // namespace
