#include "fileops/file_ops.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "fileops/test_scratch.h"

namespace {

using FileOps = scratch_test;

struct stat lstat_of(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
  return status;
}

TEST_F(FileOps, CopyStreamsEveryChunkAndCountsBytes) {
  std::string content(20000, 'x');
  content[8191] = 'y';
  content.back() = 'z';
  write_text(path("src"), content);
  unsigned bytes = 5;
  EXPECT_EQ(file_copy(path("src").c_str(), path("dst").c_str(), 0, &bytes), 1);
  EXPECT_EQ(read_text(path("dst")), content);
  EXPECT_EQ(bytes, 20005u);
  EXPECT_EQ(steps(), (std::vector<std::string>{"done src dst 1"}));
}

TEST_F(FileOps, CopyOntoAnExistingFileWithoutOverwriteChangesNothing) {
  write_text(path("src"), "new");
  write_text(path("dst"), "old");
  EXPECT_EQ(file_copy(path("src").c_str(), path("dst").c_str(), 0, nullptr), -1);
  EXPECT_EQ(read_text(path("dst")), "old");
  EXPECT_TRUE(steps().empty());
  EXPECT_EQ(file_copy(path("src").c_str(), path("dst").c_str(), 1, nullptr), 1);
  EXPECT_EQ(read_text(path("dst")), "new");
}

TEST_F(FileOps, CopyFailuresAreLoggedAndReported) {
  EXPECT_EQ(file_copy(path("missing").c_str(), path("dst").c_str(), 1, nullptr), 0);
  EXPECT_TRUE(file_exists(path("dst").c_str()));  // left behind, empty
  EXPECT_EQ(read_text(path("dst")), "");
  EXPECT_EQ(file_copy(path("dst").c_str(), path("no/dir/dst").c_str(), 1, nullptr), 0);
  ASSERT_EQ(mkdir(path("sub").c_str(), 0755), 0);
  EXPECT_EQ(file_copy(path("sub").c_str(), path("from_dir").c_str(), 1, nullptr), 0);
  EXPECT_EQ(file_copy(nullptr, path("dst").c_str(), 1, nullptr), 0);
  std::string log = log_text();
  EXPECT_NE(log.find("Error opening '" + path("missing") + "' for read, No such file or directory"),
            std::string::npos);
  EXPECT_NE(log.find("Error opening '" + path("no/dir/dst") + "' for write, No such file"),
            std::string::npos);
  EXPECT_NE(log.find("'" + path("sub") + "' for read, Is a directory"), std::string::npos);
  EXPECT_EQ(steps(), (std::vector<std::string>{"failed missing dst 1", "failed dst no/dir/dst 1",
                                               "failed sub from_dir 1", "failed - dst 1"}));
}

TEST_F(FileOps, CopyOrMoveOntoItselfKeepsTheFile) {
  write_text(path("f"), "keep");
  ASSERT_EQ(link(path("f").c_str(), path("hard").c_str()), 0);
  EXPECT_EQ(file_copy(path("f").c_str(), path("hard").c_str(), 1, nullptr), 0);
  EXPECT_EQ(file_move(path("f").c_str(), path("f").c_str(), 0, nullptr), 0);
  EXPECT_EQ(read_text(path("f")), "keep");
}

TEST_F(FileOps, MoveRemovesTheSourceEvenWhenTheCopyIsRefused) {
  write_text(path("a"), "a");
  EXPECT_EQ(file_move(path("a").c_str(), path("b").c_str(), 0, nullptr), 1);
  EXPECT_FALSE(file_exists(path("a").c_str()));
  EXPECT_EQ(read_text(path("b")), "a");
  write_text(path("c"), "c");
  EXPECT_EQ(file_move(path("c").c_str(), path("b").c_str(), 0, nullptr), 1);
  EXPECT_FALSE(file_exists(path("c").c_str()));
  EXPECT_EQ(read_text(path("b")), "a");
  EXPECT_EQ(file_move(path("missing").c_str(), path("d").c_str(), 1, nullptr), 0);
}

TEST_F(FileOps, UnprivilegedCopyIntoAProtectedDirectoryFails) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root to switch to nobody";
  write_text(path("src"), "x");
  ASSERT_EQ(chmod(path("src").c_str(), 0644), 0);
  ASSERT_EQ(chmod(dir_.c_str(), 0755), 0);
  ASSERT_EQ(mkdir(path("locked").c_str(), 0755), 0);
  pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    if (setgid(65534) != 0 || setuid(65534) != 0) _exit(2);
    _exit(file_copy(path("src").c_str(), path("locked/dst").c_str(), 1, nullptr) == 0 ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  EXPECT_FALSE(file_exists(path("locked/dst").c_str()));
}

TEST_F(FileOps, ModesAndOwnersNeverReachThroughALink) {
  write_text(path("outside"), "x");
  ASSERT_EQ(chmod(path("outside").c_str(), 0600), 0);
  ASSERT_EQ(symlink(path("outside").c_str(), path("link").c_str()), 0);
  EXPECT_EQ(file_chmod(path("link").c_str(), 0777), 1);
  EXPECT_EQ(lstat_of(path("outside")).st_mode & 07777, 0600u);
  EXPECT_EQ(file_chown(path("link").c_str(), 80, -1), 1);
  EXPECT_EQ(lstat_of(path("link")).st_uid, 80u);
  EXPECT_EQ(lstat_of(path("link")).st_gid, 80u);
  EXPECT_EQ(lstat_of(path("outside")).st_uid, 0u);

  EXPECT_EQ(file_chmod(path("outside").c_str(), 0640), 1);
  EXPECT_EQ(lstat_of(path("outside")).st_mode & 07777, 0640u);
  EXPECT_EQ(file_chown(path("outside").c_str(), 33, 65534), 1);
  EXPECT_EQ(lstat_of(path("outside")).st_gid, 65534u);
  EXPECT_EQ(file_chown(path("outside").c_str(), -1, 0), 0);
  EXPECT_EQ(file_chown(nullptr, 0, 0), 0);
  EXPECT_EQ(file_chmod(nullptr, 0), 0);
}

TEST_F(FileOps, ModeAndOwnerFailuresAreLogged) {
  EXPECT_EQ(file_chmod(path("missing").c_str(), 0644), 0);
  EXPECT_EQ(file_chown(path("missing").c_str(), 1, 2), 0);
  std::string log = log_text();
  EXPECT_NE(log.find("Error changing mode of '" + path("missing") + "' to 420, No such file"),
            std::string::npos);
  EXPECT_NE(log.find("Error changing ownership of '" + path("missing") +
                     "' to uid=1, gid=2, No such file"),
            std::string::npos);
}

TEST_F(FileOps, PathTypesAndIds) {
  write_text(path("f"), "x");
  EXPECT_EQ(file_path_type(path("f").c_str()), 1);
  EXPECT_EQ(file_path_type(dir_.c_str()), 2);
  EXPECT_EQ(file_path_type(path("missing").c_str()), 0);
  EXPECT_EQ(file_path_type(nullptr), 0);
  EXPECT_EQ(file_is_dir(path("f").c_str()), 0);
  EXPECT_NE(log_text().find("'" + dir_ + "' exists and is a directory"), std::string::npos);
  EXPECT_EQ(file_user_id("root"), 0);
  EXPECT_EQ(file_user_group_id("root"), 0);
  EXPECT_EQ(file_group_id("root"), 0);
  EXPECT_EQ(file_user_id("no_such_user_here"), -1);
  EXPECT_EQ(file_group_id(nullptr), -1);
}

TEST(FileNames, BaseAndDirectoryNames) {
  struct row {
    const char* path;
    const char* base;
    const char* dir;
  };
  const row rows[] = {{"a/b/c.txt", "c.txt", "a/b"}, {"a\\b/c", "c", "a\\b"},
                      {"name", "name", "name"},     {"dir/", "", "dir"},
                      {"/top", "top", ""}};
  char buffer[kPathSize];
  for (const row& r : rows) {
    EXPECT_STREQ(file_base_name(r.path, buffer, kPathSize), r.base) << r.path;
    EXPECT_STREQ(file_dir_name(r.path, buffer, kPathSize), r.dir) << r.path;
  }
  char small[4];
  EXPECT_STREQ(file_dir_name("abcdef/g", small, sizeof small), "abc");
  EXPECT_EQ(file_base_name(nullptr, buffer, kPathSize), nullptr);
}

TEST_F(FileOps, ErrorLinesCarryTheSystemReasonWhenThereIsOne) {
  errno = ENOENT;
  file_error("first %d", 1);
  errno = 0;
  file_error("second");
  std::string log = log_text();
  EXPECT_NE(log.find("Error: first 1, No such file or directory\n"), std::string::npos);
  EXPECT_NE(log.find("Error: second\n"), std::string::npos);
}

}  // namespace
