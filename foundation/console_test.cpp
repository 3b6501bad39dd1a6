#include "foundation/console.h"

#include "foundation/test_scratch.h"

using Console = scratch_test;

// A line longer than the buffer is cut there, and the rest of it never
// answers the next read; a message is cut at 999 characters.
TEST_F(Console, ReadsLinesAndDropsWhatDoesNotFit) {
  console("abcdefgh\nyes\nlast");
  console_printf("%s?", std::string(1200, 'x').c_str());
  std::string answers;
  for (char line[5]; console_read_line(line, sizeof line) == 1;) answers += line + std::string("|");
  EXPECT_EQ(answers, "abcd|yes\n|last|");
  EXPECT_EQ(printed(), std::string(999, 'x'));
}
