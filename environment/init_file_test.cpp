#include "environment/init_file.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "foundation/logger.h"

namespace {

// Records rendered as "type name value cond_name cond_value", "-" for none.
std::string render(const init_command& c) {
  std::ostringstream out;
  out << std::hex << c.type << ' ' << c.name << ' ' << c.value << ' '
      << c.cond_name.value_or("-") << ' ' << c.cond_value.value_or("-");
  return out.str();
}

class InitFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/init_file_test.XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir_ = pattern;
    list_ = init_list_create();
  }
  void TearDown() override {
    init_list_free(&list_);
    std::error_code ignored;
    std::filesystem::remove_all(dir_, ignored);
  }

  std::string write(const std::string& text, const std::string& name = "install.int") {
    std::string path = dir_ + "/" + name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
  }

  std::vector<std::string> load(const std::string& text) {
    EXPECT_EQ(init_load(list_, write(text).c_str()), 1);
    return stored();
  }

  std::vector<std::string> stored() {
    std::vector<std::string> rows;
    for (init_command* c = init_first(list_, 0); c != nullptr; c = init_next(list_)) {
      rows.push_back(render(*c));
    }
    return rows;
  }

  std::string dir_;
  init_list* list_ = nullptr;
};

struct LineCase {
  const char* text;
  std::vector<std::string> expected;
};

TEST_F(InitFileTest, LineShapes) {
  const LineCase cases[] = {
      {"", {}},
      {"   # remark Copy a b - -\n\n \t \n", {}},
      {"x#y a b - -\n", {"0 a b - -"}},
      {"Copy a b - -\r\n", {"2 a b - -"}},
      {"\tCopy\ta   b\t- -  \n", {"2 a b - -"}},
      {"Copy a b - - extra words\n", {"2 a b - -"}},
      {"copy a b - -\n", {"0 a b - -"}},
      {"Copy web_root old_root action upgrade\n", {"2 web_root old_root action upgrade"}},
      {"Copy a b - yes\n", {"2 a b - yes"}},
      // A short line is not stored; the next line completes the record.
      {"Copy a b\nCopy c d - -\n", {"2 c d - -"}},
      {"Copy\nExist p q - -\n", {"1 p q - -"}},
      // Its condition words survive where the next line has "-".
      {"Copy a b c\nCopy d e - -\n", {"2 d e c -"}},
      {"Copy a b c v\n", {"2 a b c v"}},
      {"RFile a b c\nWFile d e - -\nCopy f g - -\n", {"800 d e c -", "2 f g - -"}},
      // An unknown word leaves the carried type as it was.
      {"Copy a b\ncopy c d - -\n", {"2 c d - -"}},
  };
  for (const LineCase& c : cases) {
    SCOPED_TRACE(c.text);
    init_list_free(&list_);
    list_ = init_list_create();
    EXPECT_EQ(load(c.text), c.expected);
  }
}

TEST_F(InitFileTest, EveryCommandWordHasItsCode) {
  EXPECT_EQ(load("Exist a b - -\nCopy a b - -\nHTTP_User a b - -\nHTTP_Group a b - -\n"
                 "HTTP_Root a b - -\nHTTP_Scripts a b - -\nTimeDate a b - -\n"
                 "WFile a b - -\nRFile a b - -\nhttp_user a b - -\n"),
            (std::vector<std::string>{"1 a b - -", "2 a b - -", "14 a b - -", "18 a b - -",
                                      "110 a b - -", "210 a b - -", "400 a b - -",
                                      "800 a b - -", "1000 a b - -", "0 a b - -"}));
}

TEST_F(InitFileTest, UnknownCommandIsLogged) {
  logger* log = log_create(3);
  std::string log_path = dir_ + "/install.log";
  ASSERT_EQ(log_open(log, log_path.c_str()), 1);
  log_set_current(log);
  load("Frobnicate a b - -\n");
  log_set_current(nullptr);
  log_free(&log);
  std::ifstream in(log_path);
  std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_NE(text.find("Unknown init command 'Frobnicate'"), std::string::npos) << text;
}

