#include "questions/question_ask.h"

#include "foundation/str_text.h"
#include "questions/question_error.h"
#include "questions/test_support.h"

namespace {

using QuestionAsk = question_test;

TEST_F(QuestionAsk, PromptsWrapsAndTrims) {
  const std::string a40(40, 'a'), c79(79, 'c');
  const struct {
    std::string text;
    std::string input;
    std::string shown;
    std::string answer;  // or the question error
  } rows[] = {
      {"Name?", "  x \t\r\n", "Name? [old]? ", "  x"},
      {"At $(v)$(nothing)?", "\n", "At old? []? ", "You must enter an answer"},
      {"Q?", "", "Q? []? ", "q"},  // end of input quits
      // Prompts longer than 80 are cut at the last blank within 79, or at 79.
      {a40 + " " + std::string(35, 'b'), "x\n", a40 + " " + std::string(35, 'b') + " []? ", "x"},
      {a40 + " " + std::string(36, 'b'), "x\n", a40 + " " + std::string(36, 'b') + "\n[]? ", "x"},
      {std::string(250, 'c'), "x\n",
       c79 + "\n" + c79 + "\n" + c79 + "\n" + std::string(10, 'c') + " []? ", "x"},
      // A longer line is cut, and the rest of it is not the next answer.
      {"L?", std::string(1500, 'a') + "\nnext\n", "L? []? ", std::string(kLineMax, 'a')},
  };
  char answer[kLineSize];
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text.substr(0, 40));
    load_set(std::string(row.text == "Name?" ? "Text v" : "Text none") + " - - 1 " + row.text);
    console(row.input);
    int result = question_ask(set_, 0, answer, sizeof answer);
    EXPECT_EQ(printed(), row.shown);
    EXPECT_EQ(result == 1 ? answer : question_last_error(), row.answer);
  }
  EXPECT_EQ(question_ask(set_, 0, answer, sizeof answer), 1);
  EXPECT_STREQ(answer, "next");
  EXPECT_EQ(logged("End of input at 'none', taken as 'q'"), 1);
}

TEST_F(QuestionAsk, AcceptChecksAndNormalisesByType) {
  write_file("empty/", "");
  const std::string missing = path("missing");
  const struct {
    const char* type;
    std::string answer;
    std::string stored;  // or the reason of the refusal, after "!"
  } rows[] = {
      {"Dir", "/a/b//", "/a/b/"},
      {"DirExist", dir_ + "/", dir_},
      {"DirExist", missing + "/",
       "!Directory '" + missing + "' must exist, No such file or directory"},
      {"FileExist", missing, "!File '" + missing + "' must exist, No such file or directory"},
      {"DirEmpty", path("empty"), path("empty")},
      {"DirEmpty", dir_, "!Directory '" + dir_ + "' must be empty"},
      {"YN", "Yes", "true"},
      {"Textual", "  as is ", "  as is "},
  };
  for (auto row : rows) {
    SCOPED_TRACE(row.answer);
    load_set(row.type + std::string(" v - - 1 Q?"));
    ini_set(store_, "v", "old");
    const bool accepted = question_accept(set_, 0, row.answer.data()) == 1;
    EXPECT_EQ(accepted ? ini_get(store_, "v") : "!" + std::string(question_last_error()),
              row.stored);
  }
}

}  // namespace
