#include "settings/ini_store.h"

#include <cstring>
#include <string>

#include "foundation/test_scratch.h"

namespace {

class store_test : public scratch_test {
 protected:
  void SetUp() override {
    scratch_test::SetUp();
    ini_setup(store_, kDefs, nullptr, 1);
  }
  void TearDown() override {
    ini_destroy(&store_);
    scratch_test::TearDown();
  }
  // Every value of the setting at index, each followed by ",".
  std::string all_values(int index) {
    std::string all;
    for (const char* v = ini_get_value(store_, index); v; v = ini_get_next_value(store_, index)) {
      all += std::string(v) + ",";
    }
    return all;
  }
  static constexpr ini_setting_def kDefs[] = {
      {"single", "one", 0},        {"multi", "first", INI_MULTI}, {"fixed", "stone", INI_FIXED},
      {"path", nullptr, INI_PATH}, {"secret", "pw", INI_MASKED},  {"single", "shadowed", 0},
      {nullptr, nullptr, 0}};
  ini_store* store_ = ini_create();
};

TEST_F(store_test, NullAndUnsetStoresGiveNotFoundResults) {
  ini_store* unset = ini_create();
  for (ini_store* store : {static_cast<ini_store*>(nullptr), unset}) {
    EXPECT_EQ(ini_get(store, "single"), nullptr);
    EXPECT_EQ(ini_set(store, "a", "b"), 0);
    EXPECT_EQ(ini_create_setting(store, "a", "b"), 0);
    EXPECT_EQ(ini_index_of(store, "single"), -1);
    EXPECT_EQ(ini_take_first(store, 0), nullptr);
    dyn_list* names = ini_names(store);
    EXPECT_EQ(list_count(names), 0);
    list_free(&names);
  }
  ini_destroy(&unset);
  EXPECT_EQ(unset, nullptr);
  ini_destroy(nullptr);
  EXPECT_EQ(ini_set(store_, "single", nullptr), 0);
  EXPECT_EQ(ini_get_value(store_, ini_count(store_)), nullptr);
  EXPECT_EQ(ini_set_value_fmt(store_, 0, nullptr), 0);
}

TEST_F(store_test, TheFirstSettingOfANameWins) {
  EXPECT_TRUE(logged("Ini setting 'multi' setup"));
  EXPECT_EQ(ini_set(store_, "single", "two"), 1);
  EXPECT_STREQ(ini_get(store_, "single"), "two");
  EXPECT_STREQ(ini_get_value(store_, 5), "shadowed");
  EXPECT_EQ(ini_index_of(store_, "Single"), -1);
  EXPECT_EQ(ini_index_of_nocase(store_, "SINGLE"), 0);
  ini_setup(store_, kDefs, nullptr, 1);  // a second set-up changes nothing
  EXPECT_EQ(ini_count(store_), 6);
}

TEST_F(store_test, AssociationsFallBackAndTheLastOneDecides) {
  const ini_setting_def defs[] = {{"a", "from a", 0}, {"b", nullptr, 0},    {"ab", nullptr, 0},
                                  {"ba", nullptr, 0}, {"loop", nullptr, 0}, {nullptr, nullptr, 0}};
  const int assocs[] = {2, 0, 2, 1, 3, 1, 3, 0, 4, 4, 9, 0, -1};
  ini_store* store = ini_create();
  ini_setup(store, defs, assocs, 1);
  EXPECT_EQ(ini_get(store, "ab"), nullptr);
  EXPECT_STREQ(ini_get(store, "ba"), "from a");
  EXPECT_EQ(ini_get_next(store, "ba"), nullptr);  // no fall-back for the next value
  EXPECT_EQ(ini_get(store, "loop"), nullptr);     // refers to itself: no hang
  EXPECT_TRUE(logged("Ini association index 2->0 added"));
  EXPECT_TRUE(logged("Ini association index 9 invalid."));
  ini_destroy(&store);
}

TEST_F(store_test, CreatedSettingsCollectValuesWhileGetKeepsTheFirst) {
  EXPECT_EQ(ini_set(store_, "answer", "A"), 1);
  EXPECT_EQ(ini_set(store_, "answer", "B"), 1);
  EXPECT_EQ(ini_set(store_, "answer", ""), 1);
  EXPECT_TRUE(logged("Ini setting 'answer' created and set to 'A'"));
  EXPECT_EQ(ini_flags_of(store_, "answer"), INI_MULTI | INI_EMPTY_OK);
  EXPECT_EQ(all_values(ini_index_of(store_, "answer")), "A,B,,");

  ini_set_options(store_,
                  INI_OPT_CREATE | INI_OPT_NEW_LOCKED | INI_OPT_NEW_MASKED | INI_OPT_MASK_LOG);
  EXPECT_EQ(ini_set(store_, "blank", ""), -1);
  EXPECT_EQ(ini_set(store_, "locked", "hunter2"), 1);
  EXPECT_EQ(ini_flags_of(store_, "locked"), INI_FIXED | INI_MASKED);
  EXPECT_TRUE(logged("Ini setting 'locked' created and set to 'xxxx'"));
  EXPECT_FALSE(logged("hunter2"));
  ini_clear_options(store_, INI_OPT_CREATE);
  EXPECT_EQ(ini_set(store_, "other", "x"), 0);
}

TEST_F(store_test, AddingAValueFollowsFlagsAndOptions) {
  EXPECT_EQ(ini_set(store_, "single", ""), -1);
  EXPECT_TRUE(logged("Ini value for 'single' not added, value was empty"));
  EXPECT_EQ(ini_set(store_, "fixed", "moved"), -1);
  EXPECT_TRUE(logged("Ini value for 'fixed' not addded, value is fixed"));
  ini_add_options(store_, INI_OPT_HIDE_FIXED);
  EXPECT_EQ(ini_get(store_, "fixed"), nullptr);
  ini_clear_options(store_, INI_OPT_HIDE_FIXED | INI_OPT_KEEP_FIXED);
  EXPECT_EQ(ini_set(store_, "fixed", "moved"), 1);
  EXPECT_EQ(all_values(2), "moved,");

  EXPECT_EQ(ini_set(store_, "multi", "second"), 1);
  EXPECT_EQ(all_values(1), "first,second,");
  EXPECT_EQ(ini_set(store_, "path", "C:\\Program Files\\app/x"), 1);
  EXPECT_STREQ(ini_get(store_, "path"), "C:/Program Files/app/x");

  // An own value handed back in must survive its own replacement.
  EXPECT_EQ(ini_set(store_, "single", ini_get(store_, "single")), 1);
  EXPECT_EQ(all_values(0), "one,");
  ini_clear_options(store_, INI_OPT_SINGLE);
  ini_set(store_, "single", "two");
  ini_set(store_, "single", "three");
  ini_add_options(store_, INI_OPT_SINGLE);
  ini_get(store_, "single");  // cursor on "one": the value after it goes
  EXPECT_EQ(ini_set(store_, "single", "four"), 1);
  EXPECT_EQ(all_values(0), "one,four,three,");

  const std::string long_text(1500, 'x');
  EXPECT_EQ(ini_set_value_fmt(store_, 1, "%s", long_text.c_str()), 1);
  EXPECT_EQ(all_values(1), "first,second," + std::string(999, 'x') + ",");
}

const char* add_suffix(const char* value) {
  static std::string result;
  result = std::string(value) + "+f";
  return result.c_str();
}
const char* upper_first(const char* value) {
  static std::string result;
  result = value;
  result[0] = static_cast<char>(toupper(result[0]));
  return result.c_str();
}

TEST_F(store_test, FiltersChainOverSharedBits) {
  const ini_setting_def defs[] = {{"both", nullptr, 0x40 | 0x80},
                                  {"one", nullptr, 0x80},
                                  {"none", nullptr, INI_MULTI},
                                  {nullptr, nullptr, 0}};
  ini_store* store = ini_create();
  ini_setup(store, defs, nullptr, 1);
  ini_set_load_fn(store, upper_first, 0x40);
  ini_set_load_fn(store, add_suffix, 0x80 | INI_MULTI);
  const struct {
    const char* name;
    const char* stored;
  } rows[] = {{"both", "Abc+f"}, {"one", "abc+f"}, {"none", "abc"}};
  for (const auto& row : rows) {
    EXPECT_EQ(ini_set(store, row.name, "abc"), 1);
    EXPECT_STREQ(ini_get(store, row.name), row.stored) << row.name;
  }
  ini_set_load_fn(store, upper_first, 0x80 | INI_MULTI);
  EXPECT_TRUE(logged("already set for flag [129], replacing with new fn"));
  EXPECT_EQ(ini_set(store, "one", "xyz"), 1);
  EXPECT_STREQ(ini_get(store, "one"), "Xyz");
  ini_destroy(&store);
}

TEST_F(store_test, TakeOperationsHandValuesOver) {
  ini_set(store_, "multi", "second");
  ini_set(store_, "multi", "third");
  ini_get_value(store_, 1);
  ini_get_next_value(store_, 1);  // cursor on "second"
  const char* expected[] = {"second", "first", "third"};
  for (const char* want : expected) {
    char* taken =
        want == expected[1] ? ini_take_first_by_name(store_, "multi") : ini_take_current(store_, 1);
    EXPECT_STREQ(taken, want);
    free(taken);
    ini_get_next_value(store_, 1);  // past the end: take_current wraps to the first
  }
  EXPECT_EQ(ini_take_first(store_, 1), nullptr);
}

TEST_F(store_test, NameListsHoldTheStoresNames) {
  dyn_list* names = ini_names(store_);
  ini_set(store_, "later", "x");  // listed names keep their address
  ASSERT_EQ(list_count(names), 6);
  EXPECT_STREQ(static_cast<const char*>(names->items[1]), "multi");
  list_free(&names);
  names = ini_names_matching(store_, "s*");
  EXPECT_EQ(list_count(names), 3);
  list_free(&names);
}

}  // namespace
