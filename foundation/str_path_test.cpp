#include "foundation/str_path.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "foundation/str_text.h"

namespace {

struct Row {
  const char* in;
  const char* out;
};

TEST(StrPathJoin, OneSeparatorBetweenAndRewritten) {
  const struct {
    const char* dest;
    const char* name;
    const char* out;
  } rows[] = {{"dir/", "/file", "dir/file"}, {"", "file", "file"},   {"a\\b", "c", "a/b/c"},
              {"dir", "file", "dir/file"},   {"dir", "/file", "dir/file"}, {"", "/abs", "/abs"},
              {"a", "b\\c/d", "a/b/c/d"},    {"dir\\", "\\x", "dir/x"}};
  for (const auto& row : rows) {
    char buf[kPathSize];
    str_copy(buf, row.dest, sizeof buf);
    EXPECT_STREQ(str_path_join(buf, row.name, sizeof buf), row.out) << row.dest << " + " << row.name;
  }
  char empty[8] = "";
  EXPECT_EQ(str_path_join(empty, "", sizeof empty), nullptr);
  EXPECT_EQ(str_path_join(nullptr, "x", 8), nullptr);
  char small[8] = "abc";
  EXPECT_STREQ(str_path_join(small, "defghij", sizeof small), "abc/def");
}

TEST(StrPathJoin, WritesTheProcessSeparator) {
  str_set_separator('\\');
  char buf[kPathSize] = "a/b";
  EXPECT_STREQ(str_path_join(buf, "c/d", sizeof buf), "a\\b\\c\\d");
  str_set_separator('/');
  str_copy(buf, "x", sizeof buf);
  EXPECT_STREQ(str_path_join(buf, "y", sizeof buf), "x/y");
}

TEST(StrBaseName, LastComponentCutAtFirstDot) {
  const Row rows[] = {{"/usr/local/bin/install.sh", "install"}, {"C:\\x\\setup.tar.gz", "setup"},
                      {"./install", "install"},                 {"/home/u/.profile", ""},
                      {"plain", "plain"},                       {"dir/", ""}};
  for (const auto& row : rows) {
    char buf[kPathSize];
    EXPECT_STREQ(str_base_name(buf, row.in, sizeof buf), row.out) << row.in;
  }
  char small[4];
  EXPECT_STREQ(str_base_name(small, "/bin/installer", sizeof small), "ins");
}

TEST(StrSplitPath, DirectoryStaysNameMoves) {
  const struct {
    const char* in;
    const char* dir;
    const char* name;
  } rows[] = {{"/opt/app/setup.q", "/opt/app", "setup.q"}, {"a\\b", "a", "b"},
              {"file", "", "file"},                         {"/", "", ""}};
  for (const auto& row : rows) {
    char path[kPathSize];
    char name[kPathSize] = "junk";
    str_copy(path, row.in, sizeof path);
    EXPECT_STREQ(str_split_path(path, name, sizeof name), row.dir) << row.in;
    EXPECT_STREQ(name, row.name) << row.in;
  }
}

TEST(StrPathPieces, StripDirStripExtAndGetExt) {
  const Row strip_dir[] = {{"/a/b/c.txt", "c.txt"}, {"a\\b", "b"}, {"none", "none"}, {"d/", ""}};
  for (const auto& row : strip_dir) {
    std::string buf(row.in);
    EXPECT_STREQ(str_strip_dir(buf.data()), row.out) << row.in;
  }
  const Row strip_ext[] = {{"a.tar.gz", "a.tar"}, {"/x.d/file", "/x.d/file"}, {".profile", ".profile"},
                           {"/home/.bashrc", "/home/.bashrc"}, {"dir\\n.c", "dir\\n"}, {"plain", "plain"}};
  for (const auto& row : strip_ext) {
    std::string buf(row.in);
    EXPECT_STREQ(str_strip_ext(buf.data()), row.out) << row.in;
  }
  const Row get_ext[] = {{"a.tar.gz", "tar.gz"}, {"/x.d/file", ""}, {"C:\\d\\f.TXT", "TXT"}, {"f.", ""}};
  for (const auto& row : get_ext) {
    char out[kPathSize] = "junk";
    EXPECT_EQ(str_get_ext(out, row.in, sizeof out), static_cast<int>(std::string(row.out).size()));
    EXPECT_STREQ(out, row.out) << row.in;
  }
}

TEST(StrAbsDir, AbsolutePathsResolved) {
  const Row rows[] = {{"/a/b/c", "/a/b"},         {"/a/./b/../c/f", "/a/c"}, {"/x", "/"},
                      {"/../../x/y", "/x"},       {"\\a\\b\\", "/a/b"},      {"//a//b/f", "/a/b"},
                      {"C:\\a\\b", "C:/a"},       {"C:\\x", "C:/"},          {"C:x", "C:/"},
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
  if (parent.empty()) parent = "/";
  const struct {
    const char* in;
    std::string out;
  } rows[] = {{"file", here}, {"./sub/file", here + "/sub"}, {"sub/", here + "/sub"}, {"../f", parent}};
  for (const auto& row : rows) {
    char buf[kPathSize];
    EXPECT_EQ(std::string(str_abs_dir(buf, row.in, sizeof buf)), row.out) << row.in;
  }
}

TEST(StrPathMisc, NullsAndSmallWrappers) {
  char buf[8] = "keep";
  EXPECT_EQ(str_abs_dir(buf, nullptr, sizeof buf), buf);
  EXPECT_STREQ(buf, "keep");
  EXPECT_EQ(str_strip_ext(nullptr), nullptr);
  EXPECT_EQ(str_get_ext(nullptr, "a.b", 8), 0);
  EXPECT_EQ(str_getcwd(nullptr, 8), nullptr);
  EXPECT_STREQ(str_etc_dir(buf, sizeof buf), "/etc");
  EXPECT_EQ(file_open(nullptr, "r"), nullptr);
  char store[4] = {};
  FILE* stream = fmemopen(store, sizeof store, "r");
  ASSERT_NE(stream, nullptr);
  file_close(&stream);
  EXPECT_EQ(stream, nullptr);
  file_close(&stream);
}

}  // namespace
