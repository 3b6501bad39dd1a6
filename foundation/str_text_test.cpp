#include "foundation/str_text.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

TEST(StrCopy, BoundsOverlapAndNulls) {
  char buf[8] = "zzzzzzz";
  EXPECT_EQ(str_copy(buf, "abc", 0), 0);
  EXPECT_STREQ(buf, "zzzzzzz");  // size 0 writes nothing
  EXPECT_EQ(str_copy(buf, "abc", 1), 0);
  EXPECT_STREQ(buf, "");
  EXPECT_EQ(str_copy(buf, "abcdefghijk", sizeof buf), 7);
  EXPECT_EQ(str_copy(buf, buf + 2, sizeof buf), 5);
  EXPECT_STREQ(buf, "cdefg");
  EXPECT_EQ(str_copy(buf, nullptr, sizeof buf), 0);
  EXPECT_STREQ(buf, "");
}

TEST(StrAppend, VariantsKeepDifferentReserves) {
  char a[10] = "abc";
  char b[10] = "abc";
  EXPECT_STREQ(str_append(a, "defghijkl", sizeof a), "abcdefghi");
  EXPECT_EQ(str_append_short(b, "defghijkl", sizeof b), 8);
  EXPECT_STREQ(b, "abcdefgh");
  EXPECT_EQ(str_append(a, "x", 0), nullptr);
  char full[4] = {'a', 'b', 'c', 'd'};  // unterminated: cut, never overrun
  EXPECT_STREQ(str_append(full, "x", sizeof full), "abc");
  char p[8] = "world";
  EXPECT_STREQ(str_prepend(p, "hi", sizeof p), "hiworld");
  EXPECT_EQ(str_prepend(p, "x", sizeof p), nullptr);  // lengths reach size
}

TEST(StrHeap, AppendGrowsAndDupNKeepsNMinusOne) {
  char* text = str_append_heap(nullptr, "ab");
  text = str_append_heap(text, "cd");
  text = str_append_heap(text, text + 1);  // source inside the moving text
  EXPECT_STREQ(text, "abcdbcd");
  str_free(&text);
  EXPECT_EQ(text, nullptr);
  char* dup = str_dup_n("abcdef", 4);
  EXPECT_STREQ(dup, "abc");
  free(dup);
  char buf[6];
  EXPECT_EQ(str_copy_until("key=value", "=:", buf, sizeof buf), 3);
  EXPECT_EQ(str_copy_until("abcdefgh", "=", buf, sizeof buf), 5);
}

TEST(StrReplaceAll, EveryOccurrenceBoundedAndInPlace) {
  char out[16];
  EXPECT_STREQ(str_replace_all("a.b.c", ".", "::", out, sizeof out), "a::b::c");
  EXPECT_STREQ(str_replace_all("a.b.c", ".", nullptr, out, sizeof out), "abc");
  EXPECT_STREQ(str_replace_all("aaaa", "a", "bbbbbb", out, sizeof out),
               std::string(15, 'b').c_str());
  EXPECT_STREQ(str_replace_all("abc", "", "x", out, sizeof out), "abc");
  char text[16] = "$x and $x";
  EXPECT_STREQ(str_replace_all(text, "$x", "yy", text, sizeof text), "yy and yy");
  EXPECT_EQ(str_replace_all("a", nullptr, "b", out, sizeof out), nullptr);
}

TEST(StrCompare, FoldsOnlyAsciiLetters) {
  for (int c = 0; c < 256; ++c) {
    char expected = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    ASSERT_EQ(str_fold(static_cast<char>(c)), expected) << c;
  }
  EXPECT_EQ(str_icmp("Install", "iNSTALL"), 0);
  EXPECT_LT(str_icmp("abc", "ABD"), 0);
  EXPECT_GT(str_icmp("abcd", "ABC"), 0);
  EXPECT_EQ(str_icmp(nullptr, "a"), -1);
  EXPECT_EQ(str_nicmp("HELLO", "help", 3), 0);
  EXPECT_NE(str_nicmp("HELLO", "help", 4), 0);
  const char* text = "Path/to/PATH/x";
  EXPECT_EQ(str_istr(text, "path"), text);
  EXPECT_EQ(str_irstr(text, "path"), text + 8);
  EXPECT_EQ(str_irstr("ab", "abc"), nullptr);
  EXPECT_EQ(str_chr(text, '\0'), nullptr);
  EXPECT_STREQ(str_skip_prefix("abcdef", "abx"), "cdef");  // stops where they differ
  EXPECT_STREQ(str_skip_prefix("abc", "xbc"), "abc");
}

