#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "fileops/file_dir.h"
#include "fileops/file_ops.h"
#include "fileops/test_scratch.h"

namespace {

class FileTree : public scratch_test {
 protected:
  // src/a.txt, src/b.log, src/docs.txt/{inner.log, deep/x.txt}, src/other/y.txt
  void make_source() {
    for (const char* dir : {"src", "src/docs.txt", "src/docs.txt/deep", "src/other"}) {
      ASSERT_EQ(mkdir(path(dir).c_str(), 0755), 0);
    }
    for (const char* file : {"src/a.txt", "src/b.log", "src/docs.txt/inner.log",
                             "src/docs.txt/deep/x.txt", "src/other/y.txt"}) {
      write_text(path(file), file);
    }
  }
  bool exists(const std::string& name) const { return file_exists(path(name).c_str()) != 0; }
  size_t count_of(const std::string& text) const {
    size_t count = 0;
    std::string log = log_text();
    for (size_t at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) ++count;
    return count;
  }
};

TEST_F(FileTree, MkdirMakesEachParentOnceAndAcceptsWhatExists) {
  char cwd[kPathSize];
  ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
  ASSERT_EQ(chdir(dir_.c_str()), 0);
  EXPECT_EQ(file_mkdir("one/two/three/", 1), 1);
  EXPECT_EQ(file_mkdir("one/two/three/", 1), 1);
  EXPECT_EQ(file_mkdir("back\\slash\\path", 1), 1);
  ASSERT_EQ(chdir(cwd), 0);
  for (const char* made : {"'one'", "'one/two'", "'one/two/three'", "'back/slash/path'"}) {
    EXPECT_EQ(count_of(std::string("Directory created ") + made + "\n"), 1u) << made;
  }
  EXPECT_EQ(count_of("Directory created"), 6u);
  EXPECT_TRUE(exists("back/slash/path"));

  EXPECT_EQ(file_mkdir(path("x/y").c_str(), 0), 0);
  EXPECT_NE(log_text().find("Error creating directory '" + path("x/y") + "', No such file"),
            std::string::npos);
  EXPECT_EQ(steps().back(), "failed x/y - 1");
}

TEST_F(FileTree, RemoveTreeKeepsExcludedEntriesAndTheirDirectory) {
  make_source();
  int removed = file_remove_tree(path("src").c_str(), "*.log", 1);
  EXPECT_EQ(removed, 5);  // a.txt, other/y.txt, other, deep/x.txt, deep
  EXPECT_TRUE(exists("src/b.log"));
  EXPECT_TRUE(exists("src/docs.txt/inner.log"));
  EXPECT_FALSE(exists("src/other"));
  EXPECT_FALSE(exists("src/docs.txt/deep"));
  EXPECT_EQ(steps().back(), "failed src - 0");
  EXPECT_EQ(file_remove_tree(path("src").c_str(), nullptr, 1), 4);
  EXPECT_FALSE(exists("src"));
}

TEST_F(FileTree, CopyDirAppliesThePatternAtTheTopAndExclusionsEverywhere) {
  make_source();
  unsigned bytes = 0;
  // dst made, a.txt, docs.txt made, inner.log, deep made, x.txt
  EXPECT_EQ(file_copy_dir(path("src").c_str(), "*.txt", nullptr, path("dst").c_str(), 1, &bytes),
            6);
  EXPECT_EQ(read_text(path("dst/docs.txt/deep/x.txt")), "src/docs.txt/deep/x.txt");
  EXPECT_TRUE(exists("dst/docs.txt/inner.log"));
  EXPECT_FALSE(exists("dst/b.log") || exists("dst/other"));
  EXPECT_EQ(bytes, 9u + 22u + 23u);

  EXPECT_EQ(file_copy_dir(path("src").c_str(), nullptr, "*.log", path("dst2").c_str(), 1, nullptr),
            7);
  EXPECT_FALSE(exists("dst2/b.log") || exists("dst2/docs.txt/inner.log"));
  EXPECT_TRUE(exists("dst2/other/y.txt"));

  EXPECT_EQ(file_copy_dir(path("src").c_str(), "*", nullptr, path("flat").c_str(), 0, nullptr), 5);
  EXPECT_TRUE(exists("flat/other"));
  EXPECT_FALSE(exists("flat/other/y.txt"));
  EXPECT_EQ(file_copy_dir(nullptr, "*", nullptr, path("d").c_str(), 1, nullptr), 0);
}

TEST_F(FileTree, CopyDirIntoItselfStopsAtTheDestination) {
  make_source();
  EXPECT_EQ(file_copy_dir(path("src").c_str(), "*", nullptr, path("src/copy").c_str(), 1, nullptr),
            1 + 2 + 4 + 2);
  EXPECT_TRUE(exists("src/copy/other/y.txt"));
  EXPECT_FALSE(exists("src/copy/copy"));
}

TEST_F(FileTree, MoveDirMovesTheTreeAndLeavesTheSourceDirectory) {
  make_source();
  EXPECT_GT(file_move_dir(path("src").c_str(), "*", nullptr, path("dst").c_str(), 1, nullptr), 0);
  EXPECT_EQ(read_text(path("dst/docs.txt/deep/x.txt")), "src/docs.txt/deep/x.txt");
  EXPECT_TRUE(exists("dst/other/y.txt"));
  EXPECT_TRUE(exists("src"));
  EXPECT_FALSE(exists("src/a.txt") || exists("src/docs.txt") || exists("src/other"));
}

// A link planted in a tree, to a directory or a file outside it, is never
// walked into, copied through, removed through or re-owned through.
TEST_F(FileTree, PlantedLinksNeverReachOutsideTheTree) {
  make_source();
  ASSERT_EQ(mkdir(path("outside").c_str(), 0755), 0);
  write_text(path("outside/secret"), "secret");
  ASSERT_EQ(chmod(path("outside/secret").c_str(), 0600), 0);
  ASSERT_EQ(symlink(path("outside").c_str(), path("src/other/to_dir").c_str()), 0);
  ASSERT_EQ(symlink(path("outside/secret").c_str(), path("src/other/to_file").c_str()), 0);

  file_copy_dir(path("src").c_str(), "*", nullptr, path("dst").c_str(), 1, nullptr);
  EXPECT_FALSE(exists("dst/other/to_dir/secret"));

  file_listing* listing = nullptr;
  file_entry* entry = file_dir_open(&listing, path("src/other").c_str(), "*");
  ASSERT_NE(entry, nullptr);
  do {
    EXPECT_EQ(file_chown(entry->path, 33, 33), 1);
    EXPECT_EQ(file_chmod(entry->path, 0666), 1);
  } while (file_dir_next(entry, listing));
  file_entry_free(&entry);
  file_dir_close(&listing);
  struct stat secret {};
  ASSERT_EQ(stat(path("outside/secret").c_str(), &secret), 0);
  EXPECT_EQ(secret.st_uid, 0u);
  EXPECT_EQ(secret.st_mode & 07777, 0600u);
  ASSERT_EQ(lstat(path("src/other/to_file").c_str(), &secret), 0);
  EXPECT_EQ(secret.st_uid, 33u);

  EXPECT_EQ(file_remove_tree(path("src").c_str(), nullptr, 1), 11);
  EXPECT_EQ(read_text(path("outside/secret")), "secret");
}

}  // namespace
