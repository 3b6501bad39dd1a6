#include "copyscript/copy_script.h"

#include <unistd.h>

#include <string>

#include "copyscript/copy_test_support.h"
#include "foundation/str_text.h"
#include "settings/ini_store.h"

namespace {

const char* or_null(const char* text) { return text != nullptr ? text : "(null)"; }

class copy_parse_test : public copy_test {
 protected:
  void SetUp() override {
    copy_test::SetUp();
    ini_set(store_, "src_dir", "/opt/pkg");
    ini_set(store_, "web_root", "/srv/www");
  }
};

struct parse_row {
  const char* line;
  uint32_t type;
  const char* source;
  const char* not_list;
  const char* destination;
  const char* control;
  const char* control_cmp;
};

TEST_F(copy_parse_test, FieldLayoutsPerOperation) {
  const parse_row rows[] = {
      {"CopyFile $(src_dir)/*.php - $(web_root)/docs", k_copy_file, "/opt/pkg/*.php", nullptr,
       "/srv/www/docs", nullptr, nullptr},
      {"CopyFile $(src_dir)/*.php - $(no_such)/docs", k_copy_file, "/opt/pkg/*.php", nullptr,
       "$(no_such)/docs", nullptr, nullptr},
      {"copydir\ta\t*.bak,*.tmp  b ctl cmp extra", k_copy_dir, "a", "*.bak,*.tmp", "b", "ctl",
       "cmp"},
      {"MKDIR $(web_root)/cache use_cache", k_copy_mkdir, "/srv/www/cache", nullptr, nullptr,
       "use_cache", nullptr},
      {"RmFile /x/*.log - - -", k_copy_rm_file, "/x/*.log", nullptr, nullptr, "-", "-"},
      {"RmDir /x/old keep", k_copy_rm_dir, "/x/old", "keep", nullptr, nullptr, nullptr},
      {"Ini a.tmpl a.ini", k_copy_ini, "a.tmpl", nullptr, "a.ini", nullptr, nullptr},
      {"Rename a b", k_copy_rename, "a", nullptr, "b", nullptr, nullptr},
      {"Exist $(web_root)/index.php installed", k_copy_exist, "/srv/www/index.php", nullptr,
       "installed", nullptr, nullptr},
      {"Chown /x/* - $(user):grp", k_copy_chown, "/x/*", nullptr, "$(user):grp", nullptr,
       nullptr},
      {"Chmod /x/* - 755", k_copy_chmod, "/x/*", nullptr, "755", nullptr, nullptr},
      {"Error ok_flag  Disk  full,\tgiving up", k_copy_error, "ok_flag", nullptr,
       " Disk  full,\tgiving up", nullptr, nullptr},
      {"Error ok_flag", k_copy_error, "ok_flag", nullptr, nullptr, nullptr, nullptr},
      {"WFile out.txt value", k_copy_wfile, "out.txt", nullptr, "value", nullptr, nullptr},
      {"RFile in.txt value", k_copy_rfile, "in.txt", nullptr, "value", nullptr, nullptr},
      {"Bogus a b c", 0, nullptr, nullptr, nullptr, nullptr, nullptr},
  };
  for (const parse_row& row : rows) {
    SCOPED_TRACE(row.line);
    unique_script script(copy_script_create(store_));
    ASSERT_EQ(copy_script_parse_line(script.get(), row.line), 1);
    ASSERT_EQ(copy_count(script.get()), 1);
    EXPECT_EQ(copy_type(script.get(), 0), row.type);
    EXPECT_STREQ(or_null(copy_source(script.get(), 0)), or_null(row.source));
    EXPECT_STREQ(or_null(copy_not(script.get(), 0)), or_null(row.not_list));
    EXPECT_STREQ(or_null(copy_destination(script.get(), 0)), or_null(row.destination));
    EXPECT_STREQ(or_null(copy_control(script.get(), 0)), or_null(row.control));
    EXPECT_STREQ(or_null(copy_control_cmp(script.get(), 0)), or_null(row.control_cmp));
  }
  EXPECT_TRUE(logged("Error: Unknown copy type 'Bogus'"));
  EXPECT_TRUE(logged("Debug: Copy line 'type' is [257]"));
  EXPECT_TRUE(logged("Debug: Copy line 'not' is [*.bak,*.tmp]"));
  EXPECT_TRUE(logged("Debug: Copy line 'control_cmp' is [cmp]"));
  EXPECT_TRUE(logged("Debug: Copy list error string is ' Disk  full,\tgiving up'"));
  EXPECT_TRUE(logged("Debug: Process .cpy file line [RmDir /x/old keep]"));
}

TEST_F(copy_parse_test, MissingFieldsDropTheLineWithEveryMessage) {
  struct row {
    const char* line;
    int not_msgs;
    int destination_msgs;
    int source_msgs;
  } rows[] = {
      {"RmDir /tmp/x", 1, 0, 0},
      {"CopyFile /a", 1, 1, 0},
      {"Chmod", 1, 1, 1},
      {"Rename only_source", 0, 1, 0},
      {"MkDir", 0, 0, 1},
      {"Error", 0, 0, 1},
  };
  unique_script script(copy_script_create(store_));
  for (const auto& r : rows) {
    SCOPED_TRACE(r.line);
    int nots = logged_count("Error: Missing not wildcard");
    int dests = logged_count("Error: Missing copy destination path");
    int sources = logged_count("Error: Missing copy source path");
    EXPECT_EQ(copy_script_parse_line(script.get(), r.line), 0);
    EXPECT_EQ(logged_count("Error: Missing not wildcard") - nots, r.not_msgs);
    EXPECT_EQ(logged_count("Error: Missing copy destination path") - dests, r.destination_msgs);
    EXPECT_EQ(logged_count("Error: Missing copy source path") - sources, r.source_msgs);
  }
  EXPECT_EQ(copy_count(script.get()), 0);
}

TEST_F(copy_parse_test, WithoutStoreNothingIsExpandedAndDashStays) {
  unique_script script(copy_script_create(nullptr));
  ASSERT_EQ(copy_script_parse_line(script.get(), "CopyFile $(src_dir)/a - $(web_root)"), 1);
  EXPECT_STREQ(copy_source(script.get(), 0), "$(src_dir)/a");
  EXPECT_STREQ(copy_not(script.get(), 0), "-");
  EXPECT_STREQ(copy_destination(script.get(), 0), "$(web_root)");
}

TEST_F(copy_parse_test, ExpandKeepsUnknownAndUnclosedReferences) {
  unique_script script(copy_script_create(store_));
  struct row {
    const char* text;
    const char* expected;
  } rows[] = {
      {"$(web_root)/$(src_dir)", "/srv/www//opt/pkg"},
      {"$(missing)/x", "$(missing)/x"},
      {"a$(web_root", "a$(web_root"},
      {"$()", "$()"},
      {"pre $(web_root) $(missing) post", "pre /srv/www $(missing) post"},
  };
  for (const auto& r : rows) {
    char* out = copy_expand(script.get(), r.text);
    EXPECT_STREQ(or_null(out), r.expected) << r.text;
    str_free(&out);
  }
  EXPECT_EQ(copy_expand(script.get(), "no references"), nullptr);
  EXPECT_EQ(copy_expand(script.get(), nullptr), nullptr);
  EXPECT_EQ(copy_expand(nullptr, "$(web_root)"), nullptr);
}

TEST_F(copy_parse_test, LoaderReadsOnlyTheWantedSection) {
  const char* text =
      "# comment\n"
      "Exist /before/section flag\n"
      "[Upgrade]\n"
      "Exist /upgrade/one flag\n"
      "  [INSTALL]  \r\n"
      "\n"
      "   # indented comment\n"
      "  Exist /install/one flag  \r\n"
      "Exist /install/two flag\n"
      "[remove\n"
      "Exist /remove/one flag\n"
      "[install]\n"
      "Exist /install/again flag\n";
  unique_script install = load(text, "install");
  ASSERT_EQ(copy_count(install.get()), 2);
  EXPECT_STREQ(copy_source(install.get(), 0), "/install/one");
  EXPECT_STREQ(copy_source(install.get(), 1), "/install/two");
  EXPECT_TRUE(logged("Process .cpy file line [Exist /install/one flag]"));

  unique_script remove = load(text, "Remove");
  ASSERT_EQ(copy_count(remove.get()), 1);
  EXPECT_STREQ(copy_source(remove.get(), 0), "/remove/one");

  unique_script empty(copy_script_create(store_));
  EXPECT_EQ(copy_script_load(empty.get(), path("test.cpy").c_str(), "special"), 0);
  EXPECT_EQ(copy_count(empty.get()), 0);
}

TEST_F(copy_parse_test, LoaderFailures) {
  unique_script script(copy_script_create(store_));
  std::string missing = path("none.cpy");
  EXPECT_EQ(copy_script_load(script.get(), missing.c_str(), "install"), 0);
  EXPECT_TRUE(logged("Error: Error opening '" + missing + "', No such file or directory"));
  EXPECT_EQ(copy_script_load(nullptr, missing.c_str(), "install"), 0);
  EXPECT_EQ(copy_script_load(script.get(), nullptr, "install"), 0);
  EXPECT_EQ(copy_script_load(script.get(), missing.c_str(), nullptr), 0);
  EXPECT_EQ(copy_script_parse_line(script.get(), nullptr), 0);
  write_file("empty.cpy", "[install]\n");
  EXPECT_EQ(copy_script_load(script.get(), path("empty.cpy").c_str(), "install"), 1);
  EXPECT_EQ(copy_count(script.get()), 0);
}

TEST_F(copy_parse_test, LinesAreReadIn999CharacterPieces) {
  std::string head = "Exist /";
  std::string exact = head + std::string(999 - head.size() - 2, 'a') + " f";
  std::string longer = head + std::string(1100, 'b') + " flag";
  unique_script script = load("[install]\n" + exact + "\n" + longer + "\n");
  // The 999-character line is whole; the longer one splits: its first piece
  // lacks a destination, its rest starts with an unknown word.
  ASSERT_EQ(copy_count(script.get()), 2);
  EXPECT_EQ(str_len(copy_source(script.get(), 0)), 999 - 8);
  EXPECT_STREQ(copy_destination(script.get(), 0), "f");
  EXPECT_EQ(copy_type(script.get(), 1), 0u);
  EXPECT_TRUE(logged("Error: Missing copy destination path"));
  EXPECT_TRUE(logged("Error: Unknown copy type 'bbb"));
}

TEST_F(copy_parse_test, PathSplitters) {
  char cwd[kPathSize];
  ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
  struct row {
    const char* path;
    const char* dir;
    const char* source_pattern;
    const char* destination_pattern;
  } rows[] = {
      {"/srv/www/htdocs", "/srv/www/", "htdocs", "htdocs"},
      {"/srv/www/site*", "/srv/www/", "site*", "site*"},
      {"/srv/www/htdocs/", "/srv/www/htdocs/", "*", nullptr},
      {"rel\\win\\*.txt", "rel\\win\\", "*.txt", "*.txt"},
      {"bare.txt", cwd, "bare.txt", nullptr},
      {"/", "/", "*", nullptr},
  };
  unique_script script(copy_script_create(nullptr));
  for (const auto& r : rows) {
    std::string line = std::string("CopyFile ") + r.path + " - " + r.path;
    ASSERT_EQ(copy_script_parse_line(script.get(), line.c_str()), 1);
  }
  char buffer[kPathSize];
  for (int i = 0; i < copy_count(script.get()); ++i) {
    const auto& r = rows[i];
    SCOPED_TRACE(r.path);
    EXPECT_STREQ(or_null(copy_source_dir(script.get(), i, buffer, kPathSize)), r.dir);
    EXPECT_STREQ(or_null(copy_destination_dir(script.get(), i, buffer, kPathSize)), r.dir);
    EXPECT_STREQ(or_null(copy_source_pattern(script.get(), i, buffer, kPathSize)),
                 r.source_pattern);
    EXPECT_STREQ(or_null(copy_destination_pattern(script.get(), i, buffer, kPathSize)),
                 or_null(r.destination_pattern));
  }
}

TEST_F(copy_parse_test, AccessorsOutOfRangeAndNull) {
  unique_script script(copy_script_create(store_));
  ASSERT_EQ(copy_script_parse_line(script.get(), "MkDir /x"), 1);
  char buffer[kPathSize];
  for (int index : {-1, 1}) {
    EXPECT_EQ(copy_type(script.get(), index), 0u);
    EXPECT_EQ(copy_source(script.get(), index), nullptr);
    EXPECT_EQ(copy_source_dir(script.get(), index, buffer, kPathSize), nullptr);
    EXPECT_EQ(copy_source_pattern(script.get(), index, buffer, kPathSize), nullptr);
  }
  // An MkDir line has no destination to split.
  EXPECT_EQ(copy_destination_dir(script.get(), 0, buffer, kPathSize), nullptr);
  EXPECT_EQ(copy_count(nullptr), 0);
  EXPECT_EQ(copy_source(nullptr, 0), nullptr);
  copy_script* gone = script.release();
  copy_script_free(&gone);
  EXPECT_EQ(gone, nullptr);
  copy_script_free(&gone);
  copy_script_free(nullptr);
}

}  // namespace
