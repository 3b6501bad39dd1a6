#include "fileops/file_ops.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "fileops/file_test_support.h"
#include "foundation/test_scratch.h"

namespace {

using FileOps = scratch_test;

// A mode change leaves a link alone; an owner change changes the link
// itself, its group following the user when not given.
TEST_F(FileOps, ModesAndOwnersNeverReachThroughALink) {
  struct stat target {
  }, link{};
  write_file("target", "x");
  ASSERT_EQ(
      chmod(path("target").c_str(), 0600) | symlink(path("target").c_str(), path("link").c_str()),
      0);
  EXPECT_EQ(file_chmod(path("link").c_str(), 0777) + file_chown(path("link").c_str(), 80, -1), 2);
  ASSERT_EQ(lstat(path("target").c_str(), &target) | lstat(path("link").c_str(), &link), 0);
  EXPECT_EQ(
      std::vector<unsigned>({target.st_mode & 07777, target.st_uid, link.st_uid, link.st_gid}),
      std::vector<unsigned>({0600, 0, 80, 80}));
  EXPECT_EQ(file_chmod(path("missing").c_str(), 0644) + file_chown(path("missing").c_str(), 1, 2),
            0);
  EXPECT_EQ(logged("Error changing mode of '" + path("missing") + "' to 420, No such file"), 1);
  EXPECT_EQ(logged("ownership of '" + path("missing") + "' to uid=1, gid=2, No such file"), 1);
}

// Nothing is made through a link another account owns, nor at a path too
// long; each refusal is a failed step.
TEST_F(FileOps, MkdirRefusesUntrustedLinksAndPathsTooLong) {
  record_file_steps();
  ASSERT_EQ(symlink(dir_.c_str(), path("planted").c_str()), 0);
  if (lchown(path("planted").c_str(), 65534, 65534) != 0) GTEST_SKIP() << "not root";
  EXPECT_EQ(file_mkdir(path("planted/new/deeper").c_str(), 1), 0);
  EXPECT_EQ(file_mkdir(path(std::string(kPathSize, 'm')).c_str(), 1), 0);
  EXPECT_FALSE(exists("new"));
  EXPECT_EQ(file_steps(), (std::vector<int>{ELOOP, ENAMETOOLONG}));
}

}  // namespace
