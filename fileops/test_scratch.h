// Test helpers: a scratch directory under /tmp (removed afterwards) with a
// debug log inside it, step callbacks that record what they are told, and
// small file readers and writers.
#pragma once

#include <ftw.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "fileops/file_ops.h"
#include "foundation/logger.h"

inline std::string read_text(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

inline void write_text(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

class scratch_test : public ::testing::Test {
 protected:
  void SetUp() override {
    char tmpl[] = "/tmp/fileops_test.XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    dir_ = tmpl;
    root() = dir_ + "/";
    log_ = log_create(3);
    log_set_current(log_);
    ASSERT_EQ(log_open(log_, path("test.log").c_str()), 1);
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
  std::string log_text() const { return read_text(path("test.log")); }

  // "done|failed <source> <destination or -> <is_file>", paths relative to
  // the scratch directory.
  static std::vector<std::string>& steps() {
    static std::vector<std::string> recorded;
    return recorded;
  }

  std::string dir_;
  logger* log_ = nullptr;

 private:
  static std::string& root() {
    static std::string scratch_root;
    return scratch_root;
  }
  static std::string relative(const char* path) {
    std::string text = path != nullptr ? path : "-";
    return text.rfind(root(), 0) == 0 ? text.substr(root().size()) : text;
  }
  static void record(const char* kind, const char* source, const char* destination, int is_file) {
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
