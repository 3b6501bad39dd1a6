#include "settings/ini_store.h"

#include <cstdlib>
#include <string>

#include "foundation/test_scratch.h"

namespace {

// "ba" falls back to "fixed", then to "a"; "loop" to itself; 99 is no index.
constexpr ini_setting_def kDefs[] = {
    {"single", "one", 0},    {"multi", "first", INI_MULTI}, {"fixed", "stone", INI_FIXED},
    {"path", nullptr, 0x48}, {"single", "shadowed", 0},     {"a", "from a", 0},
    {"ba", nullptr, 0},      {"loop", nullptr, 0},          {nullptr, nullptr, 0}};
constexpr int kAssocs[] = {6, 2, 6, 5, 7, 7, 99, 0, -1};

class Store : public scratch_test {
 protected:
  void SetUp() override {
    scratch_test::SetUp();
    ini_setup(store_, kDefs, kAssocs, 1);
  }
  void TearDown() override {
    ini_destroy(&store_);
    scratch_test::TearDown();
  }
  // Every value of the setting, each followed by ",".
  std::string values(const char* name) {
    std::string all;
    for (const char* v = ini_get(store_, name); v; v = ini_get_next(store_, name))
      all += v + std::string(",");
    return all;
  }
  ini_store* store_ = ini_create();
};

TEST_F(Store, NamesFindTheFirstSettingAndEmptyOnesFallBack) {
  EXPECT_STREQ(ini_get_value(store_, 4), "shadowed");
  EXPECT_EQ(ini_index_of(store_, "Single"), -1);
  EXPECT_EQ(ini_index_of_nocase(store_, "SINGLE"), 0);
  EXPECT_STREQ(ini_get(store_, "ba"), "from a");  // the last association decides
  EXPECT_EQ(ini_get_next(store_, "ba"), nullptr);
  EXPECT_EQ(ini_get(store_, "loop"), nullptr);  // no hang
  EXPECT_EQ(logged("Ini association index 99 invalid."), 1);
  ini_add_options(store_, INI_OPT_HIDE_FIXED);
  EXPECT_EQ(ini_get(store_, "fixed"), nullptr);
}

// An added value goes through the filters and the path rewriting, then the
// fixed and empty checks; a single-valued setting loses the value after the
// cursor.
TEST_F(Store, AddingAValueFollowsFlagsAndOptions) {
  // Each row: the setting, the value, the result, and the values afterwards.
  const char* rows[][4] = {{"single", "", "-1", "one,"},
                           {"fixed", "moved", "-1", "stone,"},
                           {"multi", "second", "1", "first,second,"},
                           {"path", "C:\\Program Files\\app/x", "1", "C:/Program Files/app/x,"},
                           {"single", nullptr, "0", "one,"},
                           {"single", "two", "1", "two,"}};
  for (const auto& row : rows) {
    EXPECT_EQ(ini_set(store_, row[0], row[1]), atoi(row[2])) << row[0];
    EXPECT_EQ(values(row[0]), row[3]) << row[0];
  }
  // An own value handed back in must survive its own replacement.
  EXPECT_EQ(ini_set(store_, "single", ini_get(store_, "single")), 1);
  EXPECT_EQ(values("single"), "two,");
  ini_clear_options(store_, INI_OPT_SINGLE | INI_OPT_KEEP_FIXED);
  EXPECT_EQ(ini_set(store_, "fixed", "moved") + ini_set(store_, "single", "three"), 2);
  ini_set(store_, "single", "four");
  ini_add_options(store_, INI_OPT_SINGLE);
  ini_get(store_, "single");
  EXPECT_EQ(ini_set(store_, "single", "five"), 1);
  EXPECT_EQ(values("single"), "two,five,four,");
  EXPECT_EQ(ini_set_value_fmt(store_, 1, "%s", std::string(1500, 'x').c_str()), 1);
  EXPECT_EQ(values("multi"), "first,second," + std::string(999, 'x') + ",");
}

TEST_F(Store, CreatedSettingsCollectValuesAndMaskedOnesStayOutOfTheLog) {
  for (const char* value : {"A", "B", ""}) EXPECT_EQ(ini_set(store_, "answer", value), 1);
  EXPECT_EQ(ini_flags_of(store_, "answer"), INI_MULTI | INI_EMPTY_OK);
  EXPECT_EQ(values("answer"), "A,B,,");
  ini_set_options(store_,
                  INI_OPT_CREATE | INI_OPT_NEW_LOCKED | INI_OPT_NEW_MASKED | INI_OPT_MASK_LOG);
  EXPECT_EQ(ini_set(store_, "blank", ""), -1);
  EXPECT_EQ(ini_set(store_, "locked", "hunter2") + ini_set(store_, "locked", "hunter3"), 2);
  EXPECT_EQ(ini_flags_of(store_, "locked"), INI_FIXED | INI_MASKED);
  EXPECT_EQ(logged("hunter"), 0);
  ini_clear_options(store_, INI_OPT_CREATE);
  EXPECT_EQ(ini_set(store_, "other", "x"), 0);
}

const char* add_suffix(const char* value) {
  static std::string result;
  result = std::string(value) + "+f";
  return result.c_str();
}

// Filters apply to settings that carry a filter bit and share a bit with
// them; taking a value out hands it over; name lists hold the store's names.
TEST_F(Store, FiltersTakingAndNameLists) {
  ini_set_load_fn(store_, add_suffix, INI_MULTI | INI_PATH);
  ini_set(store_, "multi", "second");
  ini_set(store_, "path", "p");
  EXPECT_EQ(values("multi") + values("path"), "first,second,p+f,");
  ini_get(store_, "multi");
  ini_get_next(store_, "multi");  // cursor on "second"
  std::string taken;
  for (char* text : {ini_take_current_by_name(store_, "multi"), ini_take_first(store_, 1),
                     ini_take_first(store_, 1)}) {
    taken += (text != nullptr ? text : "(none)") + std::string(",");
    free(text);
  }
  EXPECT_EQ(taken, "second,first,(none),");
  dyn_list* names = ini_names_matching(store_, "s*");
  EXPECT_EQ(list_count(names), 2);
  EXPECT_EQ(names->items[0], ini_name_at(store_, 0));
  list_free(&names);
}

}  // namespace
