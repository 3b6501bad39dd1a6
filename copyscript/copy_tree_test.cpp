// The listing operations of copy lines: which directories and entries a
// line reaches, whole trees copied and removed, owners and modes changed,
// links met on the way.
#include "copyscript/copy_tree.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <set>
#include <string>
#include <vector>

#include "copyscript/copy_test_support.h"

namespace {

using copy_tree_test = copy_test;
using steps = std::vector<int>;

struct stat status_of(const std::string& path) {
  struct stat st {};
  lstat(path.c_str(), &st);
  return st;
}

// Destinations are the existing directories the pattern names, never a link.
TEST_F(copy_tree_test, CopyFindsDestinationDirectoriesByPattern) {
  for (const char* f : {"src/a.php", "src/bb.php", "src/sub.php/", "www/site1/", "www/site2/",
                        "www/siteX/", "www/site.txt"}) {
    write_file(f, f);
  }
  ASSERT_EQ(symlink(path("www/site1").c_str(), path("www/site3").c_str()), 0);
  EXPECT_EQ(run("CopyFile @/src/*.php SITEX @/www/site*"), 4);
  EXPECT_EQ(read_file("www/site2/a.php"), "src/a.php");
  EXPECT_FALSE(exists("www/siteX/a.php") || exists("www/site1/sub.php"));
  EXPECT_EQ(bytes_, 2 * (9u + 10u));
  EXPECT_EQ(run("CopyFile @/src/*.php - @/www/site3"), 0);  // a link is no directory
  EXPECT_EQ(logged("Error: No destination directories found\n"), 1);
  EXPECT_EQ(run("CopyFile @/src/*.none - @/www/site1"), 0);
  EXPECT_EQ(logged(here("Info: No files found to copy in '@/src/' matching '*.none'")), 1);
  // A target of more than 255 characters fails its step: never cut, so two
  // sources can never land on one name.
  std::string deep = write_file(std::string(254 - dir_.size(), 'd') + "/", "");
  file_steps().clear();
  EXPECT_EQ(run("CopyFile @/src/*.php - " + deep.substr(0, deep.size() - 1)), 0);
  EXPECT_EQ(file_steps(), steps(3, ENAMETOOLONG));  // sub.php too, though it is skipped
  EXPECT_EQ(logged("', File name too long"), 3);
}

// Nothing standing at a destination name is written through: a link,
// dangling or not, a FIFO, the source itself under a second name; a tree
// copy goes on past a linked directory. An owner change changes a link
// itself, a mode change leaves it alone, a removal takes the link.
TEST_F(copy_tree_test, LinksAndOddFilesInATreeAreActedOnNeverFollowed) {
  for (const char* f :
       {"src/a.html", "src/b.html", "src/c.html", "src/d.html", "src/assets/images/x",
        "src/assets/css/c", "board/assets/", "other/", "outside/secret"}) {
    write_file(f, f);
  }
  ASSERT_EQ(
      chmod(path("outside/secret").c_str(), 0600) | mkfifo(path("board/d.html").c_str(), 0600), 0);
  const char* links[][2] = {{"board/a.html", "outside/secret"},
                            {"board/b.html", "outside/new"},
                            {"board/assets/images", "outside"},
                            {"board/old.bak", "outside/secret"},
                            {"old", "outside"}};
  for (const auto& l : links) ASSERT_EQ(symlink(path(l[1]).c_str(), path(l[0]).c_str()), 0);
  EXPECT_EQ(run("CopyFile @/src/*.html - @/board"), 1);
  EXPECT_EQ(run("CopyDir @/src/assets - @/board"), 2);  // css made, c
  EXPECT_EQ(std::multiset<int>(file_steps().begin(), file_steps().end()),
            (std::multiset<int>{0, 0, 0, ELOOP, ELOOP, ELOOP, EINVAL}));
  EXPECT_EQ(logged(here("Error opening '@/board/b.html' for write, Too many levels")), 1);
  EXPECT_EQ(logged(here("Not following symbolic link '@/board/assets/images', Too many")), 1);
  ASSERT_EQ(link(path("board/c.html").c_str(), path("other/c.html").c_str()), 0);
  EXPECT_EQ(run("CopyFile @/board/c.html - @/board") + run("CopyFile @/other/c.html - @/board"), 0);
  EXPECT_EQ(read_file("board/c.html"), "src/c.html");
  ASSERT_EQ(unlink(path("other/c.html").c_str()), 0);
  EXPECT_EQ(run("Chown @/board - nobody") + run("Chmod @/board - 777"), 2 * 10);
  EXPECT_EQ(status_of(path("board/a.html")).st_uid, 65534u);
  EXPECT_EQ(run("RmFile @/board/*.bak -"), 1);
  EXPECT_EQ(run("RmDir @/old -"), 1);
  EXPECT_FALSE(exists("board/old.bak") || exists("old") || exists("outside/new") ||
               exists("outside/x") || exists("outside/c"));
  struct stat secret = status_of(path("outside/secret")), outside = status_of(path("outside"));
  EXPECT_EQ(std::vector<unsigned>({secret.st_uid, secret.st_mode & 07777, outside.st_uid}),
            std::vector<unsigned>({0, 0600, 0}));
  EXPECT_TRUE(read_file("outside/secret") == "outside/secret" && (outside.st_mode & 0777) != 0777);
}

// The pattern chooses at the top; exclusions hold at every level; a copy
// into itself stops at its destination.
TEST_F(copy_tree_test, CopyDirCopiesWholeTrees) {
  for (const char* file : {"src/a.txt", "src/b.log", "src/docs.txt/inner.log",
                           "src/docs.txt/deep/x.txt", "src/other/y.txt", "dst/", "d2/"}) {
    write_file(file, file);
  }
  // a.txt, docs.txt made, inner.log, deep made, x.txt
  EXPECT_EQ(run("CopyDir @/src/*.txt - @/dst"), 5);
  EXPECT_EQ(read_file("dst/docs.txt/deep/x.txt"), "src/docs.txt/deep/x.txt");
  EXPECT_FALSE(exists("dst/b.log") || exists("dst/other"));
  EXPECT_EQ(bytes_, 9u + 22u + 23u);
  EXPECT_EQ(run("CopyDir @/src/* *.log @/d2"), 6);
  EXPECT_FALSE(exists("d2/b.log") || exists("d2/docs.txt/inner.log"));
  EXPECT_EQ(run("CopyDir @/src - @/src"), 9);
  EXPECT_TRUE(exists("src/src/other/y.txt") && !exists("src/src/src"));
}

// Removals match `not` against bare names, owner and mode changes against
// full paths; a mode is read digit by digit without a check; a user alone
// names the group too.
TEST_F(copy_tree_test, ExclusionsOfRemovalsOwnersAndModes) {
  for (const char* f :
       {"r/a.log", "r/keep.log", "r/d/inner", "r/e.txt", "m/a", "m/d/b", "m/skip"}) {
    write_file(f, "");
  }
  EXPECT_EQ(run("RmFile @/r/* KEEP.log"), 2);
  EXPECT_EQ(run("RmDir @/r/* keep.log"), 2);
  EXPECT_TRUE(exists("r/keep.log") && !exists("r/d"));  // a directory goes with RmDir only
  EXPECT_EQ(run("Chmod @/m/* *skip 750"), 3);
  EXPECT_EQ(run("Chmod @/m/ skip 700"), 4);
  EXPECT_EQ(run("Chmod @/m/a - 1a"), 1);  // 1*8 + ('a' - '0')
  EXPECT_EQ(std::vector<unsigned>(
                {status_of(path("m/a")).st_mode & 07777, status_of(path("m/d/b")).st_mode & 07777}),
            std::vector<unsigned>({071, 0700}));
  if (geteuid() != 0) GTEST_SKIP() << "owner changes need root";
  ini_set(store_, "owner", "www-data:nogroup");
  EXPECT_EQ(run("Chown @/m/* *skip $(owner)"), 3);
  EXPECT_EQ(run("Chown @/m/a - nobody"), 1);
  EXPECT_EQ(
      std::vector<unsigned>({status_of(path("m/d/b")).st_uid, status_of(path("m/d")).st_gid,
                             status_of(path("m/skip")).st_uid, status_of(path("m/a")).st_gid}),
      std::vector<unsigned>({33, 65534, 0, 65534}));
  EXPECT_EQ(run("Chown @/m/a - no_such_user"), 0);
  EXPECT_EQ(logged("Error: file_chown failed"), 1);
}

}  // namespace
