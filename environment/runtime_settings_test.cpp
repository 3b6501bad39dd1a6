#include "environment/runtime_settings.h"

#include <unistd.h>

#include <string>

#include "foundation/test_scratch.h"

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

TEST_F(runtime_settings_test, BuiltInsComeFirstThenTheFilesRowsInOrder) {
  ASSERT_EQ(load("# product settings\n\n"
                 "web_root  /var/www/html  \r\n"
                 "app_dir $(web_root)/app\n"
                 "log_dir $(Current_Dir)/logs and more\n"
                 "next_step $(action)done\n"
                 "keep $(nobody)\n"
                 "lonely\n"
                 "action upgrade\n"),
            1);
  char host[1000];
  local_host_name(host, sizeof host);
  const struct {
    const char* name;
    std::string value;
    unsigned flags;
  } rows[] = {{"host", host, INI_FIXED | INI_REPLACEABLE},
              {"system_dir", "/etc", INI_FIXED | INI_REPLACEABLE},
              {"current_dir", cwd(), INI_FIXED | INI_REPLACEABLE},
              {"action", "install", 0},
              {"web_root", "/var/www/html", INI_REPLACEABLE},
              {"app_dir", "/var/www/html/app", INI_REPLACEABLE},
              {"log_dir", cwd() + "/logs and more", INI_REPLACEABLE},
              {"next_step", "done", INI_REPLACEABLE},
              {"keep", "$(nobody)", INI_REPLACEABLE},
              {"lonely", "(none)", INI_REPLACEABLE},
              {"action", "upgrade", INI_REPLACEABLE}};
  ASSERT_EQ(ini_count(store_), 11);
  for (int i = 0; i < 11; ++i) {
    const char* value = ini_get_value(store_, i);
    EXPECT_STREQ(ini_name_at(store_, i), rows[i].name);
    EXPECT_EQ(value != nullptr ? value : "(none)", rows[i].value) << i;
    EXPECT_EQ(ini_flags_at(store_, i), rows[i].flags) << i;
  }
  EXPECT_TRUE(logged("current_dir=" + cwd()));
  EXPECT_TRUE(logged("Adding 'lonely'=''"));
  EXPECT_STREQ(ini_get(store_, "action"), "install");  // the built-in wins
  EXPECT_EQ(ini_set(store_, "current_dir", "/elsewhere"), -1);
  EXPECT_EQ(runtime_settings_defs()[9].value, nullptr);
  EXPECT_EQ(runtime_settings_defs()[11].name, nullptr);
}

TEST_F(runtime_settings_test, UnreadableFilesAndNullArgumentsLoadNothing) {
  EXPECT_EQ(runtime_settings_load(store_, path("missing.dat").c_str()), 0);
  EXPECT_TRUE(
      logged("Error opening '" + path("missing.dat") + "' for read, No such file or directory"));
  EXPECT_EQ(ini_count(store_), 0);
  EXPECT_EQ(runtime_settings_defs(), nullptr);
  EXPECT_EQ(runtime_settings_load(store_, nullptr), 0);
  runtime_settings_free();
}

TEST(local_host_name, FillsAndTerminatesTheBuffer) {
  char tiny[2] = {'#', '#'};
  local_host_name(tiny, sizeof tiny);
  EXPECT_EQ(tiny[1], '\0');
  EXPECT_EQ(local_host_name(tiny, 0), nullptr);
}

}  // namespace
