#include "environment/init_file.h"

#include <sstream>

#include "foundation/test_scratch.h"

namespace {

class InitFileTest : public scratch_test {
 protected:
  void TearDown() override {
    init_list_free(&list_);
    scratch_test::TearDown();
  }

  // Loads text into a fresh list; each record as "type name value cond_name
  // cond_value" (hex type, "-" for none), records separated by "|".
  std::string load(const std::string& text) {
    init_list_free(&list_);
    list_ = init_list_create();
    write_file("install.int", text);
    EXPECT_EQ(init_load(list_, path("install.int").c_str()), 1);
    std::ostringstream out;
    for (init_command* c = init_first(list_, 0); c != nullptr; c = init_next(list_)) {
      out << std::hex << c->type << ' ' << c->name << ' ' << c->value << ' '
          << c->cond_name.value_or("-") << ' ' << c->cond_value.value_or("-") << '|';
    }
    return out.str();
  }

  init_list* list_ = nullptr;
};

TEST_F(InitFileTest, LineShapes) {
  const std::pair<std::string, std::string> cases[] = {
      {"   # Copy a b - -\n\n \t \n", ""},
      {"x#y a b - -\ncopy a b - -\n", "0 a b - -|0 a b - -|"},
      {"\tCopy\ta   b\t- -  \r\n", "2 a b - -|"},
      {"Copy a b - - extra words\nCopy web_root old act upgrade\n",
       "2 a b - -|2 web_root old act upgrade|"},
      {"Exist a b - -\nHTTP_User a b - -\nHTTP_Group a b - -\nHTTP_Root a b - -\n"
       "HTTP_Scripts a b - -\nTimeDate a b - -\nWFile a b - -\nRFile a b - -\n",
       "1 a b - -|14 a b - -|18 a b - -|110 a b - -|210 a b - -|400 a b - -|800 a b - -|"
       "1000 a b - -|"},
      // A short line is not stored; what it gave is carried into the next
      // line, condition words where that line has "-", type when its word is
      // unknown.
      {"Copy a b\nExist c d - -\n", "1 c d - -|"},
      {"Copy a b c\nCopy d e - -\n", "2 d e c -|"},
      {"Copy a\ncopy d e - -\n", "2 d e - -|"},
  };
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(load(text), expected) << text;
  }
}

TEST_F(InitFileTest, LinesAreReadIn999CharacterPieces) {
  std::string value(988, 'v');
  EXPECT_EQ(load("Copy a " + value + " - -\n"), "2 a " + value + " - -|");
  std::string first = "Copy a b - - " + std::string(986, 'x');
  EXPECT_EQ(load(first + "Exist p q - - " + std::string(187, 'y') + "\n"), "2 a b - -|1 p q - -|");
}

TEST_F(InitFileTest, UnreadableFileKeepsListAndSetsError) {
  load("Copy a b - -\n");
  std::string missing = path("missing.int");
  EXPECT_EQ(init_load(list_, missing.c_str()), 0);
  EXPECT_EQ(std::string(init_last_error()),
            "Failed to read '" + missing + "', No such file or directory");
  EXPECT_EQ(init_load(nullptr, missing.c_str()), 0);
  EXPECT_EQ(init_first(list_, 0)->name, "a");
  EXPECT_EQ(init_first(list_, 1), nullptr);
}

TEST_F(InitFileTest, CursorMoves) {
  load("Copy a0 b - -\nCopy a1 b - -\nCopy a2 b - -\n");
  auto next = [this] {
    init_command* c = init_next(list_);
    return c == nullptr ? std::string("end") : c->name;
  };
  init_first(list_, 2);
  EXPECT_EQ(next(), "end");
  init_rewind(list_);
  init_skip(list_);
  init_skip(list_);
  init_back(list_);
  EXPECT_EQ(next(), "a1");
  init_seek(list_, 0);
  init_back(list_);     // stays at 0
  init_seek(list_, 3);  // beyond the count: stays
  EXPECT_EQ(next(), "a0");
  init_seek(list_, 2);
  init_skip(list_);
  EXPECT_EQ(next(), "end");
}

}  // namespace
