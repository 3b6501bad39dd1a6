#include "foundation/str_path.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "foundation/str_text.h"

namespace {

TEST(StrPath, PiecesOfAPath) {
  using into_buffer = char* (*)(char*, const char*, int);
  const std::tuple<into_buffer, const char*, const char*> rows[] = {
      {str_base_name, "/usr/bin/install.sh", "install"},
      {str_base_name, "C:\\x\\a.tar.gz", "a"},
      {str_base_name, "/home/u/.profile", ""},
      {str_abs_dir, "/a/./b/../c/f", "/a/c"},
      {str_abs_dir, "/x", "/"},
      {str_abs_dir, "/../../x/y", "/x"},
      {str_abs_dir, "\\a\\b\\", "/a/b"},
      {str_abs_dir, "C:\\a\\b", "C:/a"},
      {str_abs_dir, "C:x", "C:/"}};
  for (const auto& [helper, in, out] : rows) {
    char buffer[kPathSize];
    EXPECT_STREQ(helper(buffer, in, sizeof buffer), out) << in;
  }
  const std::tuple<char* (*)(char*), const char*, const char*> in_place[] = {
      {str_strip_ext, "a.tar.gz", "a.tar"},
      {str_strip_ext, "/x.d/file", "/x.d/file"},
      {str_strip_ext, ".profile", ".profile"},
      {str_strip_ext, "d\\n.c", "d\\n"},
      {str_strip_dir, "C:\\x/setup.q", "setup.q"}};
  for (const auto& [helper, in, out] : in_place) {
    std::string text(in);
    EXPECT_STREQ(helper(text.data()), out) << in;
  }
  char small[5];
  EXPECT_STREQ(str_abs_dir(small, "/abcdef/g", sizeof small), "/abc");
}

TEST(StrPath, JoinPutsOneSeparatorBetweenAndRewritesTheRest) {
  const char* rows[][3] = {{"dir/", "/file", "dir/file"}, {"", "file", "file"},
                           {"a\\b", "c", "a/b/c"},        {"dir", "/file", "dir/file"},
                           {"", "/abs", "/abs"},          {"abc", "defghij", "abc/defg"}};
  for (const auto& row : rows) {
    char buf[9];
    str_copy(buf, row[0], sizeof buf);
    EXPECT_STREQ(str_path_join(buf, row[1], sizeof buf), row[2]) << row[0] << " + " << row[1];
  }
  char buf[16] = "";
  EXPECT_EQ(str_path_join(buf, "", sizeof buf), nullptr);
}

TEST(StrPath, RelativePathsStartAtTheWorkingDirectory) {
  char cwd[kPathSize], out[kPathSize];
  ASSERT_NE(str_getcwd(cwd, sizeof cwd), nullptr);
  const std::string here(cwd), parent = here.substr(0, here.rfind('/'));
  const std::string rows[][2] = {{"./sub/file", here + "/sub"},
                                 {"../f", parent.empty() ? "/" : parent}};
  for (const auto& row : rows)
    EXPECT_EQ(str_abs_dir(out, row[0].c_str(), sizeof out), row[1]) << row[0];
}

}  // namespace
