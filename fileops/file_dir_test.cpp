#include "fileops/file_dir.h"

#include <sys/stat.h>
#include <unistd.h>

#include <map>
#include <string>

#include "fileops/test_scratch.h"

namespace {

class FileDir : public scratch_test {
 protected:
  // name -> "dir", "link:<target>" or "file", for every listed entry.
  std::map<std::string, std::string> list(const std::string& dir, const char* pattern) {
    std::map<std::string, std::string> seen;
    file_listing* listing = nullptr;
    file_entry* entry = file_dir_open(&listing, dir.c_str(), pattern);
    if (entry == nullptr) {
      EXPECT_EQ(listing, nullptr);
      return seen;
    }
    do {
      EXPECT_EQ(std::string(file_entry_path(entry)), dir + "/" + file_entry_name(entry));
      std::string kind = file_entry_is_dir(entry) ? "dir" : "file";
      if (file_entry_is_link(entry)) kind = std::string("link:") + file_entry_link_target(entry);
      seen[file_entry_name(entry)] = kind;
    } while (file_dir_next(entry, listing));
    EXPECT_EQ(file_dir_next(entry, listing), 0);
    file_entry_free(&entry);
    file_dir_close(&listing);
    EXPECT_EQ(entry, nullptr);
    EXPECT_EQ(listing, nullptr);
    return seen;
  }
};

TEST_F(FileDir, ListsEntriesWithTheirOwnLinkStatus) {
  ASSERT_EQ(mkdir(path("tree").c_str(), 0755), 0);
  ASSERT_EQ(mkdir(path("tree/sub").c_str(), 0755), 0);
  write_text(path("tree/a.txt"), "a");
  write_text(path("tree/.hidden"), "h");
  ASSERT_EQ(symlink(dir_.c_str(), path("tree/to_dir").c_str()), 0);
  ASSERT_EQ(symlink("missing", path("tree/dangling").c_str()), 0);
  std::map<std::string, std::string> expected = {{"sub", "dir"},
                                                 {"a.txt", "file"},
                                                 {".hidden", "file"},
                                                 {"to_dir", "link:" + dir_},
                                                 {"dangling", "link:missing"}};
  EXPECT_EQ(list(path("tree"), "*"), expected);
  EXPECT_EQ(list(path("tree"), "*.txt"), (std::map<std::string, std::string>{{"a.txt", "file"}}));
  EXPECT_EQ(list(path("tree"), "*.TXT"), (std::map<std::string, std::string>{}));
}

TEST_F(FileDir, EmptyMissingOrNullGivesNothing) {
  ASSERT_EQ(mkdir(path("empty").c_str(), 0755), 0);
  EXPECT_TRUE(list(path("empty"), "*").empty());
  EXPECT_TRUE(list(path("missing"), "*").empty());
  EXPECT_NE(log_text().find("Error opening dir '" + path("missing") + "', No such file or directory"),
            std::string::npos);
  file_listing* listing = nullptr;
  EXPECT_EQ(file_dir_open(&listing, nullptr, "*"), nullptr);
  EXPECT_EQ(file_dir_open(&listing, dir_.c_str(), nullptr), nullptr);
  EXPECT_EQ(file_dir_open(nullptr, dir_.c_str(), "*"), nullptr);
  EXPECT_EQ(file_dir_next(nullptr, listing), 0);
  file_dir_close(nullptr);
}

TEST_F(FileDir, NamesTooLongForAPathAreSkippedNotCut) {
  std::string deep = dir_;
  while (deep.size() < 240) {
    deep += "/dddddddddd";
    ASSERT_EQ(mkdir(deep.c_str(), 0755), 0);
  }
  write_text(deep + "/" + std::string(40, 'n'), "x");
  write_text(deep + "/short", "x");
  EXPECT_EQ(list(deep, "*"), (std::map<std::string, std::string>{{"short", "file"}}));
  EXPECT_NE(log_text().find("File name too long"), std::string::npos);
}

TEST_F(FileDir, EntriesAreMadeClonedAndRefreshed) {
  EXPECT_EQ(file_entry_new(path("missing").c_str()), nullptr);
  EXPECT_EQ(file_entry_new(nullptr), nullptr);
  write_text(path("f"), "x");
  ASSERT_EQ(symlink("f", path("l").c_str()), 0);
  file_entry* link = file_entry_new(path("l").c_str());
  ASSERT_NE(link, nullptr);
  file_entry* copy = file_entry_clone(link);
  file_entry_free(&link);
  ASSERT_NE(copy, nullptr);
  EXPECT_STREQ(file_entry_link_target(copy), "f");
  EXPECT_EQ(file_entry_is_dir(copy), 0);

  ASSERT_EQ(unlink(path("l").c_str()), 0);
  ASSERT_EQ(mkdir(path("l").c_str(), 0755), 0);
  EXPECT_EQ(file_entry_stat(copy), 1);
  EXPECT_EQ(file_entry_is_dir(copy), 1);
  EXPECT_EQ(file_entry_link_target(copy), nullptr);
  ASSERT_EQ(rmdir(path("l").c_str()), 0);
  EXPECT_EQ(file_entry_stat(copy), 0);
  file_entry_free(&copy);
  EXPECT_EQ(copy, nullptr);
}

}  // namespace
