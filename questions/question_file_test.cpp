#include "questions/question_file.h"

#include "questions/question_error.h"
#include "questions/test_support.h"

namespace {

using QuestionFile = question_test;

TEST_F(QuestionFile, ParsesEveryLineShape) {
  const struct {
    const char* line;
    const char* fields;  // type|label|control|compare|help|text, "~" for none
    const char* logged;  // null for a complete line
  } rows[] = {
      {"text name - - 1 Your   name?", "1|name|~|~|1|Your   name?", nullptr},
      {"YN a c d 2 In\\tto\\n$(x)\\\\ \\q x\\", "2|a|c|d|2|In\tto\n$(x)\\ q x\\", nullptr},
      {"Error ok 7 No $(root)", "2048|ok|~|~|7|No $(root)", nullptr},
      {"Exist $(root)/a found extra", "512|found|~|~|~|$(root)/a", nullptr},
      {"Textual a - - 1 Hi", "0|a|~|~|1|Hi", "Unknown question type 'Textual'"},
      {"Text", "1|~|~|~|~|~", "Missing setting label"},
      {"File f c", "8|f|c|~|~|~", "Missing control comparison"},
      {"Exist /tmp/x", "512|~|~|~|~|/tmp/x", "Missing Help ID text"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.line);
    question q;
    const int result = question_parse_line(&q, row.line);
    EXPECT_EQ(result, row.logged == nullptr || q.type == 0 ? 1 : 0);
    std::string fields = std::to_string(q.type);
    for (const auto* text : {&q.label, &q.control, &q.compare, &q.help_id, &q.text}) {
      fields += "|" + (*text ? **text : "~");
    }
    EXPECT_EQ(fields, row.fields);
    EXPECT_TRUE(row.logged == nullptr || logged(row.logged) == 1);
  }
}

TEST_F(QuestionFile, LoadsOneSectionAndKeepsIt) {
  const std::string file =
      write_file("install.q",
                 "# comment\nText stray - - 0 Before any section?\n  [Install]  \n"
                 "Text name - - 1 Name?\n\n#Text no - - 1 No?\nYN ok - - 2 OK?\n"
                 "[upgrade\nText old - - 3 Old?\n[empty]\n");
  set_ = question_set_create(nullptr);
  EXPECT_EQ(question_load(set_, file.c_str(), "UPGRADE"), 1);  // any case; "]" may be missing
  EXPECT_STREQ(question_label(set_, 0), "old");
  EXPECT_EQ(question_load(set_, file.c_str(), "install"), 1);
  ASSERT_EQ(question_count(set_), 2u);
  EXPECT_STREQ(question_label(set_, 1), "ok");
  std::filesystem::remove(file);
  EXPECT_EQ(question_load(set_, file.c_str(), "INSTALL"), 1);  // the same section is kept
  EXPECT_EQ(question_count(set_), 2u);
  EXPECT_EQ(question_load(set_, file.c_str(), "empty"), 0);
  EXPECT_EQ(question_last_error(), "Error opening '" + file + "', No such file or directory");
  EXPECT_EQ(question_load(set_, file.c_str(), "install"), 0);  // nothing is kept now
}

}  // namespace
