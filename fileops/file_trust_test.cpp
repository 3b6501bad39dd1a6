#include "fileops/file_trust.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "fileops/test_scratch.h"

namespace {

constexpr uid_t kNobody = 65534;

class FileTrust : public file_step_test {
 protected:
  // outside/ and tree/, and in tree/ a link to outside/ named name, owned by
  // owner. Skips the test where links cannot be given away (not root).
  void plant(const char* name, uid_t owner) {
    mkdir(path("outside").c_str(), 0755);
    mkdir(path("tree").c_str(), 0755);
    std::string link = path(std::string("tree/") + name);
    ASSERT_EQ(symlink(path("outside").c_str(), link.c_str()), 0);
    if (lchown(link.c_str(), owner, owner) != 0) GTEST_SKIP() << "links cannot be given away here";
  }
};

TEST_F(FileTrust, LinksOfRootOrTheRunningUserAreFollowed) {
  plant("mine", geteuid());
  EXPECT_EQ(file_path_trusted(path("tree/mine/sub/file").c_str()), 1);
  EXPECT_EQ(file_path_trusted(path("tree//mine/").c_str()), 1);
  EXPECT_EQ(file_path_trusted("relative/missing\\name"), 1);
  EXPECT_EQ(file_path_trusted(nullptr), 0);
  EXPECT_FALSE(logged("Not following"));
}

TEST_F(FileTrust, AnotherUsersLinkIsNotFollowedAnywhereInThePath) {
  plant("planted", kNobody);
  for (const char* tail : {"tree/planted", "tree/planted/", "tree/planted/deeper/file"}) {
    errno = 0;
    EXPECT_EQ(file_path_trusted(path(tail).c_str()), 0) << tail;
    EXPECT_EQ(errno, ELOOP);
  }
  EXPECT_TRUE(logged("Error: Not following symbolic link '" + path("tree/planted") +
                     "', Too many levels of symbolic links\n"));
  EXPECT_EQ(file_is_link(path("tree/planted").c_str()), 1);
  EXPECT_EQ(file_is_link(path("tree").c_str()), 0);
  EXPECT_EQ(file_is_link(nullptr), 0);
}

// A link is trusted for its owner and for the directory it sits in: one
// that another account can change may have had any link renamed into it.
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
  mkdir(path("outside").c_str(), 0755);
  int at = 0;
  for (const row& r : rows) {
    std::string dir = path("d" + std::to_string(at++));
    ASSERT_EQ(mkdir(dir.c_str(), 0755), 0);
    ASSERT_EQ(symlink(path("outside").c_str(), (dir + "/link").c_str()), 0);
    if (lchown((dir + "/link").c_str(), r.link_owner, r.link_owner) != 0 ||
        chown(dir.c_str(), r.dir_owner, r.dir_owner) != 0) {
      GTEST_SKIP() << "not root";
    }
    ASSERT_EQ(chmod(dir.c_str(), r.dir_mode), 0);
    EXPECT_EQ(file_path_trusted((dir + "/link/x").c_str()), r.trusted) << dir;
    EXPECT_EQ(static_cast<bool>(file_open_path((dir + "/link").c_str(), O_RDONLY)), r.trusted == 1)
        << dir;
  }
}

}  // namespace
