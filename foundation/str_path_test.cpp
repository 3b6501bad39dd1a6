#include "foundation/str_path.h"

#include <gtest/gtest.h>

#include <string>

#include "foundation/str_text.h"

namespace {

// A path helper's result, by its letter: b base name, a absolute directory,
// e without extension, d without directory.
std::string piece(char helper, const char* in) {
  char out[kPathSize];
  str_copy(out, in, sizeof out);
  switch (helper) {
    case 'b': return str_base_name(out, in, sizeof out);
    case 'a': return str_abs_dir(out, in, sizeof out);
    case 'e': return str_strip_ext(out);
    default: return str_strip_dir(out);
  }
}

TEST(StrPath, PiecesOfAPath) {
  const char* rows[][3] = {{"b", "/b/install.sh", "install"}, {"b", "C:\\x\\a.tar.gz", "a"},
                           {"b", "/h/.profile", ""},          {"a", "/a/./b/../c/f", "/a/c"},
                           {"a", "\\a\\b\\", "/a/b"},         {"a", "C:name", "C:/"},
                           {"e", "a.tar.gz", "a.tar"},        {"e", "/x.d/file", "/x.d/file"},
                           {"e", "d\\n.c", "d\\n"},           {"d", "C:\\x/setup.q", "setup.q"}};
  for (const auto& row : rows)
    EXPECT_EQ(piece(row[0][0], row[1]), row[2]) << row[0] << " " << row[1];
}

TEST(StrPath, JoinPutsOneSeparatorBetweenAndRewritesTheRest) {
  const char* rows[][3] = {{"dir/", "/file", "dir/file"}, {"", "file", "file"},
                           {"a\\b", "c\\d", "a/b/c/d"},   {"dir", "/file", "dir/file"},
                           {"", "/abs", "/abs"},          {"", "", nullptr},
                           {"abc", "defghij", "abc/defg"}};
  for (const auto& row : rows) {
    char buf[9];
    str_copy(buf, row[0], sizeof buf);
    EXPECT_STREQ(str_path_join(buf, row[1], sizeof buf), row[2]) << row[0] << " + " << row[1];
  }
}

}  // namespace
