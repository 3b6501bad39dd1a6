// Test helpers for the file operations: the scratch fixture with step
// callbacks that record what they are told, and small file readers and
// writers taking full paths.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "fileops/file_ops.h"
#include "foundation/test_scratch.h"

inline std::string read_text(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

inline void write_text(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

class file_step_test : public scratch_test {
 protected:
  void SetUp() override {
    scratch_test::SetUp();
    root() = dir_ + "/";
    steps().clear();
    file_set_callbacks(record_done, record_failed);
  }
  void TearDown() override {
    file_set_callbacks(nullptr, nullptr);
    scratch_test::TearDown();
  }
  std::string log_text() const { return read_file("test.log"); }

  // "done|failed <source> <destination or -> <is_file>", paths relative to
  // the scratch directory.
  static std::vector<std::string>& steps() {
    static std::vector<std::string> recorded;
    return recorded;
  }

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
};
