#include "environment/runtime_settings.h"

#include <unistd.h>

#include <chrono>
#include <cstring>
#include <string>

#include "settings/settings_test_support.h"

namespace {

class runtime_settings_test : public scratch_test {
 protected:
  int load(std::string_view text) {
    write_file("install.dat", text);
    return runtime_settings_load(store_, path("install.dat").c_str());
  }
  void TearDown() override {
    runtime_settings_free();
    ini_destroy(&store_);
    scratch_test::TearDown();
  }
  ini_store* store_ = ini_create();
};

std::string cwd() {
  char buffer[1000];
  return getcwd(buffer, sizeof buffer) != nullptr ? buffer : "";
}

TEST_F(runtime_settings_test, AnEmptyFileGivesTheFourBuiltIns) {
  ASSERT_EQ(load(""), 1);
  char host[1000];
  local_host_name(host, sizeof host);
  ASSERT_EQ(ini_count(store_), 4);
  const struct {
    const char* name;
    std::string value;
    unsigned flags;
  } rows[] = {{"host", host, INI_FIXED | INI_REPLACEABLE},
              {"system_dir", "/etc", INI_FIXED | INI_REPLACEABLE},
              {"current_dir", cwd(), INI_FIXED | INI_REPLACEABLE},
              {"action", "install", 0}};
  for (int i = 0; i < 4; ++i) {
    EXPECT_STREQ(ini_name_at(store_, i), rows[i].name);
    EXPECT_EQ(ini_get_value(store_, i), rows[i].value);
    EXPECT_EQ(ini_flags_at(store_, i), rows[i].flags);
    EXPECT_TRUE(logged(std::string(rows[i].name) + "=" + rows[i].value));
  }
  EXPECT_EQ(ini_set(store_, "current_dir", "/elsewhere"), -1);
  EXPECT_EQ(ini_set(store_, "action", "upgrade"), 1);
  EXPECT_STREQ(ini_get(store_, "action"), "upgrade");
  ASSERT_NE(runtime_settings_defs(), nullptr);
  EXPECT_EQ(runtime_settings_defs()[4].name, nullptr);
}

TEST_F(runtime_settings_test, FileRowsFollowInOrderAndReferencesResolve) {
  ASSERT_EQ(load("# product settings\n"
                 "\n"
                 "web_root  /var/www/html  \r\n"
                 "app_dir $(web_root)/app\n"
                 "log_dir $(Current_Dir)/logs and more\n"
                 "next_step $(action)done\n"
                 "keep $(nobody)\n"
                 "lonely\n"
                 "host elsewhere\n"
                 "action upgrade\n"),
            1);
  ASSERT_EQ(ini_count(store_), 12);
  EXPECT_STREQ(ini_get(store_, "app_dir"), "/var/www/html/app");
  EXPECT_EQ(std::string(ini_get(store_, "log_dir")), cwd() + "/logs and more");
  EXPECT_STREQ(ini_get(store_, "next_step"), "done");
  EXPECT_STREQ(ini_get(store_, "keep"), "$(nobody)");
  EXPECT_EQ(ini_get(store_, "lonely"), nullptr);
  EXPECT_EQ(ini_index_of(store_, "lonely"), 9);
  EXPECT_EQ(ini_flags_of(store_, "lonely"), INI_REPLACEABLE);
  EXPECT_STREQ(ini_get(store_, "action"), "install");  // the built-in wins
  EXPECT_STREQ(ini_get_value(store_, 10), "elsewhere");
  EXPECT_STREQ(ini_get_value(store_, 11), "upgrade");
  EXPECT_TRUE(logged("Adding 'web_root'='/var/www/html'"));
  EXPECT_TRUE(logged("Adding 'lonely'=''"));
  EXPECT_TRUE(logged("Adding 'app_dir'='$(web_root)/app'"));

  const ini_setting_def* defs = runtime_settings_defs();
  ASSERT_NE(defs, nullptr);
  EXPECT_STREQ(defs[4].name, "web_root");
  EXPECT_EQ(defs[9].value, nullptr);
  EXPECT_EQ(defs[12].name, nullptr);
}

TEST_F(runtime_settings_test, SelfReferencesLoadInBoundedTime) {
  const auto start = std::chrono::steady_clock::now();
  ASSERT_EQ(load("loop $(loop)\nping $(pong)\npong $(ping)\nopen $(host\n"), 1);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  EXPECT_STREQ(ini_get(store_, "loop"), "$(loop)");
  EXPECT_STREQ(ini_get(store_, "open"), "$(host");
  EXPECT_TRUE(logged("References in setting 'loop' never resolve"));
}

TEST_F(runtime_settings_test, UnreadableFilesAndNullArgumentsLoadNothing) {
  EXPECT_EQ(runtime_settings_load(store_, path("missing.dat").c_str()), 0);
  EXPECT_TRUE(logged("Error opening '" + path("missing.dat") +
                     "' for read, No such file or directory"));
  EXPECT_EQ(ini_count(store_), 0);
  EXPECT_EQ(runtime_settings_defs(), nullptr);
  EXPECT_EQ(runtime_settings_load(nullptr, path("missing.dat").c_str()), 0);
  EXPECT_EQ(runtime_settings_load(store_, nullptr), 0);
  EXPECT_EQ(runtime_settings_load(store_, dir_.c_str()), 1);  // a directory reads as empty
  EXPECT_EQ(ini_count(store_), 4);
  runtime_settings_free();
  runtime_settings_free();
  EXPECT_EQ(runtime_settings_defs(), nullptr);
}

TEST(local_host_name, FillsAndTerminatesTheBuffer) {
  char full[1000];
  ASSERT_EQ(local_host_name(full, sizeof full), full);
  EXPECT_GT(strlen(full), 0u);
  char tiny[2] = {'#', '#'};
  local_host_name(tiny, sizeof tiny);
  EXPECT_EQ(tiny[1], '\0');
  EXPECT_EQ(local_host_name(nullptr, 10), nullptr);
  EXPECT_EQ(local_host_name(full, 0), nullptr);
}

}  // namespace
