#include "foundation/str_path.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "foundation/handles.h"
#include "foundation/str_text.h"
#include "foundation/test_scratch.h"

namespace {

struct Row {
  const char* in;
  const char* out;
};

TEST(StrPathJoin, OneSeparatorBetweenAndRewritten) {
  const char* rows[][3] = {{"dir/", "/file", "dir/file"}, {"", "file", "file"},
                           {"a\\b", "c", "a/b/c"},        {"dir", "/file", "dir/file"},
                           {"", "/abs", "/abs"},          {"a", "b\\c", "a/b/c"}};
  for (const auto& row : rows) {
    char buf[kPathSize];
    str_copy(buf, row[0], sizeof buf);
    EXPECT_STREQ(str_path_join(buf, row[1], sizeof buf), row[2]) << row[0] << " + " << row[1];
  }
  char empty[8] = "";
  EXPECT_EQ(str_path_join(empty, "", sizeof empty), nullptr);
  char small[8] = "abc";
  EXPECT_STREQ(str_path_join(small, "defghij", sizeof small), "abc/def");
  str_set_separator('\\');
  char buf[kPathSize] = "a/b";
  EXPECT_STREQ(str_path_join(buf, "c/d", sizeof buf), "a\\b\\c\\d");
  str_set_separator('/');
}

TEST(StrPathPieces, BaseNameExtensionsAndSplit) {
  const Row base[] = {{"/usr/local/bin/install.sh", "install"},
                      {"C:\\x\\setup.tar.gz", "setup"},
                      {"/home/u/.profile", ""},
                      {"dir.d/plain", "plain"}};
  for (const auto& row : base) {
    char buf[kPathSize];
    EXPECT_STREQ(str_base_name(buf, row.in, sizeof buf), row.out) << row.in;
  }
  const Row strip[] = {{"a.tar.gz", "a.tar"},
                       {"/x.d/file", "/x.d/file"},
                       {".profile", ".profile"},
                       {"/h/.bashrc", "/h/.bashrc"},
                       {"d\\n.c", "d\\n"}};
  for (const auto& row : strip) {
    std::string buf(row.in);
    EXPECT_STREQ(str_strip_ext(buf.data()), row.out) << row.in;
  }
  const Row ext[] = {{"a.tar.gz", "tar.gz"}, {"/x.d/file", ""}, {"C:\\d\\f.TXT", "TXT"}};
  for (const auto& row : ext) {
    char out[kPathSize];
    EXPECT_EQ(str_get_ext(out, row.in, sizeof out), static_cast<int>(strlen(row.out)));
    EXPECT_STREQ(out, row.out) << row.in;
  }
  char path[kPathSize] = "/opt/app/setup.q";
  char name[kPathSize];
  EXPECT_STREQ(str_split_path(path, name, sizeof name), "/opt/app");
  EXPECT_STREQ(name, "setup.q");
  EXPECT_STREQ(str_split_path(name, path, sizeof path), "");  // no separator
  EXPECT_STREQ(path, "setup.q");
  EXPECT_STREQ(str_strip_dir(path), "setup.q");
}

TEST(StrAbsDir, DotsDrivesAndRoots) {
  const Row rows[] = {
      {"/a/b/c", "/a/b"},     {"/a/./b/../c/f", "/a/c"}, {"/x", "/"},          {"/../../x/y", "/x"},
      {"\\a\\b\\", "/a/b"},   {"//a//b/f", "/a/b"},      {"C:\\a\\b", "C:/a"}, {"C:x", "C:/"},
      {"C:/a/../../f", "C:/"}};
  for (const auto& row : rows) {
    char buf[kPathSize];
    EXPECT_STREQ(str_abs_dir(buf, row.in, sizeof buf), row.out) << row.in;
  }
  char small[5];
  EXPECT_STREQ(str_abs_dir(small, "/abcdef/g", sizeof small), "/abc");
}

TEST(StrAbsDir, RelativePathsStartAtWorkingDirectory) {
  char cwd[kPathSize];
  ASSERT_NE(str_getcwd(cwd, sizeof cwd), nullptr);
  std::string here(cwd);
  std::string parent = here.substr(0, here.rfind('/'));
  const struct {
    const char* in;
    std::string out;
  } rows[] = {{"file", here},
              {"./sub/file", here + "/sub"},
              {"sub/", here + "/sub"},
              {"../f", parent.empty() ? "/" : parent}};
  for (const auto& row : rows) {
    char buf[kPathSize];
    EXPECT_EQ(std::string(str_abs_dir(buf, row.in, sizeof buf)), row.out) << row.in;
  }
}

}  // namespace
