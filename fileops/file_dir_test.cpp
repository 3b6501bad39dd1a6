#include "fileops/file_dir.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <set>
#include <string>

#include "fileops/file_test_support.h"
#include "foundation/test_scratch.h"

namespace {

using FileDir = scratch_test;
using names = std::set<std::string>;

// "name:d" for each directory listed, "name:f" for anything else.
names list(const std::string& dir, const char* pattern) {
  names seen;
  file_listing* listing = nullptr;
  file_entry* entry = file_dir_open(&listing, dir.c_str(), pattern);
  for (bool more = entry != nullptr; more; more = file_dir_next(entry, listing)) {
    seen.insert(file_entry_name(entry) + std::string(file_entry_is_dir(entry) ? ":d" : ":f"));
  }
  file_entry_free(&entry);
  file_dir_close(&listing);
  return seen;
}

// Every name matching is listed, hidden ones too, a link as itself (never
// as the directory it points to); a path of 255 characters is listed, a
// name that would make it longer is skipped, never cut, and reported.
TEST_F(FileDir, ListsMatchingNamesAndSkipsThoseTooLongForAPath) {
  record_file_steps();
  std::string deep = dir_;
  while (deep.size() < 200) deep += "/dddddddddd";
  std::string fits(255 - deep.size() - 1, 'n');
  write_file(deep + "/" + fits, "x");
  write_file(deep + "/" + fits + "X", "x");
  write_file(deep + "/.d/", "");
  ASSERT_EQ(symlink(dir_.c_str(), (deep + "/l").c_str()), 0);
  EXPECT_EQ(list(deep, "*"), (names{fits + ":f", ".d:d", "l:f"}));
  EXPECT_EQ(list(deep, "N*").size() + list(deep + "/.d", "*").size(), 0u);
  EXPECT_EQ(file_steps(), std::vector<int>{ENAMETOOLONG});
  EXPECT_EQ(logged("Error joining '" + deep + "' and '" + fits + "X', File name too long"), 1);
  EXPECT_TRUE(list(path("missing"), "*").empty());
  EXPECT_EQ(logged("Error opening dir '" + path("missing") + "', No such file"), 1);
}

// What stands at a listed directory's name is checked when it is entered:
// a link or another directory swapped in since is refused and reported.
TEST_F(FileDir, ADirectorySwappedAfterItWasListedIsNotEntered) {
  record_file_steps();
  write_file("tree/sub/", "");
  file_listing* listing = nullptr;
  file_entry* entry = file_dir_open(&listing, path("tree").c_str(), "sub");
  ASSERT_TRUE(entry != nullptr && file_entry_open_dir(entry));
  ASSERT_EQ(rename(path("tree/sub").c_str(), path("tree/old").c_str()), 0);
  ASSERT_EQ(symlink(path("tree/old").c_str(), path("tree/sub").c_str()), 0);
  EXPECT_FALSE(file_entry_open_dir(entry));
  ASSERT_EQ(unlink(path("tree/sub").c_str()) | mkdir(path("tree/sub").c_str(), 0755), 0);
  EXPECT_FALSE(file_entry_open_dir(entry));
  EXPECT_EQ(file_steps(), (std::vector<int>{ELOOP, ESTALE}));
  file_entry_free(&entry);
  file_dir_close(&listing);
}

}  // namespace
