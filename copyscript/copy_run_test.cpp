#include "copyscript/copy_run.h"

#include <string>

#include "copyscript/copy_test_support.h"

namespace {

using copy_run_test = copy_test;

// Each row: a line's control fields and whether it runs (1) or is skipped (-1).
TEST_F(copy_run_test, ControlSettingComparesIgnoringCase) {
  const char* settings[][2] = {
      {"on", "yes"}, {"off", "false"}, {"maybe", "maybe"}, {"db", "MySQL"}, {"want", "mysql"}};
  for (const auto& s : settings) ini_set(store_, s[0], s[1]);
  struct row {
    const char* control;
    int result;
  } rows[] = {{"on", 1},        {"off", -1},  {"maybe", -1}, {"db mysql", 1}, {"db want", 1},
              {"db pgsql", -1}, {"unset", 1}, {"- -", 1},    {"on -", -1},    {"off off", 1}};
  for (const auto& r : rows) {
    EXPECT_EQ(run(std::string("Exist @ result ") + r.control), r.result) << r.control;
  }
}

TEST_F(copy_run_test, SingleOperations) {
  ini_set(store_, "greeting", "hello world");
  ini_set(store_, "ok", "no");
  EXPECT_EQ(run("WFile @/w.txt greeting") + run("WFile @/lit.txt literal"), 2);
  EXPECT_EQ(read_file("w.txt") + read_file("lit.txt"), "hello worldliteral");
  EXPECT_EQ(run("RFile @/w.txt greeting"), 1);  // opened for writing: emptied
  EXPECT_EQ(read_file("w.txt"), "");
  EXPECT_STREQ(ini_get(store_, "greeting"), "hello world");
  EXPECT_EQ(run("WFile @/no/w.txt greeting") + run("RFile @/no/r.txt greeting"), 0);
  EXPECT_EQ(logged(here("Error: Failed to write (@/no/w.txt), No such file")), 1);
  EXPECT_EQ(logged(here("Error: Failed to read (@/no/r.txt), No such file")), 1);
  EXPECT_EQ(run("Exist @/gone gone"), 1);
  EXPECT_STREQ(ini_get(store_, "gone"), "false");

  EXPECT_EQ(run("Error unset_setting first text"), 1);
  EXPECT_STREQ(copy_last_error(), "");
  EXPECT_EQ(run("Error ok Disk  full"), 0);
  EXPECT_EQ(run("Error flag other text"), 1);
  EXPECT_STREQ(copy_last_error(), "Disk  full");
  EXPECT_EQ(run("Bogus @/x"), 0);
  EXPECT_EQ(logged("Error: How did we get here!"), 1);
  unique_script one(copy_script_create(store_));
  ASSERT_EQ(copy_script_parse_line(one.get(), here("MkDir @/made").c_str()), 1);
  EXPECT_EQ(copy_line_run(one.get(), 1, nullptr), 0);  // past the last line
  EXPECT_FALSE(exists("made"));
}

}  // namespace
