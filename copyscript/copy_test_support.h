// Test support for copy scripts: a scratch directory under /tmp (removed
// afterwards) holding a current debug log, a settings store made for the
// test, and helpers to build trees and read back files and log lines.
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
#include "foundation/test_scratch.h"
#include "settings/ini_store.h"

struct copy_script_deleter {
  void operator()(copy_script* script) const { copy_script_free(&script); }
};
using unique_script = std::unique_ptr<copy_script, copy_script_deleter>;

class copy_test : public scratch_test {
 protected:
  void SetUp() override {
    scratch_test::SetUp();
    static const ini_setting_def defs[] = {{"flag", "true", 0}, {nullptr, nullptr, 0}};
    store_ = ini_create();
    ini_setup(store_, defs, nullptr, 1);
  }
  void TearDown() override {
    ini_destroy(&store_);
    scratch_test::TearDown();
  }

  // Every "@" in text stands for the scratch directory.
  std::string here(std::string_view text) const {
    std::string out;
    for (char c : text) out += c == '@' ? dir_ : std::string(1, c);
    return out;
  }
  // Makes a file (text given) or, for a name ending in "/", a directory.
  void make(std::string_view name, std::string_view text = "") const {
    std::filesystem::path file(path(name));
    std::error_code ignored;
    std::filesystem::create_directories(name.ends_with('/') ? file : file.parent_path(), ignored);
    if (!name.ends_with('/')) std::ofstream(file, std::ios::binary) << text;
  }
  std::string read(std::string_view name) const { return read_file(name); }
  struct stat status(std::string_view name) const {
    struct stat st {};
    lstat(path(name).c_str(), &st);
    return st;
  }
  bool exists(std::string_view name) const { return status(name).st_nlink != 0; }
  // How often text occurs in the log.
  int times_logged(std::string_view text) const {
    std::string log = read("test.log");
    int count = 0;
    for (size_t at = 0; (at = log.find(text, at)) != std::string::npos; ++at) ++count;
    return count;
  }
  // Loads section "install" of a script file holding text ("@" expanded).
  unique_script load(std::string_view text, const char* section = "install") {
    make("test.cpy", here(text));
    unique_script script(copy_script_create(store_));
    EXPECT_EQ(copy_script_load(script.get(), path("test.cpy").c_str(), section), 1);
    return script;
  }

  ini_store* store_ = nullptr;
};
