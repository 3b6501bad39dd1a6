// Test fixture shared by the unit tests: a scratch directory under /tmp,
// removed afterwards, holding a debug log that is current and flushed on
// every line, so tests can check the files they make and the lines logged.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

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
    log_set_current(nullptr);
    log_free(&log_);
    std::error_code ignored;
    std::filesystem::remove_all(dir_, ignored);
  }

  std::string path(std::string_view name) const { return dir_ + "/" + std::string(name); }
  void write_file(std::string_view name, std::string_view text) const {
    std::ofstream(path(name), std::ios::binary) << text;
  }
  std::string read_file(std::string_view name) const {
    std::stringstream text;
    text << std::ifstream(path(name), std::ios::binary).rdbuf();
    return text.str();
  }
  // Whether the log holds text anywhere.
  bool logged(std::string_view text) const {
    return read_file("test.log").find(text) != std::string::npos;
  }

  std::string dir_;
  logger* log_ = nullptr;
};
