#include "foundation/file_guard.h"

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "foundation/handles.h"
#include "foundation/test_scratch.h"

namespace {

constexpr uid_t kOtherAccount = 33;  // www-data on Debian

using FileOpen = scratch_test;

// Writing through a link planted at a file's name would write wherever it
// points, whoever owns the link.
TEST_F(FileOpen, WritingModesRefuseALinkAtTheName) {
  write_file("target", "kept");
  ASSERT_EQ(symlink(path("target").c_str(), path("link").c_str()), 0);
  for (const char* mode : {"w", "wb", "a", "w+", "r+"}) {
    errno = 0;
    EXPECT_EQ(unique_file(file_open(path("link").c_str(), mode)), nullptr) << mode;
    EXPECT_EQ(errno, ELOOP) << mode;
  }
  EXPECT_EQ(read_file("target"), "kept");

  unique_file out(file_open(path("new").c_str(), "w"));
  ASSERT_NE(out, nullptr);
  fputs("one", out.get());
  out.reset(file_open(path("new").c_str(), "a"));
  fputs("two", out.get());
  out.reset();
  EXPECT_EQ(read_file("new"), "onetwo");
  out.reset(file_open(path("new").c_str(), "w"));
  out.reset();
  EXPECT_EQ(read_file("new"), "");
  EXPECT_EQ(file_open(nullptr, "w"), nullptr);
}

// A link at a name that is read is followed only while nobody but root or
// the running user could have placed it: its owner, and the directory it
// stands in, decide.
TEST_F(FileOpen, ReadingFollowsOnlyTrustedLinks) {
  write_file("secret", "root only");
  ASSERT_EQ(symlink("secret", path("own").c_str()), 0);
  ASSERT_EQ(symlink("own", path("chain").c_str()), 0);
  ASSERT_EQ(symlink(path("secret").c_str(), path("planted").c_str()), 0);
  ASSERT_EQ(lchown(path("planted").c_str(), kOtherAccount, kOtherAccount), 0);
  ASSERT_EQ(symlink("planted", path("via_planted").c_str()), 0);

  EXPECT_NE(unique_file(file_open(path("own").c_str(), "r")), nullptr);
  EXPECT_NE(unique_file(file_open(path("chain").c_str(), "r")), nullptr);
  for (const char* name : {"planted", "via_planted"}) {
    errno = 0;
    EXPECT_EQ(unique_file(file_open(path(name).c_str(), "r")), nullptr) << name;
    EXPECT_EQ(errno, ELOOP) << name;
  }
  EXPECT_TRUE(logged("Not following symbolic link '" + path("planted") + "'"));

  // In a directory every account may write, root's own link may have been
  // moved there by anyone.
  ASSERT_EQ(chmod(dir_.c_str(), 0777), 0);
  errno = 0;
  EXPECT_EQ(unique_file(file_open(path("own").c_str(), "r")), nullptr);
  EXPECT_EQ(errno, ELOOP);
}

// Nothing that could block or never end is opened, for reading or writing.
TEST_F(FileOpen, OnlyRegularFilesAreOpened) {
  ASSERT_EQ(mkfifo(path("fifo").c_str(), 0600), 0);
  ASSERT_EQ(mkdir(path("dir").c_str(), 0700), 0);
  struct Row {
    std::string path;
    const char* mode;
    int err;
  };
  const Row rows[] = {
      {path("fifo"), "r", EINVAL},   {path("fifo"), "w", EINVAL}, {"/dev/zero", "r", EINVAL},
      {"/dev/urandom", "r", EINVAL}, {"/dev/full", "w", EINVAL},  {path("dir"), "r", EISDIR},
  };
  for (const Row& row : rows) {
    errno = 0;
    EXPECT_EQ(unique_file(file_open(row.path.c_str(), row.mode)), nullptr) << row.path;
    EXPECT_EQ(errno, row.err) << row.path << " " << row.mode;
  }
  EXPECT_TRUE(logged("Not opening '" + path("fifo") + "', it is not a regular file"));
}

// A second name in a directory another account can write may stand for any
// file of the host: it is not truncated or written. Where only root can
// make names, a second one is the operator's own.
TEST_F(FileOpen, WritingRefusesASecondNameWhereOthersCanMakeOne) {
  write_file("file", "kept");
  ASSERT_EQ(link(path("file").c_str(), path("second").c_str()), 0);
  EXPECT_NE(unique_file(file_open(path("file").c_str(), "r")), nullptr);
  ASSERT_EQ(chmod(dir_.c_str(), 0777), 0);
  for (const char* mode : {"w", "a"}) {
    errno = 0;
    EXPECT_EQ(unique_file(file_open(path("second").c_str(), mode)), nullptr) << mode;
    EXPECT_EQ(errno, EMLINK) << mode;
  }
  EXPECT_EQ(read_file("file"), "kept");
  ASSERT_EQ(chmod(dir_.c_str(), 0700), 0);
  EXPECT_NE(unique_file(file_open(path("second").c_str(), "a")), nullptr);
}

// A write that cannot reach the file often shows only when the buffer is
// flushed at the close: here the file-size limit stands for a full disk.
TEST_F(FileOpen, FinishingTellsWhetherTheWritesReachedTheFile) {
  FILE* limited = file_open(path("limited").c_str(), "w");
  ASSERT_NE(limited, nullptr);
  fputs("lost", limited);
  rlimit saved{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &saved), 0);
  rlimit tiny = saved;
  tiny.rlim_cur = 1;
  auto* previous = signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &tiny), 0);
  errno = 0;
  int finished = file_finish(&limited);
  int err = errno;
  setrlimit(RLIMIT_FSIZE, &saved);
  signal(SIGXFSZ, previous);
  EXPECT_EQ(finished, 0);
  EXPECT_EQ(err, EFBIG);
  EXPECT_EQ(limited, nullptr);

  FILE* kept = file_open(path("kept").c_str(), "w");
  ASSERT_NE(kept, nullptr);
  fputs("kept", kept);
  EXPECT_EQ(file_finish(&kept), 1);
  EXPECT_EQ(read_file("kept"), "kept");
  EXPECT_EQ(file_finish(&kept), 0);
  EXPECT_EQ(file_finish(nullptr), 0);
}

// As root, a directory or file that every account may change is named with
// the reason; a private one is not.
TEST_F(FileOpen, SharedPlacesAreNamed) {
  write_file("data", "x");
  EXPECT_EQ(file_shared_reason(dir_.c_str()), nullptr);
  EXPECT_EQ(file_shared_reason(path("data").c_str()), nullptr);
  EXPECT_EQ(file_shared_reason(path("missing").c_str()), nullptr);
  ASSERT_EQ(chmod(path("data").c_str(), 0666), 0);
  EXPECT_STREQ(file_shared_reason(path("data").c_str()), "every account may write to it");
  ASSERT_EQ(chmod(dir_.c_str(), 01777), 0);
  EXPECT_STREQ(file_shared_reason(dir_.c_str()), "it is a shared temporary directory");
}

}  // namespace
