#include "copyscript/copy_script.h"

#include <string>

#include "copyscript/copy_test_support.h"

namespace {

using copy_parse_test = copy_test;

std::string or_null(const char* text) { return text != nullptr ? text : "(null)"; }

// Each row: a line, its type and fields. Words ignore case, "-" is no
// field, settings are expanded in the source and an owner, extra fields are
// ignored, an Error line's text runs to the end of the line; a line missing
// a field is dropped.
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
  // A line missing a field is dropped, with a message for each field missing.
  unique_script bad(copy_script_create(store_));
  EXPECT_EQ(
      copy_script_parse_line(bad.get(), "CopyFile /a") + copy_script_parse_line(bad.get(), "Chmod"),
      0);
  EXPECT_EQ(copy_count(bad.get()) + logged("Error: Missing copy destination path") +
                logged("Error: Missing not wildcard") + logged("Error: Missing copy source path"),
            2 + 2 + 1);
}

}  // namespace
