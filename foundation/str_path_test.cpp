#include "foundation/str_path.h"

#include <gtest/gtest.h>

#include <string>

#include "foundation/str_text.h"

namespace {

TEST(StrPath, PiecesOfAPath) {
  using into_buffer = char* (*)(char*, const char*, int);
  const struct {
    into_buffer helper;
    const char* in;
    const char* out;
  } rows[] = {
      {str_base_name, "/usr/local/bin/install.sh", "install"},
      {str_base_name, "C:\\x\\setup.tar.gz", "setup"},
      {str_base_name, "/home/u/.profile", ""},
      {str_base_name, "dir.d/plain", "plain"},
      {str_abs_dir, "/a/./b/../c/f", "/a/c"},
      {str_abs_dir, "/x", "/"},
      {str_abs_dir, "/../../x/y", "/x"},
      {str_abs_dir, "\\a\\b\\", "/a/b"},
      {str_abs_dir, "//a//b/f", "/a/b"},
      {str_abs_dir, "C:\\a\\b", "C:/a"},
      {str_abs_dir, "C:x", "C:/"},
      {str_abs_dir, "C:/a/../../f", "C:/"},
  };
  for (const auto& row : rows) {
    char out[kPathSize];
    EXPECT_STREQ(row.helper(out, row.in, sizeof out), row.out) << row.in;
  }
  const struct {
    char* (*helper)(char*);
    const char* in;
    const char* out;
  } in_place[] = {
      {str_strip_ext, "a.tar.gz", "a.tar"},    {str_strip_ext, "/x.d/file", "/x.d/file"},
      {str_strip_ext, ".profile", ".profile"}, {str_strip_ext, "/h/.bashrc", "/h/.bashrc"},
      {str_strip_ext, "d\\n.c", "d\\n"},       {str_strip_dir, "C:\\x/setup.q", "setup.q"}};
  for (const auto& row : in_place) {
    std::string text(row.in);
    EXPECT_STREQ(row.helper(text.data()), row.out) << row.in;
  }
  char path[kPathSize] = "/opt/app/setup.q", name[kPathSize], small[5];
  EXPECT_EQ(str_get_ext(name, "C:\\d.x\\f.tar.GZ", sizeof name), 6);
  EXPECT_STREQ(name, "tar.GZ");
  EXPECT_EQ(str_get_ext(name, "/x.d/file", sizeof name), 0);
  EXPECT_STREQ(str_split_path(path, name, sizeof name), "/opt/app");
  EXPECT_STREQ(name, "setup.q");
  EXPECT_STREQ(str_abs_dir(small, "/abcdef/g", sizeof small), "/abc");
}

TEST(StrPath, JoinPutsOneSeparatorBetweenAndRewritesTheRest) {
  const char* rows[][3] = {{"dir/", "/file", "dir/file"}, {"", "file", "file"},
                           {"a\\b", "c", "a/b/c"},        {"dir", "/file", "dir/file"},
                           {"", "/abs", "/abs"},          {"a", "b\\c", "a/b/c"},
                           {"abc", "defghij", "abc/defg"}};
  for (const auto& row : rows) {
    char buf[9];
    str_copy(buf, row[0], sizeof buf);
    EXPECT_STREQ(str_path_join(buf, row[1], sizeof buf), row[2]) << row[0] << " + " << row[1];
  }
  char buf[16] = "";
  EXPECT_EQ(str_path_join(buf, "", sizeof buf), nullptr);
  str_copy(buf, "a/b", sizeof buf);
  str_set_separator('\\');
  EXPECT_STREQ(str_path_join(buf, "c/d", sizeof buf), "a\\b\\c\\d");
  str_set_separator('/');
}

TEST(StrPath, RelativePathsStartAtTheWorkingDirectory) {
  char cwd[kPathSize], out[kPathSize];
  ASSERT_NE(str_getcwd(cwd, sizeof cwd), nullptr);
  const std::string here(cwd), parent = here.substr(0, here.rfind('/'));
  const std::string rows[][2] = {{"file", here},
                                 {"./sub/file", here + "/sub"},
                                 {"sub/", here + "/sub"},
                                 {"../f", parent.empty() ? "/" : parent}};
  for (const auto& row : rows)
    EXPECT_EQ(str_abs_dir(out, row[0].c_str(), sizeof out), row[1]) << row[0];
}

}  // namespace
