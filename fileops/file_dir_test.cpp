#include "fileops/file_dir.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <map>
#include <string>

#include "fileops/test_scratch.h"

namespace {

using listed = std::map<std::string, std::string>;

class FileDir : public file_step_test {
 protected:
  // name -> "dir", "file" or "link:<target>" for every listed entry.
  listed list(const std::string& dir, const char* pattern) {
    listed seen;
    file_listing* listing = nullptr;
    file_entry* entry = file_dir_open(&listing, dir.c_str(), pattern);
    if (entry == nullptr) return seen;
    do {
      EXPECT_EQ(std::string(file_entry_path(entry)), dir + "/" + file_entry_name(entry));
      std::string kind = file_entry_is_dir(entry) ? "dir" : "file";
      if (file_entry_is_link(entry)) kind = std::string("link:") + file_entry_link_target(entry);
      seen[file_entry_name(entry)] = kind;
    } while (file_dir_next(entry, listing));
    file_entry_free(&entry);
    file_dir_close(&listing);
    EXPECT_EQ(listing, nullptr);
    return seen;
  }
};

TEST_F(FileDir, ListsMatchingEntriesWithTheirOwnLinkStatus) {
  ASSERT_EQ(mkdir(path("tree").c_str(), 0755), 0);
  ASSERT_EQ(mkdir(path("tree/sub").c_str(), 0755), 0);
  write_text(path("tree/a.txt"), "a");
  write_text(path("tree/.hidden"), "h");
  ASSERT_EQ(symlink(dir_.c_str(), path("tree/to_dir").c_str()), 0);
  ASSERT_EQ(symlink("missing", path("tree/dangling").c_str()), 0);
  EXPECT_EQ(list(path("tree"), "*"), (listed{{"sub", "dir"},
                                             {"a.txt", "file"},
                                             {".hidden", "file"},
                                             {"to_dir", "link:" + dir_},
                                             {"dangling", "link:missing"}}));
  EXPECT_EQ(list(path("tree"), "*.txt"), (listed{{"a.txt", "file"}}));
  EXPECT_TRUE(list(path("tree"), "*.TXT").empty());
}

// Joining writes "/" for "\", so the names of a directory called "a\b" are
// listed under a/b, with the status of whatever stands there.
TEST_F(FileDir, EntriesTakeTheStatusOfTheirJoinedPath) {
  ASSERT_EQ(mkdir(path("a\\b").c_str(), 0755), 0);
  ASSERT_EQ(mkdir(path("a\\b/f").c_str(), 0755), 0);
  ASSERT_EQ(mkdir(path("a").c_str(), 0755), 0);
  ASSERT_EQ(mkdir(path("a/b").c_str(), 0755), 0);
  write_text(path("a/b/f"), "f");
  file_listing* listing = nullptr;
  file_entry* entry = file_dir_open(&listing, path("a\\b").c_str(), "*");
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(std::string(file_entry_path(entry)), path("a/b/f"));
  EXPECT_FALSE(file_entry_is_dir(entry));
  EXPECT_EQ(file_dir_next(entry, listing), 0);
  file_entry_free(&entry);
  file_dir_close(&listing);
}

TEST_F(FileDir, EmptyOrMissingDirectoriesGiveNoListing) {
  ASSERT_EQ(mkdir(path("empty").c_str(), 0755), 0);
  file_listing* listing = nullptr;
  EXPECT_EQ(file_dir_open(&listing, path("empty").c_str(), "*"), nullptr);
  EXPECT_EQ(file_dir_open(&listing, path("missing").c_str(), "*"), nullptr);
  EXPECT_EQ(file_dir_open(&listing, dir_.c_str(), nullptr), nullptr);
  EXPECT_EQ(listing, nullptr);
  EXPECT_NE(log_text().find("Error opening dir '" + path("missing") + "', No such file"),
            std::string::npos);
}

TEST_F(FileDir, NamesTooLongForAPathAreSkippedNotCut) {
  std::string deep = dir_;
  while (deep.size() < 240) {
    deep += "/dddddddddd";
    ASSERT_EQ(mkdir(deep.c_str(), 0755), 0);
  }
  write_text(deep + "/" + std::string(40, 'n'), "x");
  write_text(deep + "/short", "x");
  EXPECT_EQ(list(deep, "*"), (listed{{"short", "file"}}));
  EXPECT_NE(log_text().find("File name too long"), std::string::npos);
  EXPECT_EQ(steps().size(), 1u);  // a failed step, so the console says so
  EXPECT_EQ(steps()[0].rfind("failed ", 0), 0u);
}

// A listed name is one name: "\" in it separates nothing.
TEST_F(FileDir, ANameHoldingABackslashIsOneName) {
  ASSERT_EQ(mkdir(path("tree").c_str(), 0755), 0);
  write_text(path("tree/..\\f"), "mine");
  write_text(path("f"), "other");
  file_listing* listing = nullptr;
  file_entry* entry = file_dir_open(&listing, path("tree").c_str(), "*");
  ASSERT_NE(entry, nullptr);
  EXPECT_STREQ(file_entry_name(entry), "..\\f");
  EXPECT_EQ(file_entry_status(entry)->st_size, 4);
  EXPECT_EQ(file_entry_remove(entry), 1);
  file_entry_free(&entry);
  file_dir_close(&listing);
  EXPECT_EQ(read_text(path("f")), "other");
}

// What stands at a listed directory's name is checked when it is entered:
// a link or another directory swapped in since is refused and reported.
TEST_F(FileDir, ADirectorySwappedAfterItWasListedIsNotEntered) {
  for (const char* dir : {"tree", "tree/sub", "outside"}) {
    ASSERT_EQ(mkdir(path(dir).c_str(), 0755), 0);
  }
  file_listing* listing = nullptr;
  file_entry* entry = file_dir_open(&listing, path("tree").c_str(), "sub");
  ASSERT_NE(entry, nullptr);
  ASSERT_TRUE(file_entry_open_dir(entry));
  ASSERT_EQ(rename(path("tree/sub").c_str(), path("tree/old").c_str()), 0);
  ASSERT_EQ(symlink(path("outside").c_str(), path("tree/sub").c_str()), 0);
  EXPECT_FALSE(file_entry_open_dir(entry));
  EXPECT_EQ(errno, ELOOP);
  ASSERT_EQ(unlink(path("tree/sub").c_str()), 0);
  ASSERT_EQ(mkdir(path("tree/sub").c_str(), 0755), 0);
  EXPECT_FALSE(file_entry_open_dir(entry));
  EXPECT_EQ(errno, ESTALE);
  EXPECT_EQ(steps(), (std::vector<std::string>{"failed tree/sub - 1", "failed tree/sub - 1"}));
  file_entry_free(&entry);
  file_dir_close(&listing);
}

}  // namespace
