// Test helpers: a scratch directory under /tmp removed afterwards, small file
// readers and writers, and a log captured into the scratch directory.
#pragma once

#include <ftw.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "fileops/file_ops.h"
#include "foundation/logger.h"

inline std::string read_text(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

inline void write_text(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

// Each test gets a fresh directory, a log at debug level inside it, and step
// callbacks that record "done|failed <source> <destination or -> <is_file>".
class scratch_test : public ::testing::Test {
 protected:
  void SetUp() override {
    char tmpl[] = "/tmp/fileops_test.XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    dir_ = tmpl;
    log_ = log_create(3);
    log_set_current(log_);
    ASSERT_EQ(log_open(log_, (dir_ + "/test.log").c_str()), 1);
    log_flush_every(log_, 1);
    steps().clear();
    file_set_callbacks(record_done, record_failed);
  }
  void TearDown() override {
    file_set_callbacks(nullptr, nullptr);
    log_set_current(nullptr);
    log_free(&log_);
    nftw(dir_.c_str(), remove_one, 16, FTW_DEPTH | FTW_PHYS);
  }
  std::string path(const std::string& name) const { return dir_ + "/" + name; }
  std::string log_text() const { return read_text(dir_ + "/test.log"); }

  // Steps recorded, with the scratch directory's path cut off.
  static std::vector<std::string>& steps() {
    static std::vector<std::string> recorded;
    return recorded;
  }

  std::string dir_;
  logger* log_ = nullptr;

 private:
  static void record(const char* kind, const char* source, const char* destination, int is_file) {
    auto relative = [](const char* p) {
      std::string text = p != nullptr ? p : "-";
      size_t cut = text.find("/fileops_test.");
      return cut == std::string::npos ? text : text.substr(text.find('/', cut + 1) + 1);
    };
    steps().push_back(std::string(kind) + " " + relative(source) + " " + relative(destination) +
                      " " + std::to_string(is_file));
  }
  static void record_done(const char* s, const char* d, int f) { record("done", s, d, f); }
  static void record_failed(const char* s, const char* d, int f) { record("failed", s, d, f); }
  static int remove_one(const char* path, const struct stat*, int, FTW*) {
    remove(path);
    return 0;
  }
};
