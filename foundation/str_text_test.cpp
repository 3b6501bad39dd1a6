#include "foundation/str_text.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

TEST(StrText, CopiesAndAppendsStayInsideTheBuffer) {
  char buf[8] = "zzzzzzz";
  EXPECT_EQ(str_copy(buf, "abc", 0), 0);
  EXPECT_STREQ(buf, "zzzzzzz");  // size 0 writes nothing
  EXPECT_EQ(str_copy(buf, "abcdefghijk", sizeof buf), 7);
  EXPECT_EQ(str_copy(buf, buf + 2, sizeof buf), 5);  // overlapping
  EXPECT_STREQ(buf, "cdefg");
  char a[10] = "abc", b[10] = "abc", p[8] = "world";
  char full[4] = {'a', 'b', 'c', 'd'};  // unterminated: cut, never overrun
  EXPECT_STREQ(str_append(a, "defghijkl", sizeof a), "abcdefghi");
  EXPECT_EQ(str_append_short(b, "defghijkl", sizeof b), 8);  // one byte more in reserve
  EXPECT_STREQ(str_append(full, "x", sizeof full), "abc");
  EXPECT_STREQ(str_prepend(p, "hi", sizeof p), "hiworld");
  EXPECT_EQ(str_prepend(p, "x", sizeof p), nullptr);  // the lengths reach size
  EXPECT_EQ(str_copy_until("key=value", "=:", buf, sizeof buf), 3);
  EXPECT_EQ(str_copy_until("abcdefghij", "=", buf, sizeof buf), 7);
  char* text = str_append_heap(str_append_heap(nullptr, "ab"), "cd");
  text = str_append_heap(text, text + 1);  // source inside the moving text
  EXPECT_STREQ(text, "abcdbcd");
  str_free(&text);
  text = str_dup_n("abcdef", 4);
  EXPECT_STREQ(text, "abc");
  str_free(&text);
}

TEST(StrText, ReplaceAllIsBoundedAndMayWorkInPlace) {
  char out[16] = "$x and $x";
  EXPECT_STREQ(str_replace_all(out, "$x", "yy", out, sizeof out), "yy and yy");
  const char* rows[][4] = {{"a.b.c", ".", "::", "a::b::c"},
                           {"a.b.c", ".", nullptr, "abc"},
                           {"aaaa", "a", "bbbbbb", "bbbbbbbbbbbbbbb"},  // cut at 15
                           {"abc", "", "x", "abc"}};
  for (const auto& row : rows) {
    EXPECT_STREQ(str_replace_all(row[0], row[1], row[2], out, sizeof out), row[3]) << row[0];
  }
}

TEST(StrText, ComparesFoldOnlyAsciiLetters) {
  for (int c = 0; c < 256; ++c) {
    ASSERT_EQ(str_fold(static_cast<char>(c)), static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c));
  }
  EXPECT_EQ(str_icmp("Install", "iNSTALL"), 0);
  EXPECT_LT(str_icmp("abc", "ABD"), 0);
  EXPECT_GT(str_icmp("abcd", "ABC"), 0);
  EXPECT_EQ(str_nicmp("HELLO", "help", 3), 0);
  EXPECT_NE(str_nicmp("HELLO", "help", 4), 0);
  const char* text = "Path/to/PATH/x";
  EXPECT_EQ(str_istr(text, "path"), text);
  EXPECT_EQ(str_irstr(text, "path"), text + 8);
  EXPECT_STREQ(str_skip_prefix("abcdef", "abx"), "cdef");  // stops where they differ
}

TEST(StrText, TrimAndTokenEditInPlace) {
  const char* rows[][2] = {{"  value \r\n", "value"}, {"\t a b \t", "a b"}, {"   ", ""}};
  for (const auto& row : rows) {
    std::string text(row[0]);
    EXPECT_STREQ(str_trim(text.data()), row[1]) << '"' << row[0] << '"';
  }
  char line[] = "  Copy\t src  dst ";
  std::string tokens;
  char* cont = nullptr;
  for (char* token = str_token(line, " \t", &cont); token;
       token = str_token(nullptr, " \t", &cont)) {
    tokens += token + std::string("|");
  }
  EXPECT_EQ(tokens, "Copy|src|dst|");
}

TEST(StrText, TrueFalseAndNeither) {
  // Each row: the text, then whether it is true and whether it is false.
  const char* rows[][2] = {{"Checked", "10"},   {"SELECTED", "10"}, {"y", "10"},  {"2", "10"},
                           {"-7x", "10"},       {"OFF", "01"},      {"No", "01"}, {"0", "01"},
                           {"a0", "01"},        {"x", "00"},        {"", "00"},   {"ab0", "00"},
                           {"4294967296", "10"}};
  for (const auto& row : rows) {
    EXPECT_EQ(std::to_string(str_is_true(row[0])) + std::to_string(str_is_false(row[0])), row[1])
        << row[0];
  }
}

TEST(StrText, ThousandsAreGroupedInTheIntegerPartWithinMaxLen) {
  const char* rows[][3] = {
      {"1234567", "20", "1,234,567"}, {"123", "20", "123"}, {"-1234.5678", "20", "-1,234.5678"},
      {"123456", "20", "123,456"},    {"abc", "20", "abc"}, {"1234567", "7", "1,234,5"}};
  for (const auto& row : rows) {
    char text[32];
    str_copy(text, row[0], sizeof text);
    EXPECT_STREQ(str_group_thousands(text, atoi(row[1])), row[2]) << row[0];
  }
}

// A counted text is a 32-bit length and that many bytes; a length the stream
// does not hold, or a negative one, gives nothing.
TEST(StrText, CountedTextsRoundTripAndDamagedOnesAreRefused) {
  char bytes[64] = {};
  FILE* stream = fmemopen(bytes, sizeof bytes, "w+b");
  EXPECT_EQ(str_write_counted(stream, "hello") + str_write_counted(stream, ""), 2);
  const int32_t damaged[] = {1000, -5};
  fwrite(damaged, sizeof damaged[0], 1, stream);
  rewind(stream);
  for (const char* want : {"hello", "", "(none)"}) {
    char* text = str_read_counted(stream);
    EXPECT_STREQ(text != nullptr ? text : "(none)", want);
    free(text);
  }
  fclose(stream);
  memcpy(bytes, &damaged[1], sizeof damaged[1]);
  stream = fmemopen(bytes, sizeof bytes, "rb");
  EXPECT_EQ(str_read_counted(stream), nullptr);
  fclose(stream);
}

}  // namespace
