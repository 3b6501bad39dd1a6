// Test support for copy scripts: the scratch fixture with a settings store
// made for the test, the file steps recorded (fileops/file_test_support.h),
// and copy lines parsed and run. In the lines and script texts given, "@"
// stands for the scratch directory.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "copyscript/copy_run.h"
#include "copyscript/copy_script.h"
#include "fileops/file_test_support.h"
#include "foundation/test_scratch.h"
#include "settings/ini_store.h"

using unique_script =
    std::unique_ptr<copy_script, decltype([](copy_script* script) { copy_script_free(&script); })>;

class copy_test : public scratch_test {
 protected:
  void SetUp() override {
    scratch_test::SetUp();
    static const ini_setting_def defs[] = {{"flag", "true", 0}, {nullptr, nullptr, 0}};
    ini_setup(store_, defs, nullptr, 1);
    record_file_steps();
  }
  void TearDown() override {
    ini_destroy(&store_);
    scratch_test::TearDown();
  }
  std::string here(std::string_view text) const {
    std::string out;
    for (char c : text) out += c == '@' ? dir_ : std::string(1, c);
    return out;
  }
  // Parses one line and runs it; what it copies adds to bytes_.
  int run(std::string_view line) {
    unique_script script(copy_script_create(store_));
    EXPECT_EQ(copy_script_parse_line(script.get(), here(line).c_str()), 1) << line;
    return copy_line_run(script.get(), 0, &bytes_);
  }
  ini_store* store_ = ini_create();
  unsigned bytes_ = 0;
};
