// The scratch fixture every unit test can use. It offers this and no more:
//
//   scratch_test            the fixture: a fresh directory under /tmp per test
//                           (dir_), removed with all it holds afterwards, and
//                           a debug log in it, "test.log" (log_), current and
//                           flushed on every line.
//   path(name)              dir_ + "/" + name; a name starting with "/" is
//                           used as it is.
//   write_file(name, text)  writes text ("" when not given), making missing
//                           parent directories; a name ending in "/" makes
//                           that directory instead. Returns path(name).
//   read_file(name)         the file's whole text; "" when it cannot be read.
//   exists(name)            whether anything, a dangling link too, is there.
//   logged(text)            how often text occurs in the log; 0 for never.
//   console(input)          until the test ends the console reads input and
//                           writes, unbuffered, to "console.out" in dir_;
//                           printed() is what it has written.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

#include "foundation/console.h"
#include "foundation/handles.h"
#include "foundation/logger.h"

class scratch_test : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/install_test_XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir_ = pattern;
    log_ = log_create(static_cast<unsigned>(log_level::debug));
    log_set_current(log_);
    ASSERT_EQ(log_open(log_, path("test.log").c_str()), 1);
    log_flush_every(log_, 1);
  }
  void TearDown() override {
    console_set_streams(nullptr, nullptr);
    log_set_current(nullptr);
    log_free(&log_);
    std::error_code ignored;
    std::filesystem::remove_all(dir_, ignored);
  }

  std::string path(std::string_view name) const {
    return name.starts_with('/') ? std::string(name) : dir_ + "/" + std::string(name);
  }
  std::string write_file(std::string_view name, std::string_view text = "") const {
    const std::filesystem::path file(path(name));
    std::error_code ignored;
    std::filesystem::create_directories(name.ends_with('/') ? file : file.parent_path(), ignored);
    if (!name.ends_with('/')) std::ofstream(file, std::ios::binary) << text;
    return file;
  }
  std::string read_file(std::string_view name) const {
    std::ostringstream text;
    text << std::ifstream(path(name), std::ios::binary).rdbuf();
    return text.str();
  }
  bool exists(std::string_view name) const {
    struct stat st {};
    return lstat(path(name).c_str(), &st) == 0;
  }
  int logged(std::string_view text) const {
    const std::string log = read_file("test.log");
    int count = 0;
    for (size_t at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) ++count;
    return count;
  }

  void console(std::string_view input) {
    console_in_.reset(fopen(write_file("console.in", input).c_str(), "r"));
    console_out_.reset(fopen(path("console.out").c_str(), "w"));
    setvbuf(console_out_.get(), nullptr, _IONBF, 0);
    console_set_streams(console_in_.get(), console_out_.get());
  }
  std::string printed() const { return read_file("console.out"); }

  std::string dir_;
  logger* log_ = nullptr;

 private:
  unique_file console_in_;
  unique_file console_out_;
};
