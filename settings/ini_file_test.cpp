#include "settings/ini_file.h"

#include <stdlib.h>

#include <initializer_list>
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

// The first value of each named setting, "-" for none, each followed by " ".
std::string firsts(ini_store* store, std::initializer_list<const char*> names) {
  std::string text;
  for (const char* name : names) {
    const char* value = ini_get(store, name);
    text += (value != nullptr ? value : "-") + std::string(" ");
  }
  return text;
}

using IniFileStore = scratch_test;

// A save writes every value under the exact name given. A load appends
// ".ini" when the last component has no dot, may set a fixed setting (and
// afterwards nothing may), and applies a vhost block only to its site. A
// file value comes from the first line of the setting's name, in one shared
// buffer that a miss leaves as it was.
TEST_F(IniFileStore, SaveLoadAndFileValues) {
  const ini_setting_def defs[] = {
      {"fixed", "stone", INI_FIXED}, {"site", "none", 0}, {nullptr, nullptr, 0}};
  ini_store* store = ini_create();
  ini_setup(store, defs, nullptr, 1);
  ini_set(store, "list", "one");
  ini_set(store, "list", "two words");
  EXPECT_EQ(ini_save(store, path("saved").c_str()), 1);
  EXPECT_EQ(read_file("saved"), "fixed stone\nsite none\nlist one\nlist two words\n");
  EXPECT_EQ(ini_save(store, path("no/such/dir").c_str()), 0);
  EXPECT_EQ(logged("Ini error opening '" + path("no/such/dir") +
                   "' for write, No such file or directory"),
            1);

  write_file("dir.d/sites.ini",
             "fixed changed\nvhost alpha\nin_alpha 1\nvhost beta\nin_beta 1\nvend\nafter 1\n"
             "vhost Alpha\nin_capital 1\n");
  EXPECT_EQ(ini_load(store, path("dir.d/sites").c_str(), nullptr), 1);
  EXPECT_EQ(logged("No vhost_match specified, will not match any vhost lines"), 3);
  EXPECT_EQ(ini_set(store, "fixed", "later"), -1);
  EXPECT_EQ(firsts(store, {"fixed", "after", "in_alpha", "in_beta"}), "changed 1 - - ");
  ini_set(store, "vhost_match", "SETTINGS_TEST_SITE");
  setenv("SETTINGS_TEST_SITE", "beta", 1);
  EXPECT_EQ(ini_load(store, path("dir.d/sites").c_str(), nullptr), 1);
  unsetenv("SETTINGS_TEST_SITE");
  EXPECT_EQ(ini_load(store, path("dir.d/sites").c_str(), "alpha"), 1);
  EXPECT_EQ(firsts(store, {"vhost", "in_beta", "in_alpha", "in_capital"}), "beta 1 1 - ");
  EXPECT_EQ(ini_load(store, path("dir.d/sites.ini.x").c_str(), nullptr), 0);

  write_file("one.ini", "# comment\nsite   first.example  \nsite second\n");
  const char* first = ini_read_file_value(store, path("one").c_str(), 1);
  EXPECT_STREQ(first, "first.example");
  EXPECT_EQ(ini_read_file_value(store, path("one").c_str(), 0), first);
  EXPECT_STREQ(first, "first.example");
  ini_destroy(&store);
}

}  // namespace
