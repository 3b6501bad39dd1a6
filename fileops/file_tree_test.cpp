#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "fileops/file_dir.h"
#include "fileops/file_ops.h"
#include "fileops/file_trust.h"
#include "fileops/test_scratch.h"

namespace {

class FileTree : public file_step_test {
 protected:
  // src/a.txt, src/b.log, src/docs.txt/{inner.log, deep/x.txt}, src/other/y.txt
  void SetUp() override {
    file_step_test::SetUp();
    for (const char* dir : {"src", "src/docs.txt", "src/docs.txt/deep", "src/other"}) {
      ASSERT_EQ(mkdir(path(dir).c_str(), 0755), 0);
    }
    for (const char* file : {"src/a.txt", "src/b.log", "src/docs.txt/inner.log",
                             "src/docs.txt/deep/x.txt", "src/other/y.txt"}) {
      write_text(path(file), file);
    }
  }
  bool exists(const std::string& name) const { return file_exists(path(name).c_str()) != 0; }
};

TEST_F(FileTree, MkdirMakesEachMissingLevelOnce) {
  char cwd[kPathSize];
  ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
  ASSERT_EQ(chdir(dir_.c_str()), 0);
  EXPECT_EQ(file_mkdir("one/two\\three/", 1), 1);
  std::string first = log_text();
  EXPECT_EQ(file_mkdir("one/two/three/", 1), 1);
  ASSERT_EQ(chdir(cwd), 0);
  EXPECT_NE(first.find("Directory created 'one'\n"), std::string::npos);
  EXPECT_NE(first.find("Directory created 'one/two'\n"), std::string::npos);
  EXPECT_NE(first.find("Directory created 'one/two/three'\n"), std::string::npos);
  EXPECT_EQ(log_text(), first);
  EXPECT_EQ(steps().size(), 3u);

  std::string too_long = path(std::string(kPathSize, 'm'));
  EXPECT_EQ(file_mkdir(too_long.c_str(), 1), 0);
  EXPECT_FALSE(exists(too_long.substr(0, kPathMax).substr(dir_.size() + 1)));
  EXPECT_EQ(file_mkdir(path("x/y").c_str(), 0), 0);
  EXPECT_NE(log_text().find("Error creating directory '" + path("x/y") + "', No such file"),
            std::string::npos);
  EXPECT_EQ(steps().back(), "failed x/y - 1");
}

TEST_F(FileTree, RemoveTreeKeepsExcludedEntriesAndTheirDirectory) {
  EXPECT_EQ(file_remove_tree(path("src").c_str(), "*.log", 1), 5);
  EXPECT_TRUE(exists("src/b.log") && exists("src/docs.txt/inner.log"));
  EXPECT_FALSE(exists("src/other") || exists("src/docs.txt/deep"));
  EXPECT_EQ(steps().back(), "failed src - 0");
  EXPECT_EQ(file_remove_tree(path("src").c_str(), nullptr, 1), 4);
  EXPECT_FALSE(exists("src"));
}

TEST_F(FileTree, CopyDirAppliesThePatternAtTheTopAndExclusionsEverywhere) {
  unsigned bytes = 0;
  // dst made, a.txt, docs.txt made, inner.log, deep made, x.txt
  EXPECT_EQ(file_copy_dir(path("src").c_str(), "*.txt", nullptr, path("dst").c_str(), 1, &bytes),
            6);
  EXPECT_EQ(read_text(path("dst/docs.txt/deep/x.txt")), "src/docs.txt/deep/x.txt");
  EXPECT_FALSE(exists("dst/b.log") || exists("dst/other"));
  EXPECT_EQ(bytes, 9u + 22u + 23u);

  EXPECT_EQ(file_copy_dir(path("src").c_str(), nullptr, "*.log", path("d2").c_str(), 1, nullptr),
            7);
  EXPECT_FALSE(exists("d2/b.log") || exists("d2/docs.txt/inner.log"));

  EXPECT_EQ(file_copy_dir(path("src").c_str(), "*", nullptr, path("d3").c_str(), 0, nullptr), 5);
  EXPECT_TRUE(exists("d3/other") && !exists("d3/other/y.txt"));
}

TEST_F(FileTree, CopyDirIntoItselfStopsAtTheDestination) {
  EXPECT_EQ(file_copy_dir(path("src").c_str(), "*", nullptr, path("src/copy").c_str(), 1, nullptr),
            9);
  EXPECT_TRUE(exists("src/copy/other/y.txt"));
  EXPECT_FALSE(exists("src/copy/copy"));
}

TEST_F(FileTree, MoveDirMovesTheTreeAndLeavesTheSourceDirectory) {
  EXPECT_GT(file_move_dir(path("src").c_str(), "*", nullptr, path("dst").c_str(), 1, nullptr), 0);
  EXPECT_EQ(read_text(path("dst/docs.txt/deep/x.txt")), "src/docs.txt/deep/x.txt");
  EXPECT_TRUE(exists("src") && exists("dst/other/y.txt"));
  EXPECT_FALSE(exists("src/a.txt") || exists("src/docs.txt") || exists("src/other"));
}

// Links planted in a tree, to a directory and a file outside it, are never
// walked into, re-owned through or removed through.
TEST_F(FileTree, PlantedLinksNeverReachOutsideTheTree) {
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
    EXPECT_EQ(file_chown(entry->path, 33, 33) + file_chmod(entry->path, 0666), 2) << entry->path;
  } while (file_dir_next(entry, listing));
  file_entry_free(&entry);
  file_dir_close(&listing);
  struct stat secret {};
  ASSERT_EQ(stat(path("outside/secret").c_str(), &secret), 0);
  EXPECT_EQ(secret.st_uid, 0u);
  EXPECT_EQ(secret.st_mode & 07777, 0600u);

