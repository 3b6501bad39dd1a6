#include "questions/question_file.h"

#include "questions/question_error.h"
#include "questions/test_support.h"

namespace {

using QuestionFile = question_test;

// "type|label|control|compare|help|text" of q, "~" for an absent text.
std::string fields(const question& q) {
  std::string out = std::to_string(q.type);
  for (const auto* text : {&q.label, &q.control, &q.compare, &q.help_id, &q.text}) {
    out += "|" + (*text ? **text : "~");
  }
  return out;
}

TEST_F(QuestionFile, ParsesEveryLineShape) {
  const struct {
    const char* line;
    const char* fields;
    const char* logged;  // null for a complete line
  } rows[] = {
      {"text name - - 1 Your   name?", "1|name|~|~|1|Your   name?", nullptr},
      {"YN a c d 2 In\\tto\\n$(x)\\\\ \\q x\\", "2|a|c|d|2|In\tto\n$(x)\\ q x\\", nullptr},
      {"DIREXIST d - - 3 D?", "260|d|~|~|3|D?", nullptr},
      {"Copy to - - 0 from", "1024|to|~|~|0|from", nullptr},
      {"Error ok 7 No $(root)", "2048|ok|~|~|7|No $(root)", nullptr},
      {"Exist $(root)/a found extra", "512|found|~|~|~|$(root)/a", nullptr},
      {"Loop again\t 3 extra", "4096|again|~|~|~|3", nullptr},
      {"Textual a - - 1 Hi", "0|a|~|~|1|Hi", "Unknown question type 'Textual'"},
      {"Text", "1|~|~|~|~|~", "Missing setting label"},
      {"Dir d", "4|d|~|~|~|~", "Missing control"},
      {"File f c", "8|f|c|~|~|~", "Missing control comparison"},
      {"FileExist f c -", "264|f|c|~|~|~", "Missing Help ID text"},
      {"YN want_db - - 12", "2|want_db|~|~|12|~", "Missing question text"},
      {"Error ok", "2048|ok|~|~|~|~", "Missing Help ID text"},
      {"Exist /tmp/x", "512|~|~|~|~|/tmp/x", "Missing Help ID text"},
      {"Loop again", "4096|again|~|~|~|~", "Missing Help ID text"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.line);
    question q;
    const int result = question_parse_line(&q, row.line);
    EXPECT_EQ(result, row.logged == nullptr || q.type == 0 ? 1 : 0);
    EXPECT_EQ(fields(q), row.fields);
    EXPECT_TRUE(row.logged == nullptr || logged(row.logged));
  }
}

TEST_F(QuestionFile, LoadsOneSectionAndKeepsIt) {
  const std::string file =
      write_file("install.q",
                 "# comment\nText stray - - 0 Before any section?\n  [Install]  \n"
                 "Text name - - 1 Name?\n\n#Text no - - 1 No?\nYN ok - - 2 OK?\n[upgrade\nText old "
                 "- - 3 Old?\n[empty]\n");
  question_set* set = question_set_create(nullptr);
  EXPECT_EQ(question_load(set, file.c_str(), "UPGRADE"), 1);
  EXPECT_EQ(question_count(set), 1u);
  EXPECT_EQ(question_load(set, file.c_str(), "remove"), 0);
  EXPECT_TRUE(logged("Section 'remove' not found"));
  EXPECT_EQ(question_load(set, file.c_str(), "empty"), 1);
  EXPECT_EQ(question_count(set), 0u);
  EXPECT_EQ(question_load(set, file.c_str(), "install"), 1);
  ASSERT_EQ(question_count(set), 2u);
  EXPECT_STREQ(question_label(set, 1), "ok");
  std::filesystem::remove(file);
  EXPECT_EQ(question_load(set, file.c_str(), "INSTALL"), 1);  // the same section is not read again
  EXPECT_EQ(question_count(set), 2u);
  EXPECT_EQ(question_load(set, file.c_str(), "empty"), 0);
  EXPECT_EQ(question_count(set), 0u);
  EXPECT_EQ(question_last_error(), "Error opening '" + file + "', No such file or directory");
  EXPECT_EQ(question_load(set, nullptr, "install"), 0);
  question_set_free(&set);
  EXPECT_EQ(set, nullptr);
}

TEST_F(QuestionFile, RejectedLineLeavesItsFieldsToTheNextOne) {
  std::string lines;
  for (int i = 0; i < 5; ++i) lines += "Text q" + std::to_string(i) + " - - 1 Q?\n";
  lines += "Text a ctl cmp\nText b - - 1 B?\nText " + std::string(1500, 'x') + "\n";
  load_set(lines);
  ASSERT_EQ(question_count(set_), 6u);  // both pieces of the long line are rejected
  EXPECT_STREQ(question_label(set_, 5), "b");
  EXPECT_STREQ(question_control(set_, 5), "ctl");
  EXPECT_STREQ(question_compare(set_, 5), "cmp");
  EXPECT_EQ(question_text(set_, 6), nullptr);
  EXPECT_EQ(question_type(set_, ~0u), 0u);
  EXPECT_EQ(question_help_id(nullptr, 0), nullptr);
}

}  // namespace
