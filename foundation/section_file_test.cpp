#include "foundation/section_file.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// Whether the section was found, then its lines, each followed by "|".
std::string section(std::string content, const char* name) {
  std::string lines;
  FILE* stream = fmemopen(content.data(), content.size(), "r");
  int found =
      section_file_read(stream, name, [&lines](char* line) { lines += line + std::string("|"); });
  fclose(stream);
  return std::to_string(found) + " " + lines;
}

// A header without its closing bracket still names a section; a line longer
// than 999 characters arrives in pieces.
TEST(SectionFile, ReadsOnlyTheWantedSectionTrimmed) {
  const std::string file =
      "before\n[install]\n  one  \r\n\n# comment\ntwo # kept\n[Upgrade\n three\n[empty]\n"
      "[long]\n" +
      std::string(1500, 'x') + "\n";
  EXPECT_EQ(section(file, "INSTALL") + section(file, "upgrade"), "1 one|two # kept|1 three|");
  EXPECT_EQ(section(file, "empty") + section(file, "special"), "1 0 ");
  EXPECT_EQ(section(file, "long"),
            "1 " + std::string(999, 'x') + "|" + std::string(501, 'x') + "|");
}

}  // namespace
