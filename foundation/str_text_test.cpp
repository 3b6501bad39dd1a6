#include "foundation/str_text.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

// Copies, appends and replacements stay inside the buffer, may overlap their
// source, and stop at an unterminated destination's end.
TEST(StrText, CopiesAndAppendsStayInsideTheBuffer) {
  char buf[8] = "zzzzzzz", a[10] = "abc";
  char full[4] = {'a', 'b', 'c', 'd'};  // unterminated: cut, never overrun
  EXPECT_EQ(str_copy(buf, "abc", 0), 0);
  EXPECT_STREQ(buf, "zzzzzzz");  // size 0 writes nothing
  EXPECT_EQ(str_copy(buf, "abcdefghijk", sizeof buf), 7);
  EXPECT_EQ(str_copy(buf, buf + 2, sizeof buf), 5);
  EXPECT_STREQ(buf, "cdefg");  // the second copy overlapped
  EXPECT_STREQ(str_append(a, "defghijkl", sizeof a), "abcdefghi");
  EXPECT_STREQ(str_append(full, "x", sizeof full), "abc");
  EXPECT_EQ(str_copy_until("key=value", "=:", buf, sizeof buf), 3);
  char out[16] = "$x and $x";
  EXPECT_STREQ(str_replace_all(out, "$x", "yy", out, sizeof out), "yy and yy");
  const char* rows[][4] = {{"a.b.c", ".", nullptr, "abc"},
                           {"aaaa", "a", "bbbbbb", "bbbbbbbbbbbbbbb"},  // cut at 15
                           {"abc", "", "x", "abc"}};
  for (const auto& row : rows) {
    EXPECT_STREQ(str_replace_all(row[0], row[1], row[2], out, sizeof out), row[3]) << row[0];
  }
}

// Compares fold only A-Z; a trim or a token edits its text in place.
TEST(StrText, ComparesTrimsTokensAndWords) {
  for (int c = 0; c < 256; ++c) {
    ASSERT_EQ(str_fold(static_cast<char>(c)), static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c));
  }
  EXPECT_EQ(str_icmp("Install", "iNSTALL") + str_nicmp("HELLO", "help", 3), 0);
  EXPECT_LT(str_icmp("abc", "ABD"), 0);
  EXPECT_GT(str_icmp("abcd", "ABC"), 0);
  std::string trimmed = "\t a b \r\n", blank = "   ";
  EXPECT_EQ(std::string(str_trim(trimmed.data())) + str_trim(blank.data()), "a b");
  char line[] = "  Copy\t src  dst ";
  std::string tokens;
  char* cont = nullptr;
  for (char* token = str_token(line, " \t", &cont); token;
       token = str_token(nullptr, " \t", &cont)) {
    tokens += token + std::string("|");
  }
  EXPECT_EQ(tokens, "Copy|src|dst|");
  // Each row: a text, then 10 when it is a true word, 1 when a false one.
  const std::pair<const char*, int> words[] = {
      {"Checked", 10}, {"SELECTED", 10}, {"y", 10}, {"2", 10}, {"-7x", 10}, {"OFF", 1},
      {"No", 1},       {"0", 1},         {"a0", 1}, {"x", 0},  {"ab0", 0},  {"4294967296", 10}};
  for (const auto& [text, kind] : words)
    EXPECT_EQ(str_is_true(text) * 10 + str_is_false(text), kind) << text;
}

}  // namespace