TEST_F(InitFileTest, LinesAreReadIn999CharacterPieces) {
  // 999 characters exactly: one line, the long value whole.
  std::string value(988, 'v');
  std::string exact = "Copy a " + value + " - -";
  ASSERT_EQ(exact.size(), 999u);
  EXPECT_EQ(load(exact + "\n"), std::vector<std::string>{"2 a " + value + " - -"});

  // 1200 characters: the first 999 are one line, the rest another.
  init_list_free(&list_);
  list_ = init_list_create();
  std::string first = "Copy a b - - ";
  first += std::string(999 - first.size(), 'x');
  std::string second = "Exist p q - - ";
  second += std::string(1200 - 999 - second.size(), 'y');
  EXPECT_EQ(load(first + second + "\n"),
            (std::vector<std::string>{"2 a b - -", "1 p q - -"}));
}

TEST_F(InitFileTest, BinaryFileLoadsWithoutHarm) {
  std::string junk;
  for (int i = 0; i < 5000; ++i) junk += static_cast<char>((i * 37 + 11) % 256);
  EXPECT_EQ(init_load(list_, write(junk).c_str()), 1);
}

TEST_F(InitFileTest, LoadAppendsToTheList) {
  load("Copy a b - -\n");
  EXPECT_EQ(load("Copy c d - -\n"), (std::vector<std::string>{"2 a b - -", "2 c d - -"}));
}

TEST_F(InitFileTest, UnreadableFileKeepsListAndSetsError) {
  load("Copy a b - -\n");
  std::string missing = dir_ + "/missing.int";
  EXPECT_EQ(init_load(list_, missing.c_str()), 0);
  EXPECT_EQ(std::string(init_last_error()),
            "Failed to read '" + missing + "', No such file or directory");
  EXPECT_EQ(stored(), std::vector<std::string>{"2 a b - -"});

  // A directory opens but cannot be read as lines: nothing stored, no crash.
  EXPECT_EQ(init_load(list_, dir_.c_str()), 1);
  EXPECT_EQ(stored(), std::vector<std::string>{"2 a b - -"});

  // Null arguments fail without touching the error text.
  init_set_error("kept %d", 7);
  EXPECT_EQ(init_load(nullptr, missing.c_str()), 0);
  EXPECT_EQ(init_load(list_, nullptr), 0);
  EXPECT_STREQ(init_last_error(), "kept 7");
}

TEST_F(InitFileTest, ErrorTextIsCutAt999Characters) {
  std::string long_word(1500, 'w');
  init_set_error("%s", long_word.c_str());
  EXPECT_EQ(std::string(init_last_error()), long_word.substr(0, 999));
}

TEST_F(InitFileTest, CursorOperations) {
  load("Copy a0 b - -\nCopy a1 b - -\nCopy a2 b - -\n");
  auto next_name = [this] {
    init_command* c = init_next(list_);
    return c == nullptr ? std::string("(end)") : c->name;
  };
  EXPECT_EQ(init_first(list_, 3), nullptr);
  EXPECT_EQ(init_first(list_, 1)->name, "a1");
  EXPECT_EQ(next_name(), "a2");
  EXPECT_EQ(next_name(), "(end)");

  init_rewind(list_);
  init_skip(list_);
  EXPECT_EQ(next_name(), "a1");  // cursor now 2
  init_back(list_);
  EXPECT_EQ(next_name(), "a1");
  init_seek(list_, 0);
  init_back(list_);  // stays at 0
  EXPECT_EQ(next_name(), "a0");
  init_seek(list_, 3);  // out of range: cursor unchanged (1)
  EXPECT_EQ(next_name(), "a1");
  init_seek(list_, 2);
  init_skip(list_);  // past the last: at end
  EXPECT_EQ(next_name(), "(end)");
}

TEST_F(InitFileTest, NullHandlesAreHarmless) {
  init_list* none = nullptr;
  init_list_free(&none);
  init_list_free(nullptr);
  init_command* no_command = nullptr;
  init_command_free(&no_command);
  EXPECT_EQ(init_first(nullptr, 0), nullptr);
  EXPECT_EQ(init_next(nullptr), nullptr);
  init_seek(nullptr, 0);
  init_rewind(nullptr);
  init_skip(nullptr);
  init_back(nullptr);

  init_list* list = init_list_create();
  init_list_free(&list);
  EXPECT_EQ(list, nullptr);
}

}  // namespace
