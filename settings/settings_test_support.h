// Test support: a scratch directory and a debug log inside it, made current
// for the test's duration, so tests can check files and log lines.
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
    char pattern[] = "/tmp/settings_test_XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir_ = pattern;
    log_ = log_create(static_cast<unsigned>(log_level::debug));
    ASSERT_EQ(log_open(log_, path("test.log").c_str()), 1);
    log_set_current(log_);
  }
  void TearDown() override {
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
  bool logged(std::string_view text) {
    log_flush(log_);
    return read_file("test.log").find(text) != std::string::npos;
  }

  std::string dir_;
  logger* log_ = nullptr;
};
