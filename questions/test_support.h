// Shared pieces of the question tests: a scratch directory with a log, a
// settings store, a question set loaded from lines, and a console whose input
// is a script and whose output is kept.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "foundation/console.h"
#include "foundation/test_scratch.h"
#include "questions/question_file.h"
#include "settings/ini_store.h"

class question_test : public scratch_test {
 protected:
  void TearDown() override {
    question_set_free(&set_);
    close_console();
    ini_destroy(&store_);
    scratch_test::TearDown();
  }

  // Writes a file into the scratch directory and returns its path.
  std::string write_file(const std::string& name, const std::string& text) const {
    scratch_test::write_file(name, text);
    return path(name);
  }

  // Whether message was logged as a whole line.
  bool logged(const std::string& message) const {
    return scratch_test::logged(": " + message + "\n");
  }

  void make_store(const ini_setting_def* defs) {
    store_ = ini_create();
    ini_setup(store_, defs, nullptr, 1);
  }

  // A fresh set holding lines as the section of a question file.
  question_set* load_set(const std::string& lines) {
    question_set_free(&set_);
    set_ = question_set_create(store_);
    EXPECT_EQ(question_load(set_, write_file("test.q", "[s]\n" + lines).c_str(), "s"), 1);
    return set_;
  }

  // The operator types script; what is printed is kept for printed().
  void console(const std::string& script) {
    close_console();
    in_ = tmpfile();
    fputs(script.c_str(), in_);
    rewind(in_);
    out_ = open_memstream(&out_text_, &out_size_);
    console_set_streams(in_, out_);
  }

  std::string printed() {
    fflush(out_);
    return std::string(out_text_, out_size_);
  }

  ini_store* store_ = nullptr;
  question_set* set_ = nullptr;

 private:
  void close_console() {
    console_set_streams(nullptr, nullptr);
    if (in_ != nullptr) fclose(in_);
    if (out_ != nullptr) fclose(out_);
    free(out_text_);
    in_ = out_ = nullptr;
    out_text_ = nullptr;
  }

  FILE* in_ = nullptr;
  FILE* out_ = nullptr;
  char* out_text_ = nullptr;
  size_t out_size_ = 0;
};
