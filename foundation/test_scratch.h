// The scratch fixture every unit test can use. It offers this and no more:
//
//   class scratch_test      a fixture: a fresh directory under /tmp per test
//                           (dir_), removed with all it holds afterwards; a
//                           debug log in it, "test.log" (log_), current and
//                           flushed on every line; the console reset.
//   path(name)              dir_ + "/" + name; a name starting with "/" is
//                           used as it is.
//   write_file(name, text)  writes text (bytes as given), making missing
//                           parent directories; a name ending in "/" makes
//                           that directory. Returns path(name).
//   read_file(name)         the file's whole text; "" when it cannot be read.
//   exists(name)            whether anything, a dangling link too, is there.
//   logged(text)            how often text occurs in the log; 0 for never.
//   console(input)          the console reads input and writes into a kept
//                           buffer from now on; printed() returns what it
//                           wrote so far.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

#include "foundation/console.h"
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
    close_console();
    log_set_current(nullptr);
    log_free(&log_);
    std::error_code ignored;
    std::filesystem::remove_all(dir_, ignored);
  }

  std::string path(std::string_view name) const {
    return name.starts_with('/') ? std::string(name) : dir_ + "/" + std::string(name);
  }
  std::string write_file(std::string_view name, std::string_view text) const {
    std::filesystem::path file(path(name));
    std::error_code ignored;
    if (name.ends_with('/')) {
      std::filesystem::create_directories(file, ignored);
    } else {
      std::filesystem::create_directories(file.parent_path(), ignored);
      std::ofstream(file, std::ios::binary) << text;
    }
    return path(name);
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
    close_console();
    in_ = tmpfile();
    ASSERT_NE(in_, nullptr);
    fwrite(input.data(), 1, input.size(), in_);
    rewind(in_);
    out_ = open_memstream(&out_text_, &out_size_);
    ASSERT_NE(out_, nullptr);
    console_set_streams(in_, out_);
  }
  std::string printed() {
    if (out_ == nullptr) return "";
    fflush(out_);
    return std::string(out_text_, out_size_);
  }

  std::string dir_;
  logger* log_ = nullptr;

 private:
  void close_console() {
    console_set_streams(nullptr, nullptr);
    if (in_ != nullptr) fclose(in_);
    if (out_ != nullptr) fclose(out_);
    free(out_text_);
    in_ = out_ = nullptr;
    out_text_ = nullptr;
    out_size_ = 0;
  }

  FILE* in_ = nullptr;
  FILE* out_ = nullptr;
  char* out_text_ = nullptr;
  size_t out_size_ = 0;
};
