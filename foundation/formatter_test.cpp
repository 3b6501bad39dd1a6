#include "foundation/formatter.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>

namespace {

std::string format_with(const char* format, ...) {
  char buffer[256];
  va_list args;
  va_start(args, format);
  vsnprintf(buffer, sizeof buffer, format, args);
  va_end(args);
  return buffer;
}

TEST(Formatter, ConversionsAndBounds) {
  const char* volatile none = nullptr;  // volatile: -O2 format checks must not see the null
  int length = -1;
  EXPECT_EQ(format_with("%d|%5d|%-5d|%05d|%+d", 42, 42, 42, 42, 42), "42|   42|42   |00042|+42");
  EXPECT_EQ(format_with("%x %X %o %u %c %hd %hhu", 255, 255, 8, 7u, 'A', 65537, 257),
            "ff FF 10 7 A 1 1");
  EXPECT_EQ(format_with("%.2f %e %g %.1Lf", 3.14159, 1.0, 0.5, 2.25L), "3.14 1.000000e+00 0.5 2.2");
  EXPECT_EQ(format_with("%*d|%-*d|%.*s|%*d|", 4, 7, 3, 7, 2, "abc", -4, 7), "   7|7  |ab|7   |");
  EXPECT_EQ(format_with("%ld %lu %zu %lld", -5L, 6UL, sizeof(int), 1LL << 40),
            "-5 6 4 1099511627776");
  EXPECT_EQ(format_with("100%% [%s][%10.2s] abc%ndef", none, none, &length),
            "100% [(NULL)][(NULL)] abcdef");
  EXPECT_EQ(length, 25);
  // The result is what was written, -1 once the buffer is full (where the C
  // library would give the length the whole output needed). str_format ends
  // the text inside the buffer; str_format_append fills the space left.
  const std::tuple<const char*, const char*, size_t, int, const char*> rows[] = {
      {"abcde%s", "", 5, -1, "abcde"},        // full, left unterminated
      {"%s", "abcdefghij", 8, 7, "abcdefg"},  // cut in the last conversion: not full
      {"%s!", "abcdefghij", 8, -1, "abcdefg!"},
      {"a%s", "", 0, -1, "xyz"},
      {"%999999999s", "", 16, 15, "               "}};
  for (const auto& [format, text, size, result, written] : rows) {
    char buffer[16] = "xyz";
    EXPECT_EQ(snprintf(buffer, size, format, text), result) << format << size;
    EXPECT_EQ(std::string(buffer, strnlen(buffer, sizeof buffer)), written) << format << size;
  }
  char buffer[8] = "abc";
  EXPECT_EQ(str_format(buffer, 5, "abcde"), -1);
  EXPECT_STREQ(buffer, "abcd");
  EXPECT_EQ(str_format_append(buffer, sizeof buffer, "%s", "x"), 1);
  // 8 - 1 - 5 = 2 left: full, so cut at its last byte.
  EXPECT_EQ(str_format_append(buffer, sizeof buffer, "yz"), 1);
  EXPECT_STREQ(buffer, "abcdxy");
}

}  // namespace
