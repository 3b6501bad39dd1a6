#include "foundation/str_text.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

TEST(StrCopy, BoundsAndNulls) {
  char buf[8] = "zzzzzzz";
  EXPECT_EQ(str_copy(buf, "abc", 0), 0);
  EXPECT_STREQ(buf, "zzzzzzz");  // size 0 writes nothing
  EXPECT_EQ(str_copy(buf, "abc", 1), 0);
  EXPECT_STREQ(buf, "");
  EXPECT_EQ(str_copy(buf, "abcdefghijk", sizeof buf), 7);
  EXPECT_STREQ(buf, "abcdefg");
  EXPECT_EQ(str_copy(buf, buf + 2, sizeof buf), 5);  // overlapping source
  EXPECT_STREQ(buf, "cdefg");
  EXPECT_EQ(str_copy(buf, nullptr, sizeof buf), 0);
  EXPECT_STREQ(buf, "");
  EXPECT_EQ(str_copy(nullptr, "abc", 4), 0);
}

TEST(StrAppend, LongAndShortVariantsKeepDifferentReserves) {
  char a[10] = "abc";
  EXPECT_EQ(str_append(a, "defghijkl", sizeof a), a);
  EXPECT_STREQ(a, "abcdefghi");
  char b[10] = "abc";
  EXPECT_EQ(str_append_short(b, "defghijkl", sizeof b), 8);
  EXPECT_STREQ(b, "abcdefgh");
  EXPECT_EQ(str_append(nullptr, "x", 4), nullptr);
  EXPECT_EQ(str_append(a, "x", 0), nullptr);
  EXPECT_EQ(str_append_short(b, nullptr, sizeof b), 0);
  char full[4] = {'a', 'b', 'c', 'd'};  // unterminated: cut, never overrun
  EXPECT_STREQ(str_append(full, "x", sizeof full), "abc");
}

TEST(StrPrepend, RefusesWhenLengthsReachSize) {
  char buf[8] = "world";
  EXPECT_EQ(str_prepend(buf, "hi", sizeof buf), buf);
  EXPECT_STREQ(buf, "hiworld");
  EXPECT_EQ(str_prepend(buf, "x", sizeof buf), nullptr);
  EXPECT_STREQ(buf, "hiworld");
  EXPECT_EQ(str_prepend(buf, nullptr, sizeof buf), nullptr);
}

TEST(StrHeap, AppendGrowsAndDupNKeepsNMinusOne) {
  char* text = str_append_heap(nullptr, "ab");
  text = str_append_heap(text, "cd");
  EXPECT_EQ(str_append_heap(text, nullptr), text);
  text = str_append_heap(text, text + 1);  // source inside the text itself
  EXPECT_STREQ(text, "abcdbcd");
  str_free(&text);
  EXPECT_EQ(text, nullptr);

  char* dup = str_dup_n("abcdef", 4);
  EXPECT_STREQ(dup, "abc");
  free(dup);
  dup = str_dup_n("abc", 0);
  EXPECT_STREQ(dup, "");
  free(dup);
  EXPECT_EQ(str_dup_n(nullptr, 4), nullptr);
}

TEST(StrCopyUntil, StopsAtDelimiterOrBound) {
  char buf[6];
  EXPECT_EQ(str_copy_until("key=value", "=:", buf, sizeof buf), 3);
  EXPECT_STREQ(buf, "key");
  EXPECT_EQ(str_copy_until("abcdefgh", "=", buf, sizeof buf), 5);
  EXPECT_STREQ(buf, "abcde");
  EXPECT_EQ(str_copy_until(nullptr, "=", buf, sizeof buf), 0);
}

