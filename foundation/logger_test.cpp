#include "foundation/logger.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <regex>
#include <string>

#include "foundation/test_scratch.h"

namespace {

// The fixture's log, "test.log", at debug level and flushed on every line.
class Logger : public scratch_test {
 protected:
  // The file's lines without their 20-character stamps, each followed by "|".
  std::string unstamped(const char* name = "test.log") const {
    return std::regex_replace(read_file(name), std::regex(".{20} \\[[0-9]+\\] (.*)\n"), "$1|");
  }
};

TEST_F(Logger, LinesAreStampedAndFilteredAndEachMessageIsOneLineOf999AtMost) {
  log_info("opened");
  log_error("name 'a\nb\r\x01\x7f\tc' %d", 5);
  log_debug("%s", std::string(1200, 'm').c_str());
  log_set_level_name(log_, "ERROR");
  log_info("dropped");
  log_set_level_name(log_, "verbose");  // unknown: no change
  EXPECT_STREQ(log_get_level_name(log_), "Error");
  const std::regex line("[A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9][0-9] [0-9]{2}:[0-9]{2}:[0-9]{2}  \\[" +
                        std::to_string(getpid()) + "\\] Info: opened\n[\\s\\S]*");
  EXPECT_TRUE(std::regex_match(read_file("test.log"), line)) << read_file("test.log");
  EXPECT_EQ(unstamped(), "Info: opened|Error: name 'a\\nb\\r\\x01\\x7f\tc' 5|Debug: " +
                             std::string(999, 'm') + "|");
}

// An error is held while no log takes it, as at level None, and written out
// first when a log opens and becomes current.
TEST_F(Logger, HeldErrorsAreWrittenFirstWhenALogOpens) {
  log_set_level_name(log_, "None");
  log_error("early %s", "trouble");
  log_set_current(nullptr);
  log_info("not held");
  logger* later = log_create(3);
  ASSERT_EQ(log_open(later, path("later.log").c_str()), 1);
  log_info("after");
  log_free(&later);
  EXPECT_EQ(log_current(), nullptr);
  EXPECT_EQ(unstamped("later.log"), "Error: early trouble|Info: after|");
  EXPECT_EQ(read_file("test.log"), "");
}

TEST_F(Logger, RotationKeepsNumberedCopies) {
  log_set_rotation(log_, 4, 100);
  for (int i = 0; i < 7; ++i) log_info("line %d %080d", i, 0);  // each line alone passes 100 bytes
  EXPECT_EQ(read_file("test.log"), "");
  std::string copies;
  for (const char* name : {"test.log0", "test.log1", "test.log2", "test.log3", "test.log4"}) {
    copies += unstamped(name).substr(0, 12);
  }
  EXPECT_EQ(copies, "Info: line 6Info: line 5Info: line 4Info: line 3Info: line 2");
  EXPECT_FALSE(exists("test.log5"));
  log_raw("raw %d", 1);  // no stamp, no line end
  log_flush(nullptr);
  EXPECT_EQ(read_file("test.log"), "raw 1");
}

// The log holds every answer given: it is private to its owner, never reached
// through a link, never a FIFO that could block; a directory that vanishes
// costs only the lines.
TEST_F(Logger, TheFileIsPrivateAndOnlyARegularFileByItsOwnName) {
  write_file("wide.log", "earlier\n");
  ASSERT_EQ(chmod(path("wide.log").c_str(), 0644), 0);
  ASSERT_EQ(log_open(log_, path("wide.log").c_str()), 1);
  struct stat info {};
  ASSERT_EQ(stat(path("wide.log").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0600u);
  ASSERT_EQ(symlink(path("wide.log").c_str(), path("link.log").c_str()), 0);
  ASSERT_EQ(mkfifo(path("fifo.log").c_str(), 0600), 0);
  EXPECT_EQ(log_open(log_, path("link.log").c_str()) + log_open(log_, path("fifo.log").c_str()), 0);
  ASSERT_EQ(log_open(log_, write_file("gone/x.log").c_str()), 1);
  std::error_code ignored;
  std::filesystem::remove_all(path("gone"), ignored);
  log_close(log_);
  log_info("lost");
  EXPECT_FALSE(exists("gone"));
}

}  // namespace
