#include "driver/answers.h"

#include <unistd.h>

#include <string>
#include <vector>

#include "foundation/test_scratch.h"

namespace {

std::string joined(const std::vector<answer>& answers) {
  std::string text;
  for (const answer& given : answers) {
    text += std::to_string(given.line) + ":" + given.name + "=" + given.value + ";";
  }
  return text;
}

TEST(AnswersParse, LinesAndRefusals) {
  const std::string longest = "name " + std::string(994, 'x');  // 999 characters: read
  struct row {
    std::string text;
    std::string answers;  // line:name=value; ...
    std::string error;
  } rows[] = {
      {"# kept\n\n  web_root   /srv/my www \r\nflag\nlast value",
       "3:web_root=/srv/my www;4:flag=;5:last=value;", ""},
      {longest + "\nb 2", "1:name=" + longest.substr(5) + ";2:b=2;", ""},
      {std::string("a 1\nb \0x\n", 9), "1:a=1;", "f.ans:2: line holds a NUL byte"},
  };
  for (const row& r : rows) {
    answers_file file;
    file.path = "f.ans";
    std::string error;
    EXPECT_EQ(answers_parse(r.text, &file, &error), r.error.empty() ? 1 : 0) << r.text;
    EXPECT_EQ(error, r.error);
    EXPECT_EQ(joined(file.answers), r.answers);
  }
}

TEST(AnswersMerge, ReplacesTheLastLineOfANameAndAddsTheRest) {
  struct row {
    std::string before;
    std::vector<answer> values;
    std::string after;
  } rows[] = {
      {"# mine\n  web_root\t /old  \n", {{"web_root", "/new", 0}}, "# mine\n  web_root\t /new\n"},
      {"a 1\nb 2\na 3\n", {{"a", "9", 0}, {"c", "x y", 0}}, "a 1\nb 2\na 9\nc x y\n"},
      {"flag\r\n", {{"flag", "true", 0}}, "flag true\n"},
  };
  for (const row& r : rows) {
    answers_file file;
    std::string error;
    ASSERT_EQ(answers_parse(r.before, &file, &error), 1);
    EXPECT_EQ(answers_merge(file, r.values), r.after) << r.before;
  }
}

class AnswersFileTest : public scratch_test {
 protected:
  void SetUp() override {
    scratch_test::SetUp();
    store_ = ini_create();
    const ini_setting_def defs[] = {
        {"secret", "pw", INI_MASKED}, {"dir", "/d", 0}, {nullptr, nullptr, 0}};
    ini_setup(store_, defs, nullptr, 1);
  }
  void TearDown() override {
    ini_destroy(&store_);
    scratch_test::TearDown();
  }
  ini_store* store_ = nullptr;
};

TEST_F(AnswersFileTest, KeepLeavesMaskedAndUnfitValuesOut) {
  write_file("a.ans", "# answers\ndir /old\n");
  ini_set(store_, "title", "My board");
  ini_set(store_, "note", "two\nlines");
  std::string error;
  ASSERT_EQ(answers_keep(store_, path("a.ans").c_str(), {"dir", "secret", "note", "title", "none"},
                         &error),
            1)
      << error;
  EXPECT_EQ(read_file("a.ans"), "# answers\ndir /d\ntitle My board\n");
  EXPECT_TRUE(logged("Answer for 'secret' not kept, the setting is masked"));
  EXPECT_TRUE(logged("Answer for 'note' not kept, its value does not fit on one line"));
  // A file that does not exist is created.
  ASSERT_EQ(answers_keep(store_, path("new.ans").c_str(), {"dir"}, &error), 1);
  EXPECT_EQ(read_file("new.ans"), "dir /d\n");
}

TEST_F(AnswersFileTest, ALinkAtTheNameIsNeitherReadNorReplaced) {
  write_file("real.ans", "dir /x\n");
  ASSERT_EQ(symlink("real.ans", path("link.ans").c_str()), 0);
  answers_file file;
  std::string error;
  EXPECT_EQ(answers_read(path("link.ans").c_str(), &file, &error), 0);
  EXPECT_EQ(error, "Cannot read answers from '" + path("link.ans") + "', it is a symbolic link");
  EXPECT_EQ(answers_keep(store_, path("link.ans").c_str(), {"dir"}, &error), 0);
  EXPECT_EQ(read_file("real.ans"), "dir /x\n");
}

TEST_F(AnswersFileTest, ASettingAnAnswerCreatesTakesTheTypedAnswerInItsPlace) {
  answers_file file;
  std::string error;
  ASSERT_EQ(answers_parse("new_one v\ndir /a\n", &file, &error), 1);
  answers_apply(store_, file);
  ini_set(store_, "new_one", "typed");
  EXPECT_STREQ(ini_get(store_, "new_one"), "typed");
  EXPECT_STREQ(ini_get(store_, "dir"), "/a");
}

}  // namespace
