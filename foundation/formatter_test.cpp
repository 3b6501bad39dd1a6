#include "foundation/formatter.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

TEST(Formatter, ResultIsWhatWasWrittenOrMinusOneWhenFull) {
  char buffer[8];
  EXPECT_EQ(snprintf(buffer, 6, "abcde"), 5);
  EXPECT_STREQ(buffer, "abcde");
  // The C library would return 5 here; ours reports the full buffer.
  EXPECT_EQ(snprintf(buffer, 5, "abcde"), -1);
  EXPECT_EQ(std::memcmp(buffer, "abcde", 5), 0);
  EXPECT_EQ(str_format(buffer, 5, "abcde"), -1);
  EXPECT_STREQ(buffer, "abcd");
}

TEST(Formatter, NullTextPrintsNullMarkerWhateverItsWidth) {
  char buffer[32];
  const char* volatile none = nullptr;  // volatile: -O2 format checks must not see the null
  EXPECT_EQ(snprintf(buffer, sizeof buffer, "[%s]", none), 8);
  EXPECT_STREQ(buffer, "[(NULL)]");
  snprintf(buffer, sizeof buffer, "[%10.2s]", none);
  EXPECT_STREQ(buffer, "[(NULL)]");
}

TEST(Formatter, ConversionCutAtTheEndIsNotReportedAsFull) {
  char buffer[8];
  EXPECT_EQ(snprintf(buffer, sizeof buffer, "%s", "abcdefghijklmnopqrst"), 7);
  EXPECT_STREQ(buffer, "abcdefg");
  // More format after a cut conversion: the buffer is full, so -1.
  EXPECT_EQ(snprintf(buffer, sizeof buffer, "%s!", "abcdefghijklmnopqrst"), -1);
}

TEST(Formatter, EdgesOfBufferAndFormat) {
  char buffer[4] = "xyz";
  EXPECT_EQ(snprintf(nullptr, 4, "abc"), 0);
  EXPECT_EQ(snprintf(buffer, 4, nullptr), 0);
  EXPECT_STREQ(buffer, "xyz");
  const std::string empty;
  EXPECT_EQ(snprintf(buffer, 0, empty.c_str()), -1);
  EXPECT_EQ(snprintf(buffer, 0, "a"), -1);
  EXPECT_STREQ(buffer, "xyz");
  EXPECT_EQ(snprintf(buffer, 4, empty.c_str()), 0);
  EXPECT_STREQ(buffer, "");
}

std::string format_with(const char* format, ...) {
  char buffer[256];
  va_list args;
  va_start(args, format);
  vsnprintf(buffer, sizeof buffer, format, args);
  va_end(args);
  return buffer;
}

TEST(Formatter, ConversionsFlagsWidthsAndPrecisions) {
  EXPECT_EQ(format_with("%d|%5d|%-5d|%05d|%+d", 42, 42, 42, 42, 42), "42|   42|42   |00042|+42");
  EXPECT_EQ(format_with("%x %X %o %u %c", 255, 255, 8, 7u, 'A'), "ff FF 10 7 A");
  EXPECT_EQ(format_with("%.2f %e %g", 3.14159, 1.0, 0.5), "3.14 1.000000e+00 0.5");
  EXPECT_EQ(format_with("%*d|%-*d|%.*s", 4, 7, 3, 7, 2, "abc"), "   7|7  |ab");
  EXPECT_EQ(format_with("%*d|", -4, 7), "7   |");
  EXPECT_EQ(format_with("100%% sure %s", "yes"), "100% sure yes");
  EXPECT_EQ(format_with("%ld %lu %zu %lld", -5L, 6UL, sizeof(int), 1LL << 40),
            "-5 6 4 1099511627776");
}

TEST(Formatter, PercentNStoresTheLengthSoFar) {
  char buffer[32];
  int length = -1;
  snprintf(buffer, sizeof buffer, "abc%ndef", &length);
  EXPECT_EQ(length, 3);
  EXPECT_STREQ(buffer, "abcdef");
}

TEST(Formatter, AppendFormatsIntoTheSpaceLeft) {
  char buffer[8] = "abc";
  EXPECT_EQ(str_format_append(buffer, sizeof buffer, "%s", "de"), 2);
  EXPECT_STREQ(buffer, "abcde");
  // Space left is 8 - 1 - 5 = 2: full, so cut at its last byte.
  EXPECT_EQ(str_format_append(buffer, sizeof buffer, "xyz"), 1);
  EXPECT_STREQ(buffer, "abcdex");
  char full[4] = "abc";
  EXPECT_EQ(str_format_append(full, sizeof full, "d"), 0);
  EXPECT_STREQ(full, "abc");
}

TEST(Formatter, HugeWidthIsBoundedNotOverflowed) {
  char buffer[16];
  EXPECT_EQ(snprintf(buffer, sizeof buffer, "%999999999d", 1), 15);
  EXPECT_EQ(std::string(buffer), std::string(15, ' '));
}

}  // namespace
