#include "fileops/file_ops.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "fileops/test_scratch.h"

namespace {

using FileOps = file_step_test;
using step_list = std::vector<std::string>;

struct stat lstat_of(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
  return status;
}

TEST_F(FileOps, CopyStreamsEveryChunkAndOverwritesOnlyWhenAsked) {
  std::string content(300000, 'x');  // more than two stream buffers
  content[8191] = 'y';
  content[131072] = 'w';
  content.back() = 'z';
  write_text(path("src"), content);
  write_text(path("dst"), "old");
  unsigned bytes = 5;
  EXPECT_EQ(file_copy(path("src").c_str(), path("dst").c_str(), 0, &bytes), -1);
  EXPECT_EQ(read_text(path("dst")), "old");
  EXPECT_EQ(file_copy(path("src").c_str(), path("dst").c_str(), 1, &bytes), 1);
  EXPECT_EQ(read_text(path("dst")), content);
  EXPECT_EQ(bytes, 300005u);
  EXPECT_EQ(steps(), step_list{"done src dst 1"});
}

TEST_F(FileOps, CopyFailuresAreLoggedAndReported) {
  EXPECT_EQ(file_copy(path("missing").c_str(), path("dst").c_str(), 1, nullptr), 0);
  EXPECT_EQ(read_text(path("dst")), "");  // left behind, empty
  EXPECT_TRUE(file_exists(path("dst").c_str()));
  EXPECT_EQ(file_copy(path("dst").c_str(), path("no/dst").c_str(), 1, nullptr), 0);
  EXPECT_EQ(file_copy(dir_.c_str(), path("from_dir").c_str(), 1, nullptr), 0);
  EXPECT_EQ(file_copy(nullptr, path("dst").c_str(), 1, nullptr), 0);
  std::string log = log_text();
  EXPECT_NE(log.find("Error opening '" + path("missing") + "' for read, No such file or directory"),
            std::string::npos);
  EXPECT_NE(log.find("Error opening '" + path("no/dst") + "' for write, No such file"),
            std::string::npos);
  EXPECT_NE(log.find("'" + dir_ + "' for read, Is a directory"), std::string::npos);
  EXPECT_EQ(steps()[1], "failed dst no/dst 1");
  EXPECT_EQ(steps()[3], "failed - dst 1");
  // A FIFO is refused at once on either side, never waited on.
  ASSERT_EQ(mkfifo(path("fifo").c_str(), 0600), 0);
  EXPECT_EQ(file_copy(path("fifo").c_str(), path("from_fifo").c_str(), 1, nullptr), 0);
  EXPECT_EQ(file_copy(path("dst").c_str(), path("fifo").c_str(), 1, nullptr), 0);
  EXPECT_NE(log_text().find("'" + path("fifo") + "' for read, Invalid argument"),
            std::string::npos);
}

TEST_F(FileOps, MoveRemovesTheSourceEvenWhenTheCopyIsRefused) {
  write_text(path("a"), "a");
  write_text(path("c"), "c");
  EXPECT_EQ(file_move(path("a").c_str(), path("b").c_str(), 0, nullptr), 1);
  EXPECT_EQ(file_move(path("c").c_str(), path("b").c_str(), 0, nullptr), 1);
  EXPECT_FALSE(file_exists(path("a").c_str()) || file_exists(path("c").c_str()));
  EXPECT_EQ(read_text(path("b")), "a");
  EXPECT_EQ(file_move(path("missing").c_str(), path("d").c_str(), 1, nullptr), 0);
  // Onto itself (or a hard link to itself) nothing may be truncated or removed.
  ASSERT_EQ(link(path("b").c_str(), path("hard").c_str()), 0);
  EXPECT_EQ(file_copy(path("b").c_str(), path("hard").c_str(), 1, nullptr), 0);
  EXPECT_EQ(file_move(path("b").c_str(), path("b").c_str(), 0, nullptr), 0);
  EXPECT_EQ(read_text(path("b")), "a");
}

TEST_F(FileOps, UnprivilegedCopyIntoAProtectedDirectoryFails) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root to switch to nobody";
  write_text(path("src"), "x");
  ASSERT_EQ(chmod(path("src").c_str(), 0644) | chmod(dir_.c_str(), 0755), 0);
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
  EXPECT_EQ(file_chown(path("link").c_str(), 80, -1), 1);
  EXPECT_EQ(lstat_of(path("outside")).st_mode & 07777, 0600u);
  EXPECT_EQ(lstat_of(path("outside")).st_uid, 0u);
  EXPECT_EQ(lstat_of(path("link")).st_uid, 80u);
  EXPECT_EQ(lstat_of(path("link")).st_gid, 80u);  // gid -1 takes the uid

