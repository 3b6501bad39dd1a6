// The question tests' fixture: the scratch fixture with a settings store
// holding the settings below, and a question set loaded from lines.
#pragma once

#include <string>

#include "foundation/test_scratch.h"
#include "questions/question_file.h"
#include "questions/question_walk.h"
#include "settings/ini_store.h"

class question_test : public scratch_test {
 protected:
  void SetUp() override {
    scratch_test::SetUp();
    static const ini_setting_def defs[] = {
        {"v", "old", 0},      {"t", "true", 0},   {"f", "false", 0}, {"m", "maybe", 0},
        {"my", "mysql", 0},   {"MY", "MySQL", 0}, {"kind", "pg", 0}, {"pg", "pg", 0},
        {"k", "kind", 0},     {"a", "false", 0},  {"b", "false", 0}, {"c", "false", 0},
        {"d", "true", 0},     {"q", "q", 0},      {"back", "B", 0},  {"x", nullptr, 0},
        {nullptr, nullptr, 0}};
    store_ = ini_create();
    ini_setup(store_, defs, nullptr, 1);
  }
  void TearDown() override {
    question_set_unattended(0);
    question_set_free(&set_);
    ini_destroy(&store_);
    scratch_test::TearDown();
  }
  // A fresh set holding lines as the section of a question file.
  void load_set(const std::string& lines) {
    question_set_free(&set_);
    set_ = question_set_create(store_);
    EXPECT_EQ(question_load(set_, write_file("test.q", "[s]\n" + lines).c_str(), "s"), 1);
  }

  ini_store* store_ = nullptr;
  question_set* set_ = nullptr;
};
