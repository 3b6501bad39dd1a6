#include "fileops/file_trust.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "foundation/test_scratch.h"

namespace {

constexpr uid_t kNobody = 65534;

using FileTrust = scratch_test;

// A link on the way is followed only when root or the running user owns it
// and it sits in a directory no other account can change: one that another
// account can change may have had any link renamed into it. Wherever it is
// in the path, an untrusted link refuses the whole path.
TEST_F(FileTrust, ALinkCountsOnlyInADirectoryNoOtherAccountCanChange) {
  struct row {
    uid_t dir_owner;
    mode_t dir_mode;
    uid_t link_owner;
    int trusted;
  };
  const row rows[] = {
      {0, 0755, 0, 1},       {0, 01777, 0, 1},        // private, or sticky
      {0, 0775, 0, 0},       {0, 0757, 0, 0},         // group or others may write
      {kNobody, 0755, 0, 0}, {0, 01777, kNobody, 0},  // another's directory, another's link
  };
  write_file("outside/", "");
  int at = 0;
  for (const row& r : rows) {
    std::string dir = write_file("d" + std::to_string(at++) + "/", "");
    std::string link = dir + "link";
    SCOPED_TRACE(link);
    ASSERT_EQ(symlink(path("outside").c_str(), link.c_str()), 0);
    if (lchown(link.c_str(), r.link_owner, r.link_owner) != 0) GTEST_SKIP() << "not root";
    ASSERT_EQ(chown(dir.c_str(), r.dir_owner, r.dir_owner) | chmod(dir.c_str(), r.dir_mode), 0);
    for (const char* tail : {"", "/", "//x/y"}) {
      errno = 0;
      EXPECT_EQ(file_path_trusted((link + tail).c_str()), r.trusted) << tail;
      EXPECT_TRUE(r.trusted || errno == ELOOP) << errno;
    }
    EXPECT_EQ(static_cast<bool>(file_open_path(link.c_str(), O_RDONLY)), r.trusted == 1);
  }
  EXPECT_EQ(logged("Error: Not following symbolic link '" + path("d5/") + "link" +
                   "', Too many levels of symbolic links\n"),
            4);
  EXPECT_EQ(file_path_trusted("relative/missing\\name"), 1);
}

}  // namespace
