// The listing operations of copy lines: which directories and entries a
// line reaches, whole trees copied and removed, owners and modes changed,
// the trust check of a line's paths and the bound on the paths it makes.
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

TEST_F(copy_tree_test, CopyFindsDestinationDirectoriesByPattern) {
  write_file("src/a.php", "aaaa");
  write_file("src/b.php", "bb");
  for (const char* d : {"src/sub.php/", "www/site1/", "www/site2/", "www/siteX/", "www/site.txt"}) {
    write_file(d, "");
  }
  ASSERT_EQ(symlink(path("www/site1").c_str(), path("www/site3").c_str()), 0);
  EXPECT_EQ(run("CopyFile @/src/*.php SITEX @/www/site*"), 4);
  EXPECT_EQ(read_file("www/site2/a.php"), "aaaa");
  EXPECT_FALSE(exists("www/siteX/a.php") || exists("www/site1/sub.php"));
  EXPECT_EQ(bytes_, 12u);
  EXPECT_EQ(run("CopyFile @/src/*.php - @/www/site3"), 0);  // a link is no directory
  EXPECT_EQ(logged("Error: No destination directories found\n"), 1);
  EXPECT_EQ(run("CopyFile @/src/*.none - @/www/site1"), 0);
  EXPECT_EQ(logged(here("Info: No files found to copy in '@/src/' matching '*.none'")), 1);
}

// A FIFO at a destination name fails its step at once and the line goes
// on; a copy onto itself, through a second name too, truncates nothing.
TEST_F(copy_tree_test, CopyFileWritesOnlyRegularFilesAndNeverItself) {
  write_file("src/pipe", "p");
  write_file("src/big", "big");
  write_file("other/", "");
  write_file("dst/", "");
  ASSERT_EQ(mkfifo(path("dst/pipe").c_str(), 0600), 0);
  EXPECT_EQ(run("CopyFile @/src/* - @/dst"), 1);
  EXPECT_EQ(std::multiset<int>(file_steps().begin(), file_steps().end()),
            (std::multiset<int>{0, EINVAL}));
  ASSERT_EQ(link(path("dst/big").c_str(), path("other/big").c_str()), 0);
  EXPECT_EQ(run("CopyFile @/dst/big - @/dst") + run("CopyFile @/other/big - @/dst"), 0);
  EXPECT_EQ(read_file("dst/big"), "big");
}

