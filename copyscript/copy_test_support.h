// Test support for copy scripts: a scratch directory under /tmp (removed
// afterwards), a debug log inside it made current, a settings store made for
// the test, and small helpers to build trees and read back files and logs.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>

#include "copyscript/copy_script.h"
#include "foundation/logger.h"
#include "settings/ini_store.h"

struct copy_script_deleter {
  void operator()(copy_script* script) const { copy_script_free(&script); }
};
using unique_script = std::unique_ptr<copy_script, copy_script_deleter>;

class copy_test : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/copyscript_test_XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir_ = pattern;
    log_ = log_create(static_cast<unsigned>(log_level::debug));
    log_set_current(log_);
    ASSERT_EQ(log_open(log_, path("test.log").c_str()), 1);
    log_flush_every(log_, 1);
    static const ini_setting_def defs[] = {{"flag", "true", 0}, {nullptr, nullptr, 0}};
    store_ = ini_create();
    ini_setup(store_, defs, nullptr, 1);
  }

  void TearDown() override {
    ini_destroy(&store_);
    log_set_current(nullptr);
    log_free(&log_);
    std::error_code ignored;
    std::filesystem::remove_all(dir_, ignored);
  }

  std::string path(std::string_view name) const { return dir_ + "/" + std::string(name); }

  // Writes a file below the scratch directory, making its parents.
  void write_file(std::string_view name, std::string_view text) const {
    std::filesystem::path file(path(name));
    std::error_code ignored;
    std::filesystem::create_directories(file.parent_path(), ignored);
    std::ofstream(file, std::ios::binary) << text;
  }

  void make_dir(std::string_view name) const {
    std::error_code ignored;
    std::filesystem::create_directories(path(name), ignored);
  }

  std::string read_file(std::string_view name) const {
    std::ifstream in(path(name), std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
  }

  bool exists(std::string_view name) const {
    struct stat status {};
    return lstat(path(name).c_str(), &status) == 0;
  }

  bool logged(std::string_view text) const {
    return read_file("test.log").find(text) != std::string::npos;
  }

  // Number of log lines holding text.
  int logged_count(std::string_view text) const {
    std::string log = read_file("test.log");
    int count = 0;
    for (size_t at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) {
      ++count;
    }
    return count;
  }

  // Replaces every "@" in text by the scratch directory, for script lines.
  std::string here(std::string_view text) const {
    std::string out;
    for (char c : text) {
      if (c == '@') out += dir_;
      else out += c;
    }
    return out;
  }

  // Writes a script file holding text (with "@" for the scratch directory)
  // and loads section from it into a fresh script bound to the test's store.
  unique_script load(std::string_view text, const char* section = "install") {
    write_file("test.cpy", here(text));
    unique_script script(copy_script_create(store_));
    EXPECT_EQ(copy_script_load(script.get(), path("test.cpy").c_str(), section), 1);
    return script;
  }

  std::string dir_;
  logger* log_ = nullptr;
  ini_store* store_ = nullptr;
};
