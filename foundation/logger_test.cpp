#include "foundation/logger.h"

#include <unistd.h>

#include <regex>

#include "foundation/test_scratch.h"

namespace {

// A log's lines, each followed by "|" in place of its line end, without
// their stamps: the date and time as asctime() writes them, two blanks, and
// this process's id.
std::string unstamped(const std::string& log) {
  const std::regex stamp("[A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9]{2} [0-9:]{8}  \\[" +
                         std::to_string(getpid()) + "\\] (.*)\n");
  return std::regex_replace(log, stamp, "$1|");
}

// The fixture's log, "test.log", is at debug level and flushed on every line.
using Logger = scratch_test;

// Control characters are escaped, so that no text can forge a line of its own.
TEST_F(Logger, LinesAreStampedAndFilteredAndEachMessageIsOneLineOf999AtMost) {
  log_info("opened");
  log_error("name 'a\nb\r\x01\x7f\tc' %d", 5);
  log_debug("%s", std::string(1200, 'm').c_str());
  log_set_level(log_, 1);
  log_info("dropped");
  EXPECT_EQ(
      unstamped(read_file("test.log")),
      "Info: opened|Error: name 'a\\nb\\r\\x01\\x7f\tc' 5|Debug: " + std::string(999, 'm') + "|");
}

// An error is held while no log takes it, as at level None, and written out
// first when a log opens and becomes current.
TEST_F(Logger, HeldErrorsAreWrittenFirstWhenALogOpens) {
  log_set_level(log_, 0);
  log_error("early %s", "trouble");
  log_set_current(nullptr);
  log_info("not held");
  log_set_level(log_, 3);
  ASSERT_EQ(log_open(log_, path("later.log").c_str()), 1);
  log_info("after");
  EXPECT_EQ(unstamped(read_file("later.log")) + read_file("test.log"),
            "Error: early trouble|Info: after|");
}

TEST_F(Logger, RotationKeepsNumberedCopies) {
  log_set_rotation(log_, 4, 100);
  for (int i = 0; i < 7; ++i) log_info("line %d %080d", i, 0);  // each line alone passes 100 bytes
  std::string copies = read_file("test.log");
  for (int i = 0; i < 6; ++i)
    copies += unstamped(read_file("test.log" + std::to_string(i))).substr(0, 12);
  EXPECT_EQ(copies, "Info: line 6Info: line 5Info: line 4Info: line 3Info: line 2");
}

// The log holds every answer given: it is private to its owner, never reached
// through a link, never a FIFO that could block; a directory that vanishes
// costs only the lines.
TEST_F(Logger, TheFileIsPrivateAndOnlyARegularFileByItsOwnName) {
  ASSERT_EQ(chmod(write_file("wide.log", "earlier\n").c_str(), 0644), 0);
  ASSERT_EQ(symlink(path("wide.log").c_str(), path("link.log").c_str()), 0);
  ASSERT_EQ(mkfifo(path("fifo.log").c_str(), 0600), 0);
  EXPECT_EQ(log_open(log_, path("link.log").c_str()) + log_open(log_, path("fifo.log").c_str()), 0);
  ASSERT_EQ(log_open(log_, path("wide.log").c_str()), 1);
  EXPECT_EQ(std::filesystem::status(path("wide.log")).permissions(), std::filesystem::perms(0600));
  ASSERT_EQ(log_open(log_, write_file("gone/x.log").c_str()), 1);
  log_close(log_);
  std::filesystem::remove_all(path("gone"));
  log_info("lost");
  EXPECT_FALSE(exists("gone"));
}

}  // namespace
