#include "settings/ini_file.h"

#include <stdlib.h>

#include <string>

#include "foundation/test_scratch.h"
#include "settings/ini_store.h"

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
      {"name   \n", 1, "name", ""},
      {"   # comment after blanks", 0, "", ""},
      {"name #not a comment", 1, "name", "#not a comment"},
      {" \t\r\n", 0, "", ""},
  };
  for (const row& r : rows) {
    ini_line line;
    EXPECT_EQ(ini_parse_line(r.text, &line), r.result) << r.text;
    if (r.result == 0) continue;
    EXPECT_EQ(line.name, r.name) << r.text;
    EXPECT_EQ(line.value, r.value) << r.text;
  }
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
  std::filesystem::create_directory(path("dir.d"));
  write_file("dir.d/inner.ini", "extra yes\n");

  EXPECT_EQ(ini_load(store_, path("conf.ini").c_str(), nullptr), 1);
  EXPECT_TRUE(logged("Opening ini file '" + path("conf.ini") + "'"));
  EXPECT_STREQ(ini_get(store_, "fixed"), "changed");  // fixed, but a load may set it
  EXPECT_NE(ini_get_options(store_) & INI_OPT_KEEP_FIXED, 0u);
  EXPECT_EQ(ini_set(store_, "fixed", "later"), -1);

  EXPECT_EQ(ini_load(store_, path("dir.d/inner").c_str(), nullptr), 1);
  EXPECT_STREQ(ini_get(store_, "extra"), "yes");

  EXPECT_EQ(ini_load(store_, path("missing").c_str(), nullptr), 0);
}

TEST_F(ini_file_test, VhostBlocksApplyOnlyToTheirSite) {
  write_file("sites.ini",
             "before 1\nvhost alpha\nin_alpha 1\nvhost beta\nin_beta 1\n"
             "vend\nafter 1\nvhost Alpha\nin_capital 1\n");
  EXPECT_EQ(ini_load(store_, path("sites").c_str(), nullptr), 1);
  EXPECT_TRUE(logged("No vhost_match specified, will not match any vhost lines"));
  EXPECT_STREQ(ini_get(store_, "after"), "1");
  EXPECT_EQ(ini_get(store_, "in_alpha"), nullptr);

  ini_set(store_, "vhost_match", "SETTINGS_TEST_SITE");
  setenv("SETTINGS_TEST_SITE", "beta", 1);
  EXPECT_EQ(ini_load(store_, path("sites").c_str(), nullptr), 1);
  unsetenv("SETTINGS_TEST_SITE");
  EXPECT_STREQ(ini_get(store_, "vhost"), "beta");
  EXPECT_STREQ(ini_get(store_, "in_beta"), "1");

  EXPECT_EQ(ini_load(store_, path("sites").c_str(), "alpha"), 1);
  EXPECT_STREQ(ini_get(store_, "before"), "1");
  EXPECT_STREQ(ini_get(store_, "in_alpha"), "1");
  EXPECT_EQ(ini_get(store_, "in_capital"), nullptr);
}

TEST_F(ini_file_test, SaveWritesEveryValueUnderTheExactName) {
  ini_set(store_, "site", "example.org");
  ini_set(store_, "list", "one");
  ini_set(store_, "list", "two words");
  EXPECT_EQ(ini_save(store_, path("saved").c_str()), 1);
  EXPECT_EQ(read_file("saved"), "fixed stone\nsite example.org\nlist one\nlist two words\n");
  EXPECT_EQ(ini_load(store_, path("saved").c_str(), nullptr), 0);  // looks for saved.ini

  EXPECT_EQ(ini_save(store_, path("no/such/dir").c_str()), 0);
  EXPECT_TRUE(logged("Ini error opening '" + path("no/such/dir") +
                     "' for write, No such file or directory"));
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
  EXPECT_EQ(ini_read_file_value(store_, path("one").c_str(), 99), nullptr);
}

}  // namespace
