#include "foundation/file_guard.h"

#include <unistd.h>

#include <cerrno>
#include <tuple>

#include "foundation/test_scratch.h"

namespace {

constexpr uid_t kOtherAccount = 33;  // www-data on Debian

using FileOpen = scratch_test;

// What is opened by name: a link only for reading, and only one that root or
// the running user made in a private directory; only regular files, never
// blocking; a second name not for writing where others can make one. What
// was written is finished only when the close succeeds too.
TEST_F(FileOpen, WhatIsOpenedByNameAndFinished) {
  // A directory is trusted when root or the running user owns it and nobody
  // else may write to it, unless it is sticky.
  const std::tuple<uid_t, mode_t, bool> dirs[] = {
      {0, 0755, true},  {0, 0775, false},  {0, 0757, false},
      {0, 01777, true}, {33, 0755, false}, {33, 01777, false}};  // 33: www-data
  for (const auto& [owner, mode, is_private] : dirs) {
    struct stat dir {};
    dir.st_mode = S_IFDIR | mode;
    dir.st_uid = owner;
    EXPECT_EQ(file_dir_private(dir), is_private) << owner << " " << std::oct << mode;
  }
  write_file("file", "kept");
  write_file("dir/");
  ASSERT_EQ(symlink("file", path("own").c_str()), 0);
  ASSERT_EQ(symlink("own", path("via").c_str()), 0);
  ASSERT_EQ(symlink(path("file").c_str(), path("bad").c_str()), 0);
  ASSERT_EQ(lchown(path("bad").c_str(), kOtherAccount, kOtherAccount), 0);
  ASSERT_EQ(symlink("bad", path("via_bad").c_str()), 0);
  ASSERT_EQ(link(path("file").c_str(), path("2nd").c_str()), 0);
  ASSERT_EQ(mkfifo(path("fifo").c_str(), 0600), 0);
  // Each row: the name, how it is opened, the directory's mode, and errno
  // after the refusal (0: opened).
  const std::tuple<const char*, const char*, mode_t, int> rows[] = {
      {"via", "r", 0700, 0},         {"own", "r", 0777, ELOOP},   {"bad", "r", 0700, ELOOP},
      {"via_bad", "r", 0700, ELOOP}, {"own", "w", 0700, ELOOP},   {"own", "a", 0700, ELOOP},
      {"own", "r+", 0700, ELOOP},    {"fifo", "r", 0700, EINVAL}, {"fifo", "w", 0700, EINVAL},
      {"dir", "r", 0700, EISDIR},    {"2nd", "r", 0777, 0},       {"2nd", "a", 0777, EMLINK},
      {"2nd", "w", 0777, EMLINK},    {"2nd", "a", 0700, 0}};
  for (const auto& [name, mode, dir_mode, err] : rows) {
    ASSERT_EQ(chmod(dir_.c_str(), dir_mode), 0);
    errno = 0;
    const unique_file opened(file_open(path(name).c_str(), mode));
    EXPECT_EQ(opened != nullptr ? 0 : errno, err)
        << name << " " << mode << " " << std::oct << dir_mode;
  }
  EXPECT_EQ(read_file("file"), "kept");
  EXPECT_EQ(logged("Not following symbolic link '" + path("bad") + "'"), 2);
  EXPECT_EQ(logged("Not opening '" + path("fifo") + "', it is not a regular file"), 2);
  // A write can fail as late as the close (a delayed write error); here the
  // descriptor is gone under the stream.
  FILE* written = file_open(path("written").c_str(), "w");
  close(fileno(written));
  EXPECT_EQ(file_finish(&written), 0);
}

}  // namespace
