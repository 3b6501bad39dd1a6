#include "fileops/wild_match.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "foundation/str_text.h"

namespace {

// The matching algorithm exactly as documented, exponential and all.
int reference_match(const char* text, const char* pattern, bool exact) {
  if (*pattern == '\0') return *text == '\0';
  auto same = [exact](char a, char b) { return exact ? a == b : str_fold(a) == str_fold(b); };
  while (*pattern != '*') {
    if (*text == '\0' || (*pattern != '?' && !same(*pattern, *text))) return 0;
    ++text;
    if (*++pattern == '\0') return *text == '\0';
  }
  while (*pattern == '*') ++pattern;
  if (*pattern == '\0') return 1;
  for (; *text != '\0'; ++text) {
    if (str_fold(*text) == str_fold(*pattern) && reference_match(text, pattern, exact)) return 1;
  }
  return 0;
}

// Random texts and patterns of a few letters, "?" and "*", and a long text
// against more runs of stars than a match remembers inline.
TEST(WildMatch, AgreesWithTheDocumentedAlgorithm) {
  std::mt19937 random(12345);
  auto text_of = [&random](const char* alphabet, size_t size, unsigned max_length) {
    std::string text(random() % (max_length + 1), ' ');
    for (char& c : text) c = alphabet[random() % size];
    return text;
  };
  for (int i = 0; i < 50000; ++i) {
    std::string text = text_of("aAb?", 4, 10);
    std::string pattern = text_of("aAb?**", 6, 7);
    for (int exact = 0; exact <= 1; ++exact) {
      ASSERT_EQ(wild_match_core(text.c_str(), pattern.c_str(), exact),
                reference_match(text.c_str(), pattern.c_str(), exact != 0))
          << "text '" << text << "' pattern '" << pattern << "' exact " << exact;
    }
  }
  std::string text(1000, 'a');
  std::string pattern = "*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*b";
  EXPECT_EQ(wild_match(text.c_str(), pattern.c_str()), 0);
  text.back() = 'b';
  EXPECT_EQ(wild_match(text.c_str(), pattern.c_str()), 1);
}

TEST(WildMatch, ListsSplitOnRunsOfBlanksTabsAndCommas) {
  EXPECT_EQ(wild_list_match(" ,a.txt,\t b.log, ", "x  ,\t*.log"), 1);
  EXPECT_EQ(wild_list_match("a.txt b.LOG", "*.log,*.tmp") + wild_list_match(" ,, ", "*"), 0);
  EXPECT_EQ(wild_list_match_nocase("a.txt b.LOG", "*.log,*.tmp"), 1);
}

}  // namespace
