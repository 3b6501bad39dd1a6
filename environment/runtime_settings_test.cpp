#include "environment/runtime_settings.h"

#include <string>

#include "foundation/test_scratch.h"

namespace {

using runtime_settings_test = scratch_test;

// Each row as "name=value flags", "~" for no value, F for fixed and R for
// replaceable.
TEST_F(runtime_settings_test, BuiltInsComeFirstThenTheFilesRowsInOrder) {
  const std::string file =
      write_file("install.dat",
                 "# settings\n\nweb_root  /var/www/html  \r\napp_dir $(web_root)/app\n"
                 "log_dir $(Current_Dir)/logs\nlonely\naction upgrade\n");
  ini_store* store = ini_create();
  ASSERT_EQ(runtime_settings_load(store, file.c_str()), 1);
  std::string rows;
  for (int i = 0; i < ini_count(store); ++i) {
    const char* value = ini_get_value(store, i);
    rows += std::string(ini_name_at(store, i)) + "=" + (value != nullptr ? value : "~") + " " +
            ((ini_flags_at(store, i) & INI_FIXED) != 0 ? "F" : "") +
            ((ini_flags_at(store, i) & INI_REPLACEABLE) != 0 ? "R" : "") + "\n";
  }
  char host[1000];
  const std::string cwd = std::filesystem::current_path();
  EXPECT_EQ(rows, "host=" + std::string(local_host_name(host, sizeof host)) +
                      " FR\nsystem_dir=/etc FR\ncurrent_dir=" + cwd +
                      " FR\naction=install \nweb_root=/var/www/html R\n"
                      "app_dir=/var/www/html/app R\nlog_dir=" +
                      cwd + "/logs R\nlonely=~ R\naction=upgrade R\n");
  runtime_settings_free();
  ini_destroy(&store);
}

}  // namespace
