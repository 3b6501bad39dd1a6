#include "settings/ini_file.h"

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

using IniFileStore = scratch_test;

// A save writes every value under the exact name given. A load appends
// ".ini" when the last component has no dot, may set a fixed setting (and
// afterwards nothing may), and applies a vhost block only to its site.
TEST_F(IniFileStore, SaveAndLoad) {
  const ini_setting_def defs[] = {{"fixed", "stone", INI_FIXED}, {nullptr, nullptr, 0}};
  ini_store* store = ini_create();
  ini_setup(store, defs, nullptr, 1);
  for (const char* value : {"one", "two words"}) ini_set(store, "list", value);
  EXPECT_EQ(ini_save(store, path("saved").c_str()), 1);
  EXPECT_EQ(read_file("saved"), "fixed stone\nlist one\nlist two words\n");
  write_file("d.d/sites.ini", "fixed new\nvhost alpha\nin 1\nvhost beta\nin 2\nvend\nafter 1\n");
  const std::string sites = path("d.d/sites");
  EXPECT_EQ(ini_load(store, sites.c_str(), nullptr), 1);
  EXPECT_EQ(logged("No vhost_match specified, will not match any vhost lines"), 2);
  EXPECT_EQ(ini_set(store, "fixed", "later"), -1);
  EXPECT_STREQ(ini_get(store, "fixed"), "new");
  EXPECT_STREQ(ini_get(store, "after"), "1");
  EXPECT_EQ(ini_get(store, "in"), nullptr);
  EXPECT_EQ(ini_load(store, sites.c_str(), "beta"), 1);
  EXPECT_STREQ(ini_get(store, "in"), "2");
  EXPECT_EQ(ini_load(store, (sites + ".ini.x").c_str(), nullptr), 0);
  ini_destroy(&store);
}

}  // namespace
