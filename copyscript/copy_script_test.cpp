#include "copyscript/copy_script.h"

#include <string>

#include "copyscript/copy_test_support.h"
#include "foundation/str_text.h"

namespace {

using copy_parse_test = copy_test;

std::string or_null(const char* text) { return text != nullptr ? text : "(null)"; }

TEST_F(copy_parse_test, FieldLayoutsPerOperation) {
  ini_set(store_, "src", "/opt/pkg");
  struct row {
    const char* line;
    uint32_t type;
    const char* fields;  // source|not|destination|control|control_cmp
  } rows[] = {
      {"CopyFile $(src)/*.php - $(web)/docs", k_copy_file,
       "/opt/pkg/*.php|(null)|$(web)/docs|(null)|(null)"},
      {"copydir\ta\t*.bak,*.tmp  b ctl cmp extra", k_copy_dir, "a|*.bak,*.tmp|b|ctl|cmp"},
      {"MKDIR $(src/cache use_cache", k_copy_mkdir, "$(src/cache|(null)|(null)|use_cache|(null)"},
      {"RmFile /x/*.log - - -", k_copy_rm_file, "/x/*.log|(null)|(null)|-|-"},
      {"Chown /x/* - $(src):grp", k_copy_chown, "/x/*|(null)|/opt/pkg:grp|(null)|(null)"},
      {"Error ok  Disk  full,\tgiving up", k_copy_error,
       "ok|(null)| Disk  full,\tgiving up|(null)|(null)"},
      {"Error ok", k_copy_error, "ok|(null)|(null)|(null)|(null)"},
      {"Bogus a b c", 0, "(null)|(null)|(null)|(null)|(null)"},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.line);
    unique_script script(copy_script_create(store_));
    const copy_script* s = script.get();
    ASSERT_EQ(copy_script_parse_line(script.get(), r.line), 1);
    EXPECT_EQ(or_null(copy_source(s, 0)) + "|" + or_null(copy_not(s, 0)) + "|" +
                  or_null(copy_destination(s, 0)) + "|" + or_null(copy_control(s, 0)) + "|" +
                  or_null(copy_control_cmp(s, 0)),
              r.fields);
    EXPECT_EQ(copy_type(s, 0), r.type);
  }
  EXPECT_EQ(logged("Error: Unknown copy type 'Bogus'"), 1);
}

// Each row: a line missing a field, and how often it logs each message.
TEST_F(copy_parse_test, MissingFieldsDropTheLineWithEveryMessage) {
  struct row {
    const char* line;
    int sources, nots, destinations;
  } rows[] = {{"RmDir /tmp/x", 0, 1, 0},
              {"CopyFile /a", 0, 1, 1},
              {"Chmod", 1, 1, 1},
              {"Rename a", 0, 0, 1},
              {"Error", 1, 0, 0}};
  unique_script script(copy_script_create(store_));
  int sources = 0, nots = 0, destinations = 0;
  for (const auto& r : rows) {
    SCOPED_TRACE(r.line);
    EXPECT_EQ(copy_script_parse_line(script.get(), r.line), 0);
    EXPECT_EQ(logged("Error: Missing copy source path"), sources += r.sources);
    EXPECT_EQ(logged("Error: Missing not wildcard"), nots += r.nots);
    EXPECT_EQ(logged("Error: Missing copy destination path"), destinations += r.destinations);
  }
  EXPECT_EQ(copy_count(script.get()), 0);
}

TEST_F(copy_parse_test, LoaderReadsOnlyTheWantedSection) {
  const char* text =
      "# comment\nExist /before flag\n[Upgrade]\nExist /upgrade flag\n"
      "  [INSTALL]  \r\n\n   # indented\n  Exist /install/1 flag  \r\nExist /install/2 flag\n"
      "[remove\nExist /remove flag\n[install]\nExist /install/again flag\n";
  unique_script install = load(text, "install");
  ASSERT_EQ(copy_count(install.get()), 2);
  EXPECT_STREQ(copy_source(install.get(), 1), "/install/2");
  unique_script remove = load(text, "Remove");
  ASSERT_EQ(copy_count(remove.get()), 1);
  EXPECT_STREQ(copy_source(remove.get(), 0), "/remove");

  unique_script other(copy_script_create(store_));
  EXPECT_EQ(copy_script_load(other.get(), path("test.cpy").c_str(), "special"), 0);
  EXPECT_EQ(copy_script_load(other.get(), path("none.cpy").c_str(), "install"), 0);
  EXPECT_EQ(logged("Error: Error opening '" + path("none.cpy") + "', No such file or directory"),
            1);
}

TEST_F(copy_parse_test, LinesAreReadIn999CharacterPieces) {
  std::string exact = "Exist /" + std::string(990, 'a') + " f";  // 999 characters
  std::string longer = "Exist /" + std::string(1100, 'b') + " flag";
  unique_script script = load("[install]\n" + exact + "\n" + longer + "\n");
  // The longer line's first piece lacks a destination; the rest is a line of
  // its own with an unknown word.
  ASSERT_EQ(copy_count(script.get()), 2);
  EXPECT_EQ(str_len(copy_source(script.get(), 0)), 991);
  EXPECT_STREQ(copy_destination(script.get(), 0), "f");
  EXPECT_EQ(copy_type(script.get(), 1), 0u);
  EXPECT_EQ(logged("Error: Missing copy destination path"), 1);
}

}  // namespace