// Links in a tree: a copy never writes through one at a destination name,
// dangling or not, and goes on past a linked directory; an owner change
// changes the link itself, a mode change leaves it; a removal takes the link.
TEST_F(copy_tree_test, LinksInATreeAreActedOnNeverFollowed) {
  for (const char* f : {"src/a.html", "src/b.html", "src/c.html", "src/assets/images/x",
                        "src/assets/css/c", "board/assets/", "outside/secret"}) {
    write_file(f, f);
  }
  ASSERT_EQ(chmod(path("outside/secret").c_str(), 0600), 0);
  const char* links[][2] = {{"board/a.html", "outside/secret"},
                            {"board/b.html", "outside/new"},
                            {"board/assets/images", "outside"},
                            {"board/old.bak", "outside/secret"},
                            {"old", "outside"}};
  for (const auto& l : links) ASSERT_EQ(symlink(path(l[1]).c_str(), path(l[0]).c_str()), 0);
  EXPECT_EQ(run("CopyFile @/src/*.html - @/board"), 1);
  EXPECT_EQ(run("CopyDir @/src/assets - @/board"), 2);  // css made, c
  EXPECT_EQ(std::multiset<int>(file_steps().begin(), file_steps().end()),
            (std::multiset<int>{0, 0, 0, ELOOP, ELOOP, ELOOP}));
  EXPECT_EQ(logged(here("Error opening '@/board/b.html' for write, Too many levels of symbolic")),
            1);
  EXPECT_EQ(logged(here("Not following symbolic link '@/board/assets/images', Too many")), 1);
  EXPECT_EQ(run("Chown @/board - nobody") + run("Chmod @/board - 777"), 2 * 9);
  EXPECT_EQ(status_of(path("board/a.html")).st_uid, 65534u);
  EXPECT_EQ(run("RmFile @/board/*.bak -"), 1);
  EXPECT_EQ(run("RmDir @/old -"), 1);
  EXPECT_FALSE(exists("board/old.bak") || exists("old") || exists("outside/new") ||
               exists("outside/x") || exists("outside/c"));
  struct stat secret = status_of(path("outside/secret")), outside = status_of(path("outside"));
  EXPECT_EQ(std::vector<unsigned>({secret.st_uid, secret.st_mode & 07777, outside.st_uid}),
            std::vector<unsigned>({0, 0600, 0}));
  EXPECT_NE(outside.st_mode & 07777, 0777u);
  EXPECT_EQ(read_file("outside/secret"), "outside/secret");
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
  EXPECT_TRUE(exists("r/keep.log") && !exists("r/d"));
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

// The directories a line names may pass through the operator's links, but
// not through one that the web server's account (here nobody) planted.
TEST_F(copy_tree_test, LinesThroughAnotherAccountsLinkAreRefusedWhole) {
  write_file("src/a.txt", "a");
  write_file("real/sub/", "");
  write_file("outside/secret", "secret");
  ASSERT_EQ(symlink(path("real").c_str(), path("operators").c_str()), 0);
  ASSERT_EQ(symlink(path("outside").c_str(), path("planted").c_str()), 0);
  if (lchown(path("planted").c_str(), 65534, 65534) != 0) GTEST_SKIP() << "not root";
  EXPECT_EQ(run("CopyFile @/src/a.txt - @/operators/sub"), 1);
  EXPECT_EQ(read_file("real/sub/a.txt"), "a");
  const char* refused[] = {"CopyFile @/src/a.txt - @/planted/dir",
                           "CopyDir @/src - @/planted/dir",
                           "Chown @/planted/* - nobody",
                           "Chown @/planted/dir/* - nobody",
                           "Chmod @/planted/* - 777",
                           "RmFile @/planted/* -",
                           "RmDir @/planted/dir/* -",
                           "MkDir @/planted/new",
                           "Ini @/src/a.txt @/planted/dir/kept",
                           "WFile @/planted/dir/kept flag",
                           "RFile @/planted/dir/kept flag",
                           "Rename @/planted/secret @/stolen",
                           "CopyFile @/planted/secret - @/operators"};
  for (const char* line : refused) {
    file_steps().clear();
    EXPECT_EQ(run(line), 0) << line;
    EXPECT_EQ(file_steps(), steps{ELOOP}) << line;
  }
  EXPECT_EQ(status_of(path("outside/secret")).st_uid, 0u);
  EXPECT_FALSE(exists("outside/new") || exists("stolen") || exists("real/secret"));
  EXPECT_EQ(logged(here("Error: Not following symbolic link '@/planted', "
                        "Too many levels of symbolic links")),
            13);
  // Exist only looks, and the planted link itself may be removed.
  EXPECT_EQ(run("Exist @/planted/secret there"), 1);
  EXPECT_STREQ(ini_get(store_, "there"), "true");
  EXPECT_EQ(run("RmFile @/planted -"), 1);
  EXPECT_EQ(read_file("outside/secret"), "secret");
}

// A target that would not fit in 255 characters fails its step: never cut,
// so two sources can never land on one name.
TEST_F(copy_tree_test, PathsTooLongFailTheirStepInsteadOfBeingCut) {
  std::string deep = "www/" + std::string(200, 'd');
  write_file(deep + "/", "");
  write_file("src/" + std::string(60, 'n') + "A", "a");
  write_file("src/" + std::string(60, 'n') + "B", "b");
  EXPECT_EQ(run("CopyFile @/src/* - @/" + deep), 0);
  EXPECT_EQ(file_steps(), (steps{ENAMETOOLONG, ENAMETOOLONG}));
  EXPECT_EQ(logged("File name too long"), 2);
}

}  // namespace