  EXPECT_EQ(file_chmod(path("outside").c_str(), 0640), 1);
  EXPECT_EQ(file_chown(path("outside").c_str(), 33, 65534), 1);
  EXPECT_EQ(lstat_of(path("outside")).st_mode & 07777, 0640u);
  EXPECT_EQ(lstat_of(path("outside")).st_gid, 65534u);
  EXPECT_EQ(file_chown(path("outside").c_str(), -1, 0), 0);
}

TEST_F(FileOps, ACopyNeverWritesThroughALinkAtTheDestination) {
  write_text(path("src"), "new");
  write_text(path("outside"), "precious");
  ASSERT_EQ(symlink(path("outside").c_str(), path("link").c_str()), 0);
  ASSERT_EQ(symlink(path("nowhere").c_str(), path("dangling").c_str()), 0);
  EXPECT_EQ(file_copy(path("src").c_str(), path("link").c_str(), 1, nullptr), 0);
  EXPECT_EQ(file_copy(path("src").c_str(), path("dangling").c_str(), 1, nullptr), 0);
  EXPECT_EQ(read_text(path("outside")), "precious");
  EXPECT_FALSE(file_exists(path("nowhere").c_str()));
  EXPECT_TRUE(S_ISLNK(lstat_of(path("link")).st_mode));
  EXPECT_NE(log_text().find("Error opening '" + path("link") +
                            "' for write, Too many levels of symbolic links"),
            std::string::npos);
}

TEST_F(FileOps, FailuresAreLoggedWithTheSystemReasonWhenThereIsOne) {
  EXPECT_EQ(file_chmod(path("missing").c_str(), 0644), 0);
  EXPECT_EQ(file_chown(path("missing").c_str(), 1, 2), 0);
  errno = 0;
  file_error("plain %d", 7);
  std::string log = log_text();
  EXPECT_NE(log.find("Error changing mode of '" + path("missing") + "' to 420, No such file"),
            std::string::npos);
  EXPECT_NE(log.find("ownership of '" + path("missing") + "' to uid=1, gid=2, No such file"),
            std::string::npos);
  EXPECT_NE(log.find("Error: plain 7\n"), std::string::npos);
}

TEST_F(FileOps, PathTypes) {
  write_text(path("f"), "x");
  EXPECT_EQ(file_path_type(path("f").c_str()), 1);
  EXPECT_EQ(file_path_type(dir_.c_str()), 2);
  EXPECT_EQ(file_path_type(path("missing").c_str()) + file_path_type(nullptr), 0);
  EXPECT_NE(log_text().find("'" + dir_ + "' exists and is a directory"), std::string::npos);
}

TEST(FileNames, NamesAndIds) {
  EXPECT_EQ(file_user_id("root") + file_group_id("root") + file_user_group_id("root"), 0);
  EXPECT_EQ(file_user_id("no_such_user_here"), -1);
  struct {
    const char* path;
    const char* base;
    const char* dir;
  } const rows[] = {{"a/b/c.txt", "c.txt", "a/b"},
                    {"a\\b/c", "c", "a\\b"},
                    {"name", "name", "name"},
                    {"dir/", "", "dir"},
                    {"/top", "top", ""}};
  char buffer[kPathSize];
  for (const auto& row : rows) {
    EXPECT_STREQ(file_base_name(row.path, buffer, kPathSize), row.base) << row.path;
    EXPECT_STREQ(file_dir_name(row.path, buffer, kPathSize), row.dir) << row.path;
  }
  EXPECT_STREQ(file_dir_name("abcdef/g", buffer, 4), "abc");
  EXPECT_EQ(file_base_name(nullptr, buffer, kPathSize), nullptr);
}

}  // namespace
