#include "foundation/section_file.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> section_lines(std::string content, const char* section, int* found) {
  std::vector<std::string> lines;
  FILE* stream = fmemopen(content.data(), content.size(), "r");
  *found = section_file_read(stream, section, [&lines](char* line) { lines.emplace_back(line); });
  fclose(stream);
  return lines;
}

TEST(SectionFile, ReadsOnlyTheWantedSectionTrimmed) {
  const std::string file =
      "before\n[install]\n  one  \r\n\n# comment\ntwo # kept\n[Upgrade\n three\n[remove]\nfour\n";
  int found = 0;
  EXPECT_EQ(section_lines(file, "INSTALL", &found),
            (std::vector<std::string>{"one", "two # kept"}));
  EXPECT_EQ(found, 1);
  // A header without its closing bracket still names a section.
  EXPECT_EQ(section_lines(file, "upgrade", &found), (std::vector<std::string>{"three"}));
  EXPECT_EQ(section_lines(file, "remove", &found), (std::vector<std::string>{"four"}));
}

TEST(SectionFile, MissingOrEmptySection) {
  int found = 1;
  EXPECT_TRUE(section_lines("[install]\na\n", "special", &found).empty());
  EXPECT_EQ(found, 0);
  EXPECT_TRUE(section_lines("[install]\n[special]\n", "install", &found).empty());
  EXPECT_EQ(found, 1);
  EXPECT_EQ(section_file_read(nullptr, "install", nullptr), 0);
}

TEST(SectionFile, LongLinesArriveInPieces) {
  int found = 0;
  std::vector<std::string> lines =
      section_lines("[s]\n" + std::string(1500, 'x') + "\n", "s", &found);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].size(), 999u);
  EXPECT_EQ(lines[1].size(), 501u);
}

}  // namespace