  EXPECT_EQ(file_remove_tree(path("src").c_str(), nullptr, 1), 11);
  EXPECT_EQ(read_text(path("outside/secret")), "secret");
}

// A destination tree that already holds links, as an upgrade's may: a copy
// never writes through them, at the top or below, and reports each one.
TEST_F(FileTree, CopyDirRefusesDestinationDirectoriesThatAreLinks) {
  ASSERT_EQ(mkdir(path("outside").c_str(), 0755), 0);
  ASSERT_EQ(mkdir(path("dst").c_str(), 0755), 0);
  ASSERT_EQ(symlink(path("outside").c_str(), path("dst/other").c_str()), 0);
  ASSERT_EQ(symlink(path("outside").c_str(), path("top").c_str()), 0);
  ASSERT_EQ(symlink(path("outside/nothing").c_str(), path("dst/docs.txt").c_str()), 0);

  // a.txt and b.log copied; docs.txt and other refused, the walk goes on.
  EXPECT_EQ(file_copy_dir(path("src").c_str(), "*", nullptr, path("dst").c_str(), 1, nullptr), 2);
  EXPECT_EQ(read_text(path("dst/a.txt")), "src/a.txt");
  EXPECT_FALSE(exists("outside/y.txt") || exists("outside/nothing"));
  EXPECT_TRUE(logged("Error: Not following symbolic link '" + path("dst/other") +
                     "', Too many levels of symbolic links\n"));
  int refused = 0;
  for (const std::string& step : steps()) refused += step.rfind("failed dst/", 0) == 0;
  EXPECT_EQ(refused, 2);

  EXPECT_EQ(file_copy_dir(path("src").c_str(), "*", nullptr, path("top").c_str(), 1, nullptr), 0);
  EXPECT_EQ(steps().back(), "failed top - 1");
  EXPECT_FALSE(exists("outside/a.txt"));
  EXPECT_EQ(file_move_dir(path("src").c_str(), "*", nullptr, path("top").c_str(), 1, nullptr), 0);
  EXPECT_TRUE(exists("src/a.txt"));
}

// Removing a link removes the link, never the tree it points to.
TEST_F(FileTree, RemoveTreeOfALinkRemovesTheLinkOnly) {
  ASSERT_EQ(symlink(path("src").c_str(), path("link").c_str()), 0);
  EXPECT_EQ(file_remove_tree(path("link").c_str(), nullptr, 1), 1);
  EXPECT_EQ(steps().back(), "done link - 0");
  EXPECT_FALSE(file_is_link(path("link").c_str()));
  EXPECT_EQ(read_text(path("src/other/y.txt")), "src/other/y.txt");
}

// Through a link another account owns, nothing is made and nothing removed.
TEST_F(FileTree, UntrustedLinksAboveThePathRefuseMakingAndRemoving) {
  ASSERT_EQ(symlink(path("src").c_str(), path("planted").c_str()), 0);
  if (lchown(path("planted").c_str(), 65534, 65534) != 0) GTEST_SKIP() << "not root";
  EXPECT_EQ(file_mkdir(path("planted/new/deeper").c_str(), 1), 0);
  EXPECT_EQ(steps().back(), "failed planted/new/deeper - 1");
  EXPECT_FALSE(exists("src/new"));
  EXPECT_EQ(file_remove_tree(path("planted/other").c_str(), nullptr, 1), 0);
  EXPECT_EQ(steps().back(), "failed planted/other - 0");
  EXPECT_EQ(file_copy_dir(path("src/other").c_str(), "*", nullptr, path("planted/copy").c_str(), 1,
                          nullptr),
            0);
  EXPECT_TRUE(exists("src/other/y.txt") && !exists("src/copy"));
  // The link itself may go: it is the entry named.
  EXPECT_EQ(file_remove_tree(path("planted").c_str(), nullptr, 1), 1);
  EXPECT_TRUE(exists("src/other/y.txt"));
}

}  // namespace
