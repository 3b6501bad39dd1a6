#include "settings/ini_file.h"

#include <stdlib.h>

#include <string>

#include "foundation/test_scratch.h"
#include "settings/ini_store.h"

namespace {

TEST(IniFile, ParseLineSplitsNameAndValue) {
  // Each row: the line, then "name|value", or "-" for no setting.
  const char* rows[][2] = {{"name value", "name|value"},
                           {"  \tname \t  two  inner  blanks \r\n", "name|two  inner  blanks"},
                           {"name   \n", "name|"},
                           {"name #not a comment", "name|#not a comment"},
                           {"   # comment after blanks", "-"},
                           {" \t\r\n", "-"}};
  for (const auto& row : rows) {
    ini_line line;
    EXPECT_EQ(ini_parse_line(row[0], &line) ? line.name + "|" + line.value : "-", row[1]) << row[0];
  }
}

class IniFileStore : public scratch_test {
 protected:
  void SetUp() override {
    scratch_test::SetUp();
    static constexpr ini_setting_def defs[] = {{"fixed", "stone", INI_FIXED},
                                               {"site", "none", 0},
                                               {"vhost_match", nullptr, 0},
                                               {nullptr, nullptr, 0}};
    ini_setup(store_, defs, nullptr, 1);
  }
  void TearDown() override {
    ini_destroy(&store_);
    scratch_test::TearDown();
  }
  ini_store* store_ = ini_create();
};

// ".ini" is appended when the last component has no dot; a load may set a
// fixed setting, and afterwards nothing else may.
TEST_F(IniFileStore, LoadAppliesVhostBlocksOnlyToTheirSite) {
  write_file("dir.d/sites.ini",
             "fixed changed\nbefore 1\nvhost alpha\nin_alpha 1\nvhost beta\nin_beta 1\n"
             "vend\nafter 1\nvhost Alpha\nin_capital 1\n");
  EXPECT_EQ(ini_load(store_, path("dir.d/sites").c_str(), nullptr), 1);
  EXPECT_EQ(logged("No vhost_match specified, will not match any vhost lines"), 3);
  EXPECT_STREQ(ini_get(store_, "fixed"), "changed");
  EXPECT_EQ(ini_set(store_, "fixed", "later"), -1);
  EXPECT_STREQ(ini_get(store_, "after"), "1");
  EXPECT_EQ(ini_get(store_, "in_alpha"), nullptr);
  ini_set(store_, "vhost_match", "SETTINGS_TEST_SITE");
  setenv("SETTINGS_TEST_SITE", "beta", 1);
  EXPECT_EQ(ini_load(store_, path("dir.d/sites").c_str(), nullptr), 1);
  unsetenv("SETTINGS_TEST_SITE");
  EXPECT_STREQ(ini_get(store_, "vhost"), "beta");
  EXPECT_STREQ(ini_get(store_, "in_beta"), "1");
  EXPECT_EQ(ini_load(store_, path("dir.d/sites").c_str(), "alpha"), 1);
  EXPECT_STREQ(ini_get(store_, "in_alpha"), "1");
  EXPECT_EQ(ini_get(store_, "in_capital"), nullptr);
  EXPECT_EQ(ini_load(store_, path("dir.d/sites.ini.x").c_str(), nullptr), 0);
}

// A save writes every value under the exact name given; a file value comes
// from the first line of the setting's name, in one shared buffer that a
// miss leaves as it was.
TEST_F(IniFileStore, SaveAndReadFileValue) {
  ini_set(store_, "list", "one");
  ini_set(store_, "list", "two words");
  EXPECT_EQ(ini_save(store_, path("saved").c_str()), 1);
  EXPECT_EQ(read_file("saved"), "fixed stone\nsite none\nlist one\nlist two words\n");
  EXPECT_EQ(ini_save(store_, path("no/such/dir").c_str()), 0);
  EXPECT_EQ(logged("Ini error opening '" + path("no/such/dir") +
                   "' for write, No such file or directory"),
            1);
  write_file("one.ini", "# comment\nsite   first.example  \nsite second\n");
  const char* first = ini_read_file_value(store_, path("one").c_str(), 1);
  EXPECT_STREQ(first, "first.example");
  EXPECT_STREQ(ini_get(store_, "site"), "none");
  EXPECT_EQ(ini_read_file_value(store_, path("one").c_str(), 0), first);
  EXPECT_STREQ(first, "first.example");
}

}  // namespace
