#include "foundation/logger.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string read_file(const std::string& path) {
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

std::vector<std::string> lines_of(const std::string& path) {
  std::vector<std::string> lines;
  std::istringstream in(read_file(path));
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

bool exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

// Each test gets a scratch directory and starts with no current logger.
class Logger : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/logger_test.XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir_ = pattern;
    path_ = dir_ + "/install.log";
    // Errors held by an earlier test are written out to a silent sink.
    log_set_current(nullptr);
    logger* sink = log_create(0);
    log_set_file(sink, dir_.c_str(), "sink.log");
    log_free(&sink);
  }
  void TearDown() override {
    log_free(&log_);
    log_set_current(nullptr);
    std::string command = "rm -rf '" + dir_ + "'";
    ASSERT_EQ(system(command.c_str()), 0);
  }
  logger* open_log(unsigned level) {
    log_ = log_create(level);
    log_set_current(log_);
    EXPECT_EQ(log_open(log_, path_.c_str()), 1);
    log_flush_every(log_, 1);
    return log_;
  }

  std::string dir_;
  std::string path_;
  logger* log_ = nullptr;
};

TEST_F(Logger, LineShapeHasTheStampPidAndLevelWord) {
  open_log(3);
  log_info("Log file opened in '%s'", path_.c_str());
  log_debug("d");
  log_error("e %d", 5);
  std::vector<std::string> lines = lines_of(path_);
  ASSERT_EQ(lines.size(), 3u);
  std::string pid = std::to_string(getpid());
  std::regex shape("^[A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9][0-9] [0-9]{2}:[0-9]{2}:[0-9]{2}  \\[" +
                   pid + "\\] Info: Log file opened in '" + path_ + "'$");
  EXPECT_TRUE(std::regex_match(lines[0], shape)) << lines[0];
  EXPECT_EQ(lines[1].substr(21), "[" + pid + "] Debug: d");
  EXPECT_EQ(lines[2].substr(21), "[" + pid + "] Error: e 5");
}

TEST_F(Logger, LevelsFilterLines) {
  open_log(1);
  log_info("i");
  log_debug("d");
  log_error("e");
  ASSERT_EQ(lines_of(path_).size(), 1u);
  EXPECT_NE(lines_of(path_)[0].find("Error: e"), std::string::npos);
  log_set_level_name(log_, "debug");
  EXPECT_EQ(log_get_level(log_), 3u);
  log_set_level_name(log_, "verbose");
  EXPECT_EQ(log_get_level(log_), 3u);
  EXPECT_STREQ(log_get_level_name(log_), "Debug");
  log_set_level_name(log_, "NONE");
  log_error("held, never written");
  EXPECT_EQ(lines_of(path_).size(), 1u);
}

TEST_F(Logger, ErrorsBeforeAnyLogAreWrittenFirstWhenOneOpens) {
  log_error("early %s", "trouble");
  log_info("not held");
  log_ = log_create(3);
  ASSERT_EQ(log_open(log_, path_.c_str()), 1);  // becomes current, writes the held line
  log_flush_every(log_, 1);
  log_info("after");
  std::vector<std::string> lines = lines_of(path_);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_NE(lines[0].find("] Error: early trouble"), std::string::npos);
  EXPECT_NE(lines[1].find("] Info: after"), std::string::npos);
}

TEST_F(Logger, LongMessagesKeep999Characters) {
  open_log(3);
  log_info("%s", std::string(1200, 'm').c_str());
  ASSERT_EQ(lines_of(path_).size(), 1u);
  std::string line = lines_of(path_)[0];
  EXPECT_EQ(line.substr(line.find(": ") + 2), std::string(999, 'm'));
}

TEST_F(Logger, RotationKeepsNumberedCopies) {
  open_log(3);
  log_set_rotation(log_, 4, 100);
  for (int i = 0; i < 7; ++i) {
    log_info("line %d %s", i, std::string(80, 'x').c_str());  // each line alone passes 100 bytes
  }
  // Line 6 sits in copy 0, line 0 fell off the end.
  EXPECT_EQ(read_file(path_), "");
  for (int copy = 0; copy <= 4; ++copy) {
    std::string text = read_file(path_ + std::to_string(copy));
    EXPECT_NE(text.find("line " + std::to_string(6 - copy) + " "), std::string::npos) << copy;
  }
  EXPECT_FALSE(exists(path_ + "5"));
  log_info("next");
  EXPECT_NE(read_file(path_).find("Info: next"), std::string::npos);
}

TEST_F(Logger, SizeCountsWhatAnEarlierRunLeft) {
  {
    std::ofstream earlier(path_);
    earlier << std::string(1048000, 'o');
  }
  open_log(3);
  log_info("%s", std::string(600, 'n').c_str());
  EXPECT_FALSE(exists(path_ + "1"));
  std::string copy = read_file(path_ + "0");
  EXPECT_EQ(copy.substr(0, 1048000), std::string(1048000, 'o'));
  EXPECT_EQ(copy.substr(copy.size() - 603), ": " + std::string(600, 'n') + "\n");
  EXPECT_EQ(read_file(path_), "");
}

TEST_F(Logger, RawTextHasNoStamp) {
  open_log(1);
  log_raw("raw %d", 1);
  log_raw("|more\n");  // flushed only on every second write
  log_flush(nullptr);
  EXPECT_EQ(read_file(path_), "raw 1|more\n");
}

TEST_F(Logger, NewLogFileIsPrivateToItsOwner) {
  open_log(3);
  log_info("answer");
  struct stat info {};
  ASSERT_EQ(stat(path_.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0600u);
}

TEST_F(Logger, VanishedDirectoryCostsOnlyTheLines) {
  std::string sub = dir_ + "/gone";
  ASSERT_EQ(mkdir(sub.c_str(), 0700), 0);
  log_ = log_create(3);
  log_set_current(log_);
  ASSERT_EQ(log_set_file(log_, sub.c_str(), "x.log"), 1);
  log_flush_every(log_, 1);
  log_info("first");
  EXPECT_NE(read_file(sub + "/x.log").find("Info: first"), std::string::npos);
  log_close(log_);
  ASSERT_EQ(system(("rm -rf '" + sub + "'").c_str()), 0);
  log_info("lost");
  log_error("lost too");
  EXPECT_FALSE(exists(sub));
  EXPECT_EQ(log_set_file(log_, sub.c_str(), "x.log"), 0);
}

TEST_F(Logger, NullArgumentsDoNothing) {
  log_free(nullptr);
  EXPECT_EQ(log_open(nullptr, path_.c_str()), 0);
  EXPECT_EQ(log_set_file(nullptr, dir_.c_str(), "x"), 0);
  EXPECT_EQ(log_get_level(nullptr), 0u);
  EXPECT_EQ(log_get_level_name(nullptr), nullptr);
  log_write(nullptr, "m", 1);
  log_info(nullptr);
  log_flush(nullptr);
  log_raw("no current logger");
  EXPECT_FALSE(exists(path_));
}

}  // namespace
