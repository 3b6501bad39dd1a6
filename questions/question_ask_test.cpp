#include "questions/question_ask.h"

#include "foundation/str_text.h"
#include "questions/question_error.h"
#include "questions/test_support.h"

namespace {

const ini_setting_def kSettings[] = {{"v", "old", 0}, {"none", nullptr, 0}, {nullptr, nullptr, 0}};

class QuestionAsk : public question_test {
 protected:
  void SetUp() override {
    question_test::SetUp();
    make_store(kSettings);
  }

  // Asks the only question of line, v holding value, the operator typing input.
  int ask(const std::string& line, const char* value, const std::string& input) {
    load_set(line);
    ini_set(store_, "v", value);
    console(input);
    return question_ask(set_, 0, answer_, sizeof answer_);
  }

  char answer_[kLineSize] = {};
};

TEST_F(QuestionAsk, PromptsWithDefaultsAndTrimsAnswers) {
  const struct {
    const char* line;
    const char* value;
    std::string input;
    int result;
    std::string shown;
    std::string answer;
  } rows[] = {
      {"Text v - - 1 Name?", "abc", "  x \t\r\n", 1, "Name? [abc]? ", "  x"},
      {"YN v - - 1 Sure?", "true", "\n", 1, "Sure? [y]? ", "y"},
      {"YN v - - 1 Sure?", "0", "   \n", 1, "Sure? [n]? ", "n"},
      {"Text none - - 1 At $(v)$(nothing)?", "home", " \n", 0, "At home? []? ", ""},
      {"Text none - - 1 Q?", "x", "", 1, "Q? []? ", "q"},  // end of input quits
      {"Text v - - 1 L?", "x", std::string(1500, 'a') + "\nnext\n", 1, "L? [x]? ",
       std::string(kLineMax, 'a')},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.line);
    EXPECT_EQ(ask(row.line, row.value, row.input), row.result);
    EXPECT_EQ(printed(), row.shown);
    if (row.result == 1) {
      EXPECT_EQ(answer_, row.answer);
    }
  }
  EXPECT_STREQ(question_last_error(), "You must enter an answer");
  EXPECT_EQ(question_ask(set_, 0, answer_, sizeof answer_),
            1);  // the rest of the long line was dropped
  EXPECT_STREQ(answer_, "next");
  EXPECT_EQ(question_ask(set_, 1, answer_, sizeof answer_), 0);
}

TEST_F(QuestionAsk, WrapsPromptsLongerThanEighty) {
  const std::string a40(40, 'a'), c79(79, 'c');
  const std::pair<std::string, std::string> rows[] = {
      {a40 + " " + std::string(35, 'b'), a40 + " " + std::string(35, 'b') + " []? "},
      {a40 + " " + std::string(36, 'b'), a40 + " " + std::string(36, 'b') + "\n[]? "},
      {std::string(250, 'c'),
       c79 + "\n" + c79 + "\n" + c79 + "\n" + std::string(10, 'c') + " []? "},
  };
  for (const auto& [text, shown] : rows) {
    ask("Text none - - 1 " + text, "", "x\n");
    EXPECT_EQ(printed(), shown);
  }
}

TEST_F(QuestionAsk, AcceptChecksAndNormalisesByType) {
  std::filesystem::create_directory(path("empty"));
  write_file("plain", "x");
  const std::string missing = path("missing");
  const struct {
    unsigned index;
    std::string answer;
    bool accepted;
    std::string expected;  // the value stored, or the reason of the refusal
  } rows[] = {
      {0, "/a/b//", true, "/a/b/"},
      {0, "c:\\x\\", true, "c:\\x"},
      {1, dir_ + "/", true, dir_},
      {1, path("plain"), true, path("plain")},
      {1, missing + "/", false,
       "Directory '" + missing + "' must exist, No such file or directory"},
      {2, missing, false, "File '" + missing + "' must exist, No such file or directory"},
      {3, path("empty"), true, path("empty")},
      {3, missing, true, missing},
      {3, dir_, false, "Directory '" + dir_ + "' must be empty"},
      {4, "Yes", true, "true"},
      {4, "0", true, "false"},
      {4, "maybe", false, "You must answer either Yes or No"},
      {5, "/opt/app.tar.gz", true, "app.tar"},
      {5, ".profile", true, ".profile"},
      {5, "c:\\d\\setup.exe", true, "setup"},
      {6, "  as is ", true, "  as is "},
  };
  load_set(
      "Dir v - - 1 D?\nDirExist v - - 1 D?\nFileExist v - - 1 F?\nDirEmpty v - - 1 D?\n"
      "YN v - - 1 Y?\nFileName v - - 1 F?\nTextual v - - 1 T?\n");
  for (auto row : rows) {
    SCOPED_TRACE(row.answer);
    ini_set(store_, "v", "old");
    EXPECT_EQ(question_accept(set_, row.index, row.answer.data()), row.accepted ? 1 : 0);
    EXPECT_EQ(str_or_empty(ini_get(store_, "v")), row.accepted ? row.expected : "old");
    if (!row.accepted) {
      EXPECT_EQ(question_last_error(), row.expected);
    }
  }
  EXPECT_EQ(question_accept(set_, 7, answer_), 0);
}

}  // namespace
