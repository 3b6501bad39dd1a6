// Copy lines against trees that hold planted links: the directory-listing
// operations act on a link itself, never through it, and a line whose
// directories pass through another account's link is refused whole.
#include "copyscript/copy_tree.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "copyscript/copy_run.h"
#include "copyscript/copy_test_support.h"
#include "settings/ini_store.h"

namespace {

constexpr uid_t kNobody = 65534;

class copy_tree_test : public copy_test {
 protected:
  // outside/secret (0600, root's) and outside/dir/kept: what no line may touch.
  void SetUp() override {
    copy_test::SetUp();
    make("outside/secret", "secret");
    make("outside/dir/kept", "kept");
    chmod(path("outside/secret").c_str(), 0600);
    failures().clear();
    file_set_callbacks(nullptr, record_failure);
  }
  void TearDown() override {
    file_set_callbacks(nullptr, nullptr);
    copy_test::TearDown();
  }
  int run(std::string_view line) {
    unique_script script(copy_script_create(store_));
    EXPECT_EQ(copy_script_parse_line(script.get(), here(line).c_str()), 1) << line;
    unsigned bytes = 0;
    return copy_line_run(script.get(), 0, &bytes);
  }
  void link(const char* target, const char* name) const {
    ASSERT_EQ(symlink(path(target).c_str(), path(name).c_str()), 0) << name;
  }
  void outside_untouched() const {
    struct stat secret = status("outside/secret");
    EXPECT_EQ(read("outside/secret"), "secret");
    EXPECT_EQ(secret.st_uid, 0u);
    EXPECT_EQ(secret.st_mode & 07777, 0600u);
    EXPECT_EQ(read("outside/dir/kept"), "kept");
    EXPECT_EQ(status("outside/dir").st_uid, 0u);
  }
  // errno of each failure callback, as the console would print it.
  static std::vector<int>& failures() {
    static std::vector<int> seen;
    return seen;
  }
  static void record_failure(const char*, const char*, int) { failures().push_back(errno); }
};

TEST_F(copy_tree_test, OwnerAndModeWalksChangeLinksThemselvesNeverTheirTargets) {
  if (geteuid() != 0) GTEST_SKIP() << "owner changes need root";
  make("tree/sub/file", "f");
  link("outside/secret", "tree/to_file");
  link("outside/dir", "tree/to_dir");
  link("outside/dir", "tree/sub/nested");
  EXPECT_EQ(run("Chown @/tree/* - nobody:nogroup"), 5);  // sub, its two, the two links
  EXPECT_EQ(run("Chmod @/tree - 777"), 6);
  EXPECT_EQ(run("Chmod @/tree/to_dir - 777"), 1);
  outside_untouched();
  EXPECT_EQ(status("tree/to_dir").st_uid, kNobody);
  EXPECT_EQ(status("tree/sub/nested").st_uid, kNobody);
  EXPECT_EQ(status("tree/sub/file").st_mode & 07777, 0777u);
}

TEST_F(copy_tree_test, RemovalsRemoveLinksNeverWhatTheyPointTo) {
  make("tree/keep.txt", "k");
  link("outside/dir", "tree/to_dir");
  link("outside/secret", "tree/to_file");
  link("outside/dir", "rm_target");
  make("tree/real/inner", "i");
  link("outside/dir", "tree/real/nested");
  EXPECT_EQ(run("RmFile @/tree/to_* -"), 2);
  EXPECT_EQ(run("RmDir @/rm_target -"), 1);
  EXPECT_EQ(run("RmDir @/tree/real -"), 3);
  outside_untouched();
  EXPECT_FALSE(exists("tree/to_dir") || exists("tree/to_file") || exists("rm_target"));
  EXPECT_EQ(read("tree/keep.txt"), "k");
}

TEST_F(copy_tree_test, CopyDirGoesOnPastALinkInTheDestinationTree) {
  make("src/site/index.html", "index");
  make("src/site/images/logo.svg", "logo");
  make("src/site/css/main.css", "css");
  make("www/site/");
  link("outside/dir", "www/site/images");
  EXPECT_EQ(run("CopyDir @/src/site - @/www"), 3);  // index.html, css made, main.css
  EXPECT_EQ(read("www/site/css/main.css"), "css");
  EXPECT_FALSE(exists("outside/dir/logo.svg"));
  EXPECT_EQ(failures(), std::vector<int>{ELOOP});
  EXPECT_EQ(times_logged(here("Error: Not following symbolic link '@/www/site/images', "
                              "Too many levels of symbolic links\n")),
            1);
  // A link as the destination directory named is not a destination at all.
  link("outside/dir", "www/linked");
  EXPECT_EQ(run("CopyFile @/src/site/index.html - @/www/linked"), 0);
  outside_untouched();
  EXPECT_FALSE(exists("outside/dir/index.html"));
}

TEST_F(copy_tree_test, FilesWrittenByNameRefuseALinkAtThatName) {
  make("tree/conf.in", "x = 1\n");
  link("outside/secret", "tree/conf.ini");
  link("outside/secret", "tree/VERSION");
  EXPECT_EQ(run("Ini @/tree/conf.in @/tree/conf.ini"), 0);
  EXPECT_EQ(run("WFile @/tree/VERSION flag"), 0);
  EXPECT_EQ(run("RFile @/tree/VERSION flag"), 0);
  EXPECT_EQ(times_logged(here("Error: Failed to write (@/tree/VERSION), Too many levels")), 1);
  outside_untouched();
}

// The directories a line names may pass through the operator's links, but
// not through one that the web server's account (here nobody) planted.
TEST_F(copy_tree_test, LinesThroughAnotherAccountsLinkAreRefusedWhole) {
  make("src/a.txt", "a");
  make("real/sub/");
  make("tree/");
  link("real", "tree/operators");
  link("outside", "tree/planted");
  if (lchown(path("tree/planted").c_str(), kNobody, kNobody) != 0) GTEST_SKIP() << "not root";
  EXPECT_EQ(run("CopyFile @/src/a.txt - @/tree/operators/sub"), 1);
  EXPECT_EQ(read("real/sub/a.txt"), "a");

  const char* refused[] = {"CopyFile @/src/a.txt - @/tree/planted/dir",
                           "CopyDir @/src - @/tree/planted/dir",
                           "Chown @/tree/planted/* - nobody",
                           "Chown @/tree/planted/dir/* - nobody",
                           "Chmod @/tree/planted/* - 777",
                           "RmFile @/tree/planted/* -",
                           "RmDir @/tree/planted/dir/* -",
                           "MkDir @/tree/planted/new",
                           "Ini @/src/a.txt @/tree/planted/dir/kept",
                           "WFile @/tree/planted/dir/kept flag",
                           "RFile @/tree/planted/dir/kept flag",
                           "Rename @/tree/planted/secret @/tree/stolen",
                           "CopyFile @/tree/planted/secret - @/tree/operators"};
  for (const char* line : refused) {
    failures().clear();
    EXPECT_EQ(run(line), 0) << line;
    EXPECT_EQ(failures(), std::vector<int>{ELOOP}) << line;
  }
  outside_untouched();
  EXPECT_FALSE(exists("outside/new") || exists("tree/stolen") || exists("real/secret"));
  EXPECT_EQ(times_logged(here("Error: Not following symbolic link '@/tree/planted', "
                              "Too many levels of symbolic links")),
            13);
  // Exist only looks, and the planted link itself may be removed.
  EXPECT_EQ(run("Exist @/tree/planted/secret there"), 1);
  EXPECT_STREQ(ini_get(store_, "there"), "true");
  EXPECT_EQ(run("RmFile @/tree/planted -"), 1);
  outside_untouched();
}

// Names that the web server's account gave its files, holding "\", are
// names: no line over the tree reaches what they would spell as a path.
TEST_F(copy_tree_test, NamesHoldingABackslashReachNothingOutsideTheTree) {
  if (geteuid() != 0) GTEST_SKIP() << "owner changes need root";
  make("tree/..\\outside\\secret", "mine");
  make("tree/..\\outside\\dir/kept", "mine");
  make("tree/lnk\\secret", "mine");
  link("outside", "tree/lnk");
  make("copy/");
  for (const char* line : {"Chown @/tree - nobody", "Chmod @/tree - 777", "CopyDir @/tree - @/copy",
                           "RmFile @/tree/* -", "RmDir @/tree -"}) {
    EXPECT_GT(run(line), 0) << line;
    outside_untouched();
    if (std::string(line).starts_with("Chown")) {
      EXPECT_EQ(status("tree/..\\outside\\secret").st_uid, kNobody);
    }
  }
  EXPECT_EQ(read("copy/tree/..\\outside\\dir/kept"), "mine");
  EXPECT_FALSE(exists("tree"));
}

// In a directory the web server's account owns: a file with a second name
// is neither re-owned, re-moded nor written; its planted links stay its own
// through an owner change to root, so they never pass for root's; and a
// copy of the tree reads through none of them.
TEST_F(copy_tree_test, AnotherAccountsTreeLendsNoSecondNamesOrLinks) {
  if (geteuid() != 0) GTEST_SKIP() << "owner changes need root";
  make("tree/own.txt", "own");
  make("src/conf.txt", "new");
  ASSERT_EQ(::link(path("outside/secret").c_str(), path("tree/conf.txt").c_str()), 0);
  link("outside/secret", "tree/to_file");
  link("outside", "tree/to_dir");
  for (const char* name : {"tree", "tree/own.txt", "tree/to_file", "tree/to_dir"}) {
    ASSERT_EQ(lchown(path(name).c_str(), kNobody, kNobody), 0);
  }
  EXPECT_EQ(run("Chown @/tree/* - root"), 3);
  EXPECT_EQ(run("Chmod @/tree/* - 666"), 3);
  EXPECT_EQ(run("CopyFile @/src/conf.txt - @/tree"), 0);
  EXPECT_EQ(failures(), std::vector<int>(3, EMLINK));
  EXPECT_EQ(times_logged("it has other names and other accounts can change its directory"), 3);
  EXPECT_EQ(status("tree/own.txt").st_uid, 0u);
  EXPECT_EQ(status("tree/to_dir").st_uid, kNobody);

  EXPECT_EQ(run("Chown @/tree - root"), 4);  // the links counted, left as they were
  failures().clear();
  EXPECT_EQ(run("CopyFile @/src/conf.txt - @/tree/to_dir/dir"), 0);
  make("backup/");
  EXPECT_EQ(run("CopyDir @/tree - @/backup"), 3);  // tree made, own.txt, conf.txt
  EXPECT_EQ(failures(), (std::vector<int>{ELOOP, ELOOP, ELOOP}));
  EXPECT_EQ(read("backup/tree/to_file") + read("backup/tree/to_dir"), "");  // left empty
  outside_untouched();
}

// A target that would not fit in 255 characters fails its step: never cut,
// so two sources can never land on one name.
TEST_F(copy_tree_test, PathsTooLongFailTheirStepInsteadOfBeingCut) {
  std::string deep = "www/" + std::string(200, 'd') + "/";
  make(deep);
  make("src/" + std::string(60, 'n') + "A", "a");
  make("src/" + std::string(60, 'n') + "B", "b");
  EXPECT_EQ(run("CopyFile @/src/* - @/" + deep.substr(0, deep.size() - 1)), 0);
  EXPECT_EQ(failures(), (std::vector<int>{ENAMETOOLONG, ENAMETOOLONG}));
  EXPECT_EQ(times_logged("File name too long"), 2);
}

}  // namespace
