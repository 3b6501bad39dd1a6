#include "environment/init_file.h"

#include <sstream>

#include "foundation/test_scratch.h"

namespace {

using InitFileTest = scratch_test;

// Each text loaded gives its records as "type name value cond_name
// cond_value|" (hex type, "-" for none).
TEST_F(InitFileTest, LineShapes) {
  const std::string v988(988, 'v');
  const std::pair<std::string, std::string> rows[] = {
      {"   # Copy a b - -\n\n \t \nx#y a b - -\ncopy a b - -\n\tCopy\ta   b\t- -  \r\n"
       "Copy a b - - extra words\nCopy web_root old act upgrade\n",
       "0 a b - -|0 a b - -|2 a b - -|2 a b - -|2 web_root old act upgrade|"},
      // A short line is not stored; what it gave is carried into the next
      // line, condition words where that line has "-", type when its word is
      // unknown.
      {"Copy a b\nExist c d - -\nCopy a b c\nCopy d e - -\nCopy a\ncopy d e - -\n",
       "1 c d - -|2 d e c -|2 d e - -|"},
      // Lines are read in pieces of 999 characters.
      {"Copy a " + v988 + " - -\nCopy a b - - " + std::string(986, 'x') + "Exist p q - - " +
           std::string(187, 'y') + "\n",
       "2 a " + v988 + " - -|2 a b - -|1 p q - -|"},
  };
  for (const auto& [text, records] : rows) {
    init_list* list = init_list_create();
    EXPECT_EQ(init_load(list, write_file("install.int", text).c_str()), 1);
    std::ostringstream out;
    for (init_command* c = init_first(list, 0); c != nullptr; c = init_next(list)) {
      out << std::hex << c->type << ' ' << c->name << ' ' << c->value << ' '
          << c->cond_name.value_or("-") << ' ' << c->cond_value.value_or("-") << '|';
    }
    EXPECT_EQ(out.str(), records) << text.substr(0, 60);
    init_list_free(&list);
  }
  EXPECT_EQ(logged("Unknown init command 'copy'"), 2);
}

}  // namespace