TEST(StrTrimAndToken, InPlaceEdits) {
  const char* rows[][2] = {{"  value \r\n", "value"}, {"\t a b \t", "a b"}, {"   ", ""}, {"", ""}};
  for (const auto& row : rows) {
    std::string buf(row[0]);
    EXPECT_STREQ(str_trim(buf.data()), row[1]) << '"' << row[0] << '"';
  }
  char line[] = "  Copy\t src  dst ";
  char* cont = nullptr;
  EXPECT_STREQ(str_token(line, " \t", &cont), "Copy");
  EXPECT_STREQ(str_token(nullptr, " \t", &cont), "src");
  EXPECT_STREQ(str_token(nullptr, " \t", &cont), "dst");
  EXPECT_EQ(str_token(nullptr, " \t", &cont), nullptr);
  EXPECT_EQ(str_token(nullptr, " \t", &cont), nullptr);
}

TEST(StrWords, TrueFalseAndNeither) {
  const struct {
    const char* text;
    int is_true;
    int is_false;
  } rows[] = {{"Checked", 1, 0},   {"SELECTED", 1, 0}, {"y", 1, 0},  {"2", 1, 0},
              {"-7x", 1, 0},       {"OFF", 0, 1},      {"No", 0, 1}, {"0", 0, 1},
              {"a0", 0, 1},        {"x", 0, 0},        {"", 0, 0},   {"ab0", 0, 0},
              {"4294967296", 1, 0}};
  for (const auto& row : rows) {
    EXPECT_EQ(str_is_true(row.text), row.is_true) << row.text;
    EXPECT_EQ(str_is_false(row.text), row.is_false) << row.text;
  }
  EXPECT_EQ(str_is_true(nullptr) + str_is_false(nullptr), 0);
}

TEST(StrGroupThousands, IntegerPartOnlyWithinMaxLen) {
  const struct {
    const char* in;
    int max_len;
    const char* out;
  } rows[] = {{"1234567", 20, "1,234,567"}, {"123", 20, "123"}, {"-1234.5678", 20, "-1,234.5678"},
              {"123456", 20, "123,456"},    {"abc", 20, "abc"}, {"1234567", 7, "1,234,5"}};
  for (const auto& row : rows) {
    char buf[32];
    str_copy(buf, row.in, sizeof buf);
    EXPECT_STREQ(str_group_thousands(buf, row.max_len), row.out) << row.in;
  }
}

TEST(StrCounted, RoundTripAndDamagedStreams) {
  char store[64] = {};
  FILE* stream = fmemopen(store, sizeof store, "w+b");
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(str_write_counted(stream, "hello") + str_write_counted(stream, ""), 2);
  rewind(stream);
  char* first = str_read_counted(stream);
  char* second = str_read_counted(stream);
  EXPECT_STREQ(first, "hello");
  EXPECT_STREQ(second, "");
  free(first);
  free(second);
  fclose(stream);
  for (int32_t count : {1000, -5}) {  // more than the stream holds; negative
    char bytes[8] = {};
    memcpy(bytes, &count, sizeof count);
    FILE* damaged = fmemopen(bytes, sizeof bytes, "rb");
    ASSERT_NE(damaged, nullptr);
    EXPECT_EQ(str_read_counted(damaged), nullptr) << count;
    fclose(damaged);
  }
}

TEST(StrErrors, TextAndSuffix) {
  EXPECT_EQ(str_error_suffix(0), "");
  EXPECT_EQ(str_error_suffix(ENOENT), std::string(", ") + strerror(ENOENT));
  char small[5];
  str_error_text(ENOENT, small, sizeof small);
  EXPECT_EQ(std::string(small), std::string(strerror(ENOENT)).substr(0, 4));
  EXPECT_STREQ(str_error_text(ENOENT, nullptr, 10), "");
}

}  // namespace