TEST(StrReplaceAll, EveryOccurrenceBoundedAndInPlace) {
  char out[16];
  EXPECT_STREQ(str_replace_all("a.b.c", ".", "::", out, sizeof out), "a::b::c");
  EXPECT_STREQ(str_replace_all("a.b.c", ".", nullptr, out, sizeof out), "abc");
  EXPECT_STREQ(str_replace_all("none", "x", "y", out, sizeof out), "none");
  EXPECT_STREQ(str_replace_all("aaaa", "a", "bbbbbb", out, sizeof out), "bbbbbbbbbbbbbbb");
  EXPECT_STREQ(str_replace_all("abc", "", "x", out, sizeof out), "abc");
  char text[16] = "$x and $x";
  EXPECT_STREQ(str_replace_all(text, "$x", "yy", text, sizeof text), "yy and yy");
  EXPECT_EQ(str_replace_all(nullptr, "a", "b", out, sizeof out), nullptr);
  EXPECT_EQ(str_replace_all("a", nullptr, "b", out, sizeof out), nullptr);
}

TEST(StrCompare, FoldsOnlyAsciiLetters) {
  for (int c = 0; c < 256; ++c) {
    char expected = (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : static_cast<char>(c);
    ASSERT_EQ(str_fold(static_cast<char>(c)), expected) << c;
  }
  EXPECT_EQ(str_icmp("Install", "iNSTALL"), 0);
  EXPECT_LT(str_icmp("abc", "ABD"), 0);
  EXPECT_GT(str_icmp("abcd", "ABC"), 0);
  EXPECT_EQ(str_icmp(nullptr, "a"), -1);
  EXPECT_EQ(str_nicmp("HELLO", "help", 3), 0);
  EXPECT_NE(str_nicmp("HELLO", "help", 4), 0);
  EXPECT_EQ(str_nicmp("a", "b", 0), 0);
  EXPECT_EQ(str_cmp("a", nullptr), -1);
  EXPECT_EQ(str_ncmp("abc", "abd", 2), 0);
}

TEST(StrSearch, FirstLastAndNulls) {
  const char* text = "Path/to/PATH/x";
  EXPECT_EQ(str_istr(text, "path"), text);
  EXPECT_EQ(str_irstr(text, "path"), text + 8);
  EXPECT_EQ(str_istr(text, "nope"), nullptr);
  EXPECT_EQ(str_irstr("ab", "abc"), nullptr);
  EXPECT_EQ(str_chr(text, '/'), text + 4);
  EXPECT_EQ(str_chr(text, '\0'), nullptr);
  EXPECT_EQ(str_str(nullptr, "a"), nullptr);
  EXPECT_STREQ(str_skip_prefix("prefix-rest", "prefix-"), "rest");
  EXPECT_STREQ(str_skip_prefix("abcdef", "abx"), "cdef");  // stops where they differ
  EXPECT_STREQ(str_skip_prefix("abc", "xbc"), "abc");
}

TEST(StrTrim, CutsBlanksAndLineEnds) {
  const struct {
    const char* in;
    const char* out;
  } rows[] = {{"  value \r\n", "value"}, {"\t a b \t", "a b"}, {"   ", ""}, {"", ""}, {"x", "x"}};
  for (const auto& row : rows) {
    std::string buf(row.in);
    EXPECT_STREQ(str_trim(buf.data()), row.out) << '"' << row.in << '"';
  }
  EXPECT_EQ(str_trim(nullptr), nullptr);
}

TEST(StrToken, SkipsRunsOfDelimitersAndResumes) {
  char line[] = "  Copy\t src  dst ";
  char* cont = nullptr;
  EXPECT_STREQ(str_token(line, " \t", &cont), "Copy");
  EXPECT_STREQ(str_token(nullptr, " \t", &cont), "src");
  EXPECT_STREQ(str_token(nullptr, " \t", &cont), "dst");
  EXPECT_EQ(str_token(nullptr, " \t", &cont), nullptr);
  EXPECT_EQ(str_token(nullptr, " \t", &cont), nullptr);
  char last[] = "end";
  EXPECT_STREQ(str_token(last, " ", &cont), "end");
  EXPECT_EQ(cont, nullptr);
}

TEST(StrWords, TrueFalseAndNeither) {
  const struct {
    const char* text;
    int is_true;
    int is_false;
  } rows[] = {{"Checked", 1, 0}, {"SELECTED", 1, 0}, {"y", 1, 0}, {"2", 1, 0}, {"-7x", 1, 0},
              {"OFF", 0, 1},     {"No", 0, 1},       {"0", 0, 1}, {"a0", 0, 1}, {"00", 0, 1},
              {"x", 0, 0},       {"maybe", 0, 0},    {"", 0, 0},  {"ab0", 0, 0}};
  for (const auto& row : rows) {
    EXPECT_EQ(str_is_true(row.text), row.is_true) << row.text;
    EXPECT_EQ(str_is_false(row.text), row.is_false) << row.text;
  }
  EXPECT_EQ(str_is_true(nullptr), 0);
  EXPECT_EQ(str_is_false(nullptr), 0);
}

TEST(StrGroupThousands, IntegerPartOnlyWithinMaxLen) {
  const struct {
    const char* in;
    int max_len;
    const char* out;
  } rows[] = {{"1234567", 20, "1,234,567"}, {"123", 20, "123"},       {"-1234.5678", 20, "-1,234.5678"},
              {"123456", 20, "123,456"},    {"abc", 20, "abc"},       {"1234567", 7, "1,234,5"}};
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
  EXPECT_EQ(str_write_counted(stream, "hello"), 1);
  EXPECT_EQ(str_write_counted(stream, ""), 1);
  EXPECT_EQ(str_write_counted(stream, nullptr), 0);
  rewind(stream);
  char* first = str_read_counted(stream);
  char* second = str_read_counted(stream);
  EXPECT_STREQ(first, "hello");
  EXPECT_STREQ(second, "");
  free(first);
  free(second);
  fclose(stream);

  // A count promising more than the stream holds, then a negative count.
  const int32_t counts[] = {1000, -5};
  for (int32_t count : counts) {
    char bytes[8] = {};
    memcpy(bytes, &count, sizeof count);
    FILE* damaged = fmemopen(bytes, sizeof bytes, "rb");
    ASSERT_NE(damaged, nullptr);
    EXPECT_EQ(str_read_counted(damaged), nullptr) << count;
    fclose(damaged);
  }
  EXPECT_EQ(str_read_counted(nullptr), nullptr);
}

TEST(StrErrors, TextAndSuffix) {
  EXPECT_EQ(str_error_suffix(0), "");
  EXPECT_EQ(str_error_suffix(ENOENT), std::string(", ") + strerror(ENOENT));
  char small[5];
  EXPECT_EQ(str_error_text(ENOENT, small, sizeof small), small);
  EXPECT_EQ(std::string(small), std::string(strerror(ENOENT)).substr(0, 4));
  EXPECT_STREQ(str_error_text(ENOENT, nullptr, 10), "");
  errno = EACCES;
  char buf[kLineSize];
  EXPECT_STREQ(str_last_error(buf, sizeof buf), strerror(EACCES));
}

TEST(StrWrappers, NullsGiveNeutralResults) {
  EXPECT_EQ(str_len(nullptr), 0);
  EXPECT_EQ(str_cspn("abc", nullptr), 0);
  EXPECT_EQ(str_atoi(nullptr), 0);
  EXPECT_EQ(str_atoi("99999999999"), INT32_MAX);  // clamped, not wrapped
  EXPECT_EQ(str_dup(nullptr), nullptr);
  EXPECT_STREQ(str_or_empty(nullptr), "");
  char path[] = "a\\b/c";
  EXPECT_STREQ(str_separators_to(path, '|'), "a|b|c");
  EXPECT_STREQ(str_upper(path), "A|B|C");
  EXPECT_EQ(str_cat(nullptr, "x"), nullptr);
}

}  // namespace
