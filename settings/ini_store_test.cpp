#include "settings/ini_store.h"

#include <cstring>
#include <string>

#include "settings/settings_test_support.h"

namespace {

// A store set up from rows (values loaded) with the default options.
class store_test : public scratch_test {
 protected:
  void set_up(const ini_setting_def* defs, const int* assocs = nullptr) {
    ini_setup(store_, defs, assocs, 1);
  }
  void TearDown() override {
    ini_destroy(&store_);
    scratch_test::TearDown();
  }
  ini_store* store_ = ini_create();
};

const ini_setting_def kPlain[] = {{"single", "one", 0},
                                  {"multi", "first", INI_MULTI},
                                  {"fixed", "stone", INI_FIXED},
                                  {"empty_ok", nullptr, INI_EMPTY_OK},
                                  {"path", nullptr, INI_PATH},
                                  {"secret", "pw", INI_MASKED},
                                  {"single", "shadowed", 0},
                                  {nullptr, nullptr, 0}};

TEST_F(store_test, NullAndUnsetStoresGiveNotFoundResults) {
  ini_store* none = nullptr;
  EXPECT_EQ(ini_get(none, "a"), nullptr);
  EXPECT_EQ(ini_set(none, "a", "b"), 0);
  EXPECT_EQ(ini_index_of(none, "a"), -1);
  EXPECT_EQ(ini_names(none), nullptr);
  EXPECT_EQ(ini_take_first(none, 0), nullptr);
  ini_destroy(&none);
  ini_destroy(nullptr);

  // store_ has not been set up.
  EXPECT_EQ(ini_get_options(store_), INI_OPT_DEFAULT);
  EXPECT_EQ(ini_get(store_, "a"), nullptr);
  EXPECT_EQ(ini_set(store_, "a", "b"), 0);
  EXPECT_EQ(ini_create_setting(store_, "a", "b"), 0);
  EXPECT_EQ(ini_set_value(store_, 0, "b"), 0);
  EXPECT_EQ(ini_get_value(store_, 0), nullptr);
  EXPECT_EQ(ini_name_at(store_, 0), nullptr);
  EXPECT_EQ(ini_flags_of(store_, "a"), 0u);
  EXPECT_EQ(ini_take_current_by_name(store_, "a"), nullptr);
  dyn_list* names = ini_names(store_);
  EXPECT_EQ(list_count(names), 0);
  list_free(&names);

  set_up(kPlain);
  EXPECT_EQ(ini_get(store_, nullptr), nullptr);
  EXPECT_EQ(ini_set(store_, nullptr, "x"), 0);
  EXPECT_EQ(ini_set(store_, "single", nullptr), 0);
  EXPECT_EQ(ini_get_value(store_, -1), nullptr);
  EXPECT_EQ(ini_get_value(store_, ini_count(store_)), nullptr);
  EXPECT_EQ(ini_set_value_fmt(store_, 0, nullptr), 0);
  EXPECT_EQ(ini_set_values(store_, 0, nullptr), 0);
}

TEST_F(store_test, SetupKeepsRowsInOrderAndTheFirstOfANameWins) {
  set_up(kPlain);
  EXPECT_EQ(ini_count(store_), 7);
  EXPECT_TRUE(logged("Ini setting 'multi' setup"));
  EXPECT_EQ(ini_index_of(store_, "single"), 0);
  EXPECT_STREQ(ini_get(store_, "single"), "one");
  EXPECT_STREQ(ini_get_value(store_, 6), "shadowed");
  EXPECT_EQ(ini_set(store_, "single", "two"), 1);
  EXPECT_STREQ(ini_get_value(store_, 0), "two");
  EXPECT_STREQ(ini_get_value(store_, 6), "shadowed");
  EXPECT_EQ(ini_index_of(store_, "Single"), -1);
  EXPECT_EQ(ini_index_of_nocase(store_, "SINGLE"), 0);
  EXPECT_EQ(ini_flags_of(store_, "fixed"), INI_FIXED);
  EXPECT_EQ(ini_get(store_, "empty_ok"), nullptr);

  ini_store* bare = ini_create();
  ini_setup(bare, kPlain, nullptr, 0);
  EXPECT_EQ(ini_get(bare, "single"), nullptr);
  ini_setup(bare, kPlain, nullptr, 1);  // a second set-up changes nothing
  EXPECT_EQ(ini_count(bare), 7);
  EXPECT_EQ(ini_get(bare, "single"), nullptr);
  ini_destroy(&bare);
  EXPECT_EQ(bare, nullptr);
}

TEST_F(store_test, AssociationsFallBackAndTheLastOneDecides) {
  const ini_setting_def defs[] = {{"a", "from a", 0}, {"b", nullptr, 0},  {"ab", nullptr, 0},
                                  {"ba", nullptr, 0}, {"own", "mine", 0}, {"loop", nullptr, 0},
                                  {nullptr, nullptr, 0}};
  const int assocs[] = {2, 0, 2, 1, 3, 1, 3, 0, 4, 0, 5, 5, 9, 0, -1};
  set_up(defs, assocs);
  EXPECT_EQ(ini_get(store_, "ab"), nullptr);
  EXPECT_STREQ(ini_get(store_, "ba"), "from a");
  EXPECT_STREQ(ini_get(store_, "own"), "mine");
  EXPECT_EQ(ini_get(store_, "loop"), nullptr);  // refers to itself: no hang
  EXPECT_EQ(ini_get_next(store_, "ba"), nullptr);  // no fall-back for next
  EXPECT_TRUE(logged("Ini association index 2->0 added"));
  EXPECT_TRUE(logged("Ini association index 9 invalid."));
}

TEST_F(store_test, CreatedSettingsCollectValuesWhileGetKeepsTheFirst) {
  set_up(kPlain);
  EXPECT_EQ(ini_set(store_, "answer", "A"), 1);
  EXPECT_EQ(ini_set(store_, "answer", "B"), 1);
  EXPECT_EQ(ini_set(store_, "answer", ""), 1);
  EXPECT_TRUE(logged("Ini setting 'answer' created and set to 'A'"));
  EXPECT_EQ(ini_flags_of(store_, "answer"), INI_MULTI | INI_EMPTY_OK);
  EXPECT_STREQ(ini_get(store_, "answer"), "A");
  EXPECT_STREQ(ini_get_next(store_, "answer"), "B");
  EXPECT_STREQ(ini_get_next(store_, "answer"), "");
  EXPECT_EQ(ini_get_next(store_, "answer"), nullptr);
  EXPECT_STREQ(ini_get(store_, "answer"), "A");

  ini_clear_options(store_, INI_OPT_NEW_EMPTY_OK);
  EXPECT_EQ(ini_set(store_, "blank", ""), -1);
  EXPECT_EQ(ini_index_of(store_, "blank"), -1);
  ini_clear_options(store_, INI_OPT_CREATE);
  EXPECT_EQ(ini_set(store_, "other", "x"), 0);
  EXPECT_EQ(ini_create_setting(store_, "other", "x"), 1);
}

TEST_F(store_test, CreationOptionsGiveTheirFlags) {
  set_up(kPlain);
  struct row {
    unsigned options;
    unsigned flags;
  };
  const row rows[] = {{0, 0},
                      {INI_OPT_NEW_FIXED, INI_FIXED},
                      {INI_OPT_NEW_LOCKED, INI_FIXED},
                      {INI_OPT_NEW_MASKED, INI_MASKED},
                      {INI_OPT_NEW_MULTI | INI_OPT_NEW_EMPTY_OK, INI_MULTI | INI_EMPTY_OK}};
  int n = 0;
  for (const row& r : rows) {
    ini_set_options(store_, r.options);
    const std::string name = "new" + std::to_string(n++);
    EXPECT_EQ(ini_create_setting(store_, name.c_str(), "v"), 1);
    EXPECT_EQ(ini_flags_of(store_, name.c_str()), r.flags) << name;
  }
}

TEST_F(store_test, AddingAValueFollowsFlagsAndOptions) {
  set_up(kPlain);
  EXPECT_EQ(ini_set(store_, "single", ""), -1);
  EXPECT_TRUE(logged("Ini value for 'single' not added, value was empty"));
  EXPECT_EQ(ini_set(store_, "empty_ok", ""), 1);
  EXPECT_STREQ(ini_get(store_, "empty_ok"), "");

  EXPECT_EQ(ini_set(store_, "fixed", "moved"), -1);
  EXPECT_TRUE(logged("Ini value for 'fixed' not addded, value is fixed"));
  EXPECT_STREQ(ini_get(store_, "fixed"), "stone");
  ini_add_options(store_, INI_OPT_HIDE_FIXED);
  EXPECT_EQ(ini_get(store_, "fixed"), nullptr);
  ini_clear_options(store_, INI_OPT_HIDE_FIXED | INI_OPT_KEEP_FIXED);
  EXPECT_EQ(ini_set(store_, "fixed", "moved"), 1);
  EXPECT_STREQ(ini_get(store_, "fixed"), "moved");

  EXPECT_EQ(ini_set(store_, "multi", "second"), 1);
  EXPECT_STREQ(ini_get(store_, "multi"), "first");
  EXPECT_STREQ(ini_get_next(store_, "multi"), "second");

  EXPECT_EQ(ini_set(store_, "path", "C:\\Program Files\\app/x"), 1);
  EXPECT_STREQ(ini_get(store_, "path"), "C:/Program Files/app/x");
  ini_clear_options(store_, INI_OPT_PATHS);
  EXPECT_EQ(ini_set(store_, "path", "a\\b"), 1);
  EXPECT_STREQ(ini_get(store_, "path"), "a\\b");

  ini_clear_options(store_, INI_OPT_SINGLE);
  EXPECT_EQ(ini_set(store_, "single", "two"), 1);
  EXPECT_STREQ(ini_get(store_, "single"), "one");
  EXPECT_STREQ(ini_get_next(store_, "single"), "two");
}

TEST_F(store_test, MaskedValuesStayOutOfTheLog) {
  set_up(kPlain);
  ini_add_options(store_, INI_OPT_NEW_MASKED);
  EXPECT_EQ(ini_set(store_, "secret", "hunter2"), 1);
  EXPECT_EQ(ini_set(store_, "token", "t0k3n"), 1);
  EXPECT_TRUE(logged("Ini value for 'secret' set to 'xxxx'"));
  EXPECT_TRUE(logged("Ini setting 'token' created and set to 'xxxx'"));
  EXPECT_FALSE(logged("hunter2"));
  EXPECT_FALSE(logged("t0k3n"));
  EXPECT_STREQ(ini_get(store_, "secret"), "hunter2");
  ini_clear_options(store_, INI_OPT_MASK_LOG);
  EXPECT_EQ(ini_set(store_, "secret", "plain"), 1);
  EXPECT_TRUE(logged("Ini value for 'secret' set to 'plain'"));
}

const char* add_suffix(const char* value) {
  static std::string result;
  result = std::string(value) + "+f";
  return result.c_str();
}
const char* upper_first(const char* value) {
  static std::string result;
  result = value;
  if (!result.empty()) result[0] = static_cast<char>(result[0] - 'a' + 'A');
  return result.c_str();
}
const char* refuse(const char*) { return nullptr; }

TEST_F(store_test, FiltersChainOverSharedBits) {
  const ini_setting_def defs[] = {{"both", nullptr, 0x40 | 0x80},
                                  {"one", nullptr, 0x80},
                                  {"none", nullptr, INI_MULTI},
                                  {"null", nullptr, 0x200},
                                  {nullptr, nullptr, 0}};
  set_up(defs);
  ini_set_load_fn(store_, upper_first, 0x40);
  ini_set_load_fn(store_, add_suffix, 0x80 | INI_MULTI);
  ini_set_load_fn(store_, refuse, 0x200);
  EXPECT_TRUE(logged("New load fn ["));
  EXPECT_EQ(ini_set(store_, "both", "abc"), 1);
  EXPECT_STREQ(ini_get(store_, "both"), "Abc+f");
  EXPECT_EQ(ini_set(store_, "one", "abc"), 1);
  EXPECT_STREQ(ini_get(store_, "one"), "abc+f");
  EXPECT_EQ(ini_set(store_, "none", "abc"), 1);  // shares a bit, no filter bit
  EXPECT_STREQ(ini_get(store_, "none"), "abc");
  EXPECT_EQ(ini_set(store_, "null", "abc"), 1);
  EXPECT_STREQ(ini_get(store_, "null"), "abc");

  ini_set_load_fn(store_, upper_first, 0x80 | INI_MULTI);
  EXPECT_TRUE(logged("already set for flag [129], replacing with new fn"));
  EXPECT_EQ(ini_set(store_, "one", "xyz"), 1);
  EXPECT_STREQ(ini_get(store_, "one"), "Xyz");
}

TEST_F(store_test, SingleValuesReplaceTheValueAfterTheCursor) {
  set_up(kPlain);
  // An own value handed back in must survive its replacement.
  EXPECT_EQ(ini_set(store_, "single", ini_get(store_, "single")), 1);
  EXPECT_STREQ(ini_get(store_, "single"), "one");
  EXPECT_EQ(ini_get_next(store_, "single"), nullptr);

  ini_clear_options(store_, INI_OPT_SINGLE);
  ini_set(store_, "single", "two");
  ini_set(store_, "single", "three");
  ini_add_options(store_, INI_OPT_SINGLE);
  ini_get(store_, "single");  // cursor on "one": "two" is replaced
  EXPECT_EQ(ini_set(store_, "single", "four"), 1);
  const int index = ini_index_of(store_, "single");
  std::string all;
  for (const char* v = ini_get_value(store_, index); v; v = ini_get_next_value(store_, index)) {
    all += std::string(v) + ",";
  }
  EXPECT_EQ(all, "one,four,three,");
}

TEST_F(store_test, SetByIndexFormattedAndInLists) {
  set_up(kPlain);
  const int multi = ini_index_of(store_, "multi");
  EXPECT_EQ(ini_set_value_fmt(store_, multi, "%s-%d", "n", 42), 1);
  EXPECT_EQ(ini_set_value_fmt(store_, multi, "%s%s", std::string(800, 'x').c_str(),
                               std::string(800, 'y').c_str()),
            1);
  EXPECT_STREQ(ini_get_value(store_, multi), "first");
  EXPECT_STREQ(ini_get_next_value(store_, multi), "n-42");
  EXPECT_EQ(strlen(ini_get_next_value(store_, multi)), 999u);

  dyn_list* texts = list_create();
  char a[] = "a";
  char empty[] = "";
  char b[] = "b";
  list_append(texts, a);
  list_append(texts, empty);
  list_append(texts, b);
  EXPECT_EQ(ini_set_values(store_, multi, texts), 1);
  EXPECT_EQ(ini_set_values(store_, -1, texts), 0);
  list_free(&texts);
  ini_get_value(store_, multi);
  for (int i = 0; i < 2; ++i) ini_get_next_value(store_, multi);
  EXPECT_STREQ(ini_get_next_value(store_, multi), "a");
  EXPECT_STREQ(ini_get_next_value(store_, multi), "b");  // "" refused, "b" still added
  dyn_list* none = list_create();
  EXPECT_EQ(ini_set_values(store_, multi, none), 1);
  list_free(&none);
}

TEST_F(store_test, TakeOperationsHandValuesOver) {
  set_up(kPlain);
  ini_set(store_, "multi", "second");
  ini_set(store_, "multi", "third");
  const int multi = ini_index_of(store_, "multi");
  ini_get_value(store_, multi);
  ini_get_next_value(store_, multi);  // cursor on "second"
  char* taken = ini_take_current(store_, multi);
  EXPECT_STREQ(taken, "second");
  free(taken);
  taken = ini_take_first_by_name(store_, "multi");
  EXPECT_STREQ(taken, "first");
  free(taken);
  ini_get_next_value(store_, multi);  // past the end: wraps to the first
  taken = ini_take_current_by_name(store_, "multi");
  EXPECT_STREQ(taken, "third");
  free(taken);
  EXPECT_EQ(ini_take_first(store_, multi), nullptr);
  EXPECT_EQ(ini_get(store_, "multi"), nullptr);
}

TEST_F(store_test, NameListsAndTrueFalseWords) {
  set_up(kPlain);
  dyn_list* names = ini_names(store_);
  ini_set(store_, "later", "x");  // the listed names keep their address
  ASSERT_EQ(list_count(names), 7);
  EXPECT_STREQ(static_cast<const char*>(names->items[1]), "multi");
  list_free(&names);

  names = ini_names_matching(store_, "s*");
  ASSERT_EQ(list_count(names), 3);
  EXPECT_STREQ(static_cast<const char*>(names->items[1]), "secret");
  list_free(&names);
  names = ini_names_matching(store_, "S*");
  EXPECT_EQ(list_count(names), 0);
  list_free(&names);

  value_list* copies = ini_name_list(store_);
  EXPECT_EQ(value_list_count(copies), 8);
  EXPECT_STREQ(value_list_current(copies), "single");
  value_list_free(&copies);

  const ini_setting_def words[] = {{"y", "Yes", 0}, {"n", "0", 0}, {"neither", "maybe", 0},
                                   {"none", nullptr, 0}, {nullptr, nullptr, 0}};
  ini_store* flags = ini_create();
  ini_setup(flags, words, nullptr, 1);
  const int expected[][2] = {{1, 0}, {0, 1}, {0, 0}, {0, 0}};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(ini_is_true(flags, i), expected[i][0]) << i;
    EXPECT_EQ(ini_is_false(flags, i), expected[i][1]) << i;
  }
  ini_destroy(&flags);
}

}  // namespace
