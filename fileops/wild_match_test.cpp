#include "fileops/wild_match.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "foundation/str_text.h"

namespace {

TEST(WildMatch, TableRows) {
  struct {
    const char* text;
    const char* pattern;
    int exact;
    int nocase;
  } const rows[] = {
      {"readme.txt", "*.txt", 1, 1},
      {"readme.txt", "*.TXT", 0, 1},
      {"abc", "abc*", 1, 1},
      {"abc", "a?c", 1, 1},
      {"abxc", "a*?c", 0, 0},
      {"ab?c", "a*?c", 1, 1},
      {"", "**", 1, 1},
      {"", "", 1, 1},
      {"abc", "", 0, 0},
      {"README.txt", "read*", 0, 1},
      {"ab", "abc", 0, 0},
      {".hidden", "*", 1, 1},
      {"aXbXc", "a*B*c", 0, 1},
      {"abcabd", "*ab?", 1, 1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.text) + " / " + row.pattern);
    EXPECT_EQ(wild_match(row.text, row.pattern), row.exact);
    EXPECT_EQ(wild_match_nocase(row.text, row.pattern), row.nocase);
  }
}

TEST(WildMatch, ListsSplitOnRunsOfBlanksTabsAndCommas) {
  EXPECT_EQ(wild_list_match("a.txt b.log", "*.log,*.tmp"), 1);
  EXPECT_EQ(wild_list_match(" ,a.txt,\t b.log, ", "x  ,\t*.log"), 1);
  EXPECT_EQ(wild_list_match("a.txt b.LOG", "*.log,*.tmp"), 0);
  EXPECT_EQ(wild_list_match_nocase("a.txt b.LOG", "*.log,*.tmp"), 1);
  EXPECT_EQ(wild_list_match("a.txt", " , \t") + wild_list_match(" ,, ", "*"), 0);
}

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
  // Past the runs of stars a match remembers inline, against a long text.
  std::string text(1000, 'a');
  std::string pattern = "*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*b";
  EXPECT_EQ(wild_match(text.c_str(), pattern.c_str()), 0);
  text.back() = 'b';
  EXPECT_EQ(wild_match(text.c_str(), pattern.c_str()), 1);
}

}  // namespace
