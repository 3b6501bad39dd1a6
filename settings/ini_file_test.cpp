#include "settings/ini_file.h"

#include <stdlib.h>

#include <string>

#include "settings/ini_store.h"
#include "settings/settings_test_support.h"

namespace {

TEST(ini_parse_line, SplitsNameAndValue) {
  struct row {
    const char* text;
    int result;
    const char* name;
    const char* value;
  };
  const row rows[] = {
      {"name value", 1, "name", "value"},
      {"  \tname \t  two  inner  blanks \r\n", 1, "name", "two  inner  blanks"},
      {"name", 1, "name", ""},
      {"name   \n", 1, "name", ""},
      {"name\tvalue", 1, "name", "value"},
      {"# comment line", 0, "", ""},
      {"   # comment after blanks", 0, "", ""},
      {"name #not a comment", 1, "name", "#not a comment"},
      {"", 0, "", ""},
      {" \t\r\n", 0, "", ""},
  };
  for (const row& r : rows) {
    ini_line line;
    EXPECT_EQ(ini_parse_line(r.text, &line), r.result) << r.text;
    if (r.result == 0) continue;
    EXPECT_EQ(line.name, r.name) << r.text;
    EXPECT_EQ(line.value, r.value) << r.text;
  }
  ini_line line;
  EXPECT_EQ(ini_parse_line(nullptr, &line), 0);
  EXPECT_EQ(ini_parse_line("a b", nullptr), 0);
}

const ini_setting_def kDefs[] = {{"fixed", "stone", INI_FIXED},
                                 {"site", "none", 0},
                                 {"vhost_match", nullptr, 0},
                                 {nullptr, nullptr, 0}};

class ini_file_test : public scratch_test {
 protected:
  void SetUp() override {
    scratch_test::SetUp();
    ini_setup(store_, kDefs, nullptr, 1);
  }
  void TearDown() override {
    ini_destroy(&store_);
    scratch_test::TearDown();
  }
  ini_store* store_ = ini_create();
};

TEST_F(ini_file_test, LoadAppendsIniOnlyWhenTheLastComponentHasNoDot) {
  write_file("conf.ini", "fixed changed\n");
  write_file("plain.cfg", "site from_cfg\n");
  std::filesystem::create_directory(path("dir.d"));
  write_file("dir.d/inner.ini", "extra yes\n");

  EXPECT_EQ(ini_load(store_, path("conf").c_str(), nullptr), 1);
  EXPECT_TRUE(logged("Opening ini file '" + path("conf.ini") + "'"));
  EXPECT_STREQ(ini_get(store_, "fixed"), "changed");  // fixed, but a load may set it
  EXPECT_NE(ini_get_options(store_) & INI_OPT_KEEP_FIXED, 0u);
  EXPECT_EQ(ini_set(store_, "fixed", "later"), -1);

  EXPECT_EQ(ini_load(store_, path("plain.cfg").c_str(), nullptr), 1);
  EXPECT_STREQ(ini_get(store_, "site"), "from_cfg");
  EXPECT_EQ(ini_load(store_, path("dir.d/inner").c_str(), nullptr), 1);
  EXPECT_STREQ(ini_get(store_, "extra"), "yes");

  ini_clear_options(store_, INI_OPT_KEEP_FIXED);
  EXPECT_EQ(ini_load(store_, path("missing").c_str(), nullptr), 0);
  EXPECT_EQ(ini_get_options(store_) & INI_OPT_KEEP_FIXED, 0u);
  EXPECT_EQ(ini_load(store_, nullptr, nullptr), 0);
  ini_store* unset = ini_create();
  EXPECT_EQ(ini_load(unset, path("conf").c_str(), nullptr), 0);
  ini_destroy(&unset);
}

constexpr const char* kSites =
    "before 1\n"
    "vhost alpha\n"
    "in_alpha 1\n"
    "vhost beta\n"
    "in_beta 1\n"
    "vend\n"
    "after 1\n"
    "vhost Alpha\n"
    "in_capital 1\n";

TEST_F(ini_file_test, VhostBlocksApplyOnlyToTheirSite) {
  write_file("sites.ini", kSites);
  EXPECT_EQ(ini_load(store_, path("sites").c_str(), "alpha"), 1);
  for (const char* name : {"before", "in_alpha", "after"}) {
    EXPECT_STREQ(ini_get(store_, name), "1") << name;
  }
  for (const char* name : {"in_beta", "in_capital"}) {
    EXPECT_EQ(ini_get(store_, name), nullptr) << name;
  }
  EXPECT_EQ(ini_get(store_, "vhost"), nullptr);
}

TEST_F(ini_file_test, VhostNameComesFromTheVariableThatVhostMatchNames) {
  write_file("sites.ini", kSites);
  EXPECT_EQ(ini_load(store_, path("sites").c_str(), nullptr), 1);
  EXPECT_TRUE(logged("No vhost_match specified, will not match any vhost lines"));
  EXPECT_EQ(ini_get(store_, "in_alpha"), nullptr);
  EXPECT_STREQ(ini_get(store_, "after"), "1");

  ini_set(store_, "vhost_match", "SETTINGS_TEST_SITE");
  unsetenv("SETTINGS_TEST_SITE");
  EXPECT_EQ(ini_load(store_, path("sites").c_str(), nullptr), 1);
  EXPECT_TRUE(logged("Ini vhost NOT found, vhost_match=SETTINGS_TEST_SITE"));

  setenv("SETTINGS_TEST_SITE", "beta", 1);
  EXPECT_EQ(ini_load(store_, path("sites").c_str(), nullptr), 1);
  unsetenv("SETTINGS_TEST_SITE");
  EXPECT_STREQ(ini_get(store_, "vhost"), "beta");
  EXPECT_STREQ(ini_get(store_, "in_beta"), "1");
  EXPECT_EQ(ini_get(store_, "in_alpha"), nullptr);
}

TEST_F(ini_file_test, SaveWritesEveryValueUnderTheExactName) {
  ini_set(store_, "site", "example.org");
  ini_set(store_, "list", "one");
  ini_set(store_, "list", "two words");
  EXPECT_EQ(ini_save(store_, path("saved").c_str()), 1);
  EXPECT_EQ(read_file("saved"),
            "fixed stone\nsite example.org\nlist one\nlist two words\n");
  EXPECT_EQ(ini_load(store_, path("saved").c_str(), nullptr), 0);  // looks for saved.ini

  EXPECT_EQ(ini_save(store_, path("no/such/dir").c_str()), 0);
  EXPECT_TRUE(logged("Ini error opening '" + path("no/such/dir") +
                     "' for write, No such file or directory"));
  EXPECT_EQ(ini_save(store_, nullptr), 0);
}

TEST_F(ini_file_test, ReadFileValueSharesOneBufferAndAMissKeepsTheLastHit) {
  write_file("one.ini", "# comment\nsite   first.example  \nsite second\n");
  write_file("two.ini", "fixed granite\n");
  const int site = ini_index_of(store_, "site");
  const char* first = ini_read_file_value(store_, path("one").c_str(), site);
  EXPECT_STREQ(first, "first.example");
  EXPECT_STREQ(ini_get(store_, "site"), "none");  // the store is untouched
  const char* fixed = ini_read_file_value(store_, path("two").c_str(), 0);
  EXPECT_EQ(fixed, first);  // the same buffer
  EXPECT_STREQ(fixed, "granite");
  EXPECT_STREQ(ini_read_file_value(store_, path("two").c_str(), site), "granite");
  EXPECT_EQ(ini_read_file_value(store_, path("gone").c_str(), site), nullptr);
  EXPECT_EQ(ini_read_file_value(store_, path("one").c_str(), 99), nullptr);
}

TEST_F(ini_file_test, LongLinesAreReadInPieces) {
  const std::string value(1500, 'v');
  write_file("long.ini", "long " + value + "\n");
  EXPECT_EQ(ini_load(store_, path("long").c_str(), nullptr), 1);
  // The first piece holds "long " and 994 characters of the value; the rest
  // is a line of its own whose name is all "v".
  EXPECT_EQ(std::string(ini_get(store_, "long")), std::string(994, 'v'));
  EXPECT_STREQ(ini_get(store_, std::string(506, 'v').c_str()), "");
}

}  // namespace
