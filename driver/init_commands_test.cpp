#include "driver/init_commands.h"

#include <string>
#include <vector>

#include "environment/httpd_conf.h"
#include "foundation/test_scratch.h"

namespace {

class InitCommandsTest : public scratch_test {
 protected:
  void SetUp() override {
    scratch_test::SetUp();
    std::vector<std::string> candidates{path("httpd.conf")};
    httpd_conf_set_candidates(&candidates);
    httpd_conf_reset_cache();
  }
  void TearDown() override {
    ini_destroy(&store_);
    httpd_conf_set_candidates(nullptr);
    httpd_conf_reset_cache();
    scratch_test::TearDown();
  }

  // Runs the init lines against a fresh store; returns what they printed.
  std::string run(const std::string& lines, const char* action = "install") {
    ini_destroy(&store_);
    store_ = ini_create();
    const ini_setting_def defs[] = {{"action", action, 0},
                                    {"root", dir_.c_str(), 0},
                                    {"flag", "false", 0},
                                    {nullptr, nullptr, 0}};
    ini_setup(store_, defs, nullptr, 1);
    write_file("install.int", lines);
    init_list* list = init_list_create();
    EXPECT_EQ(init_load(list, path("install.int").c_str()), 1);
    testing::internal::CaptureStdout();
    run_init_commands(store_, list);
    init_list_free(&list);
    return testing::internal::GetCapturedStdout();
  }
  std::string get(const char* name) {
    const char* value = ini_get(store_, name);
    return value == nullptr ? "(none)" : value;
  }
  ini_store* store_ = nullptr;
};

TEST_F(InitCommandsTest, Conditions) {
  const struct {
    const char* action;
    const char* lines;
    const char* result;
  } cases[] = {
      {"upgrade", "Copy result ran action upgrade\n", "ran"},
      {"install", "Copy result ran action upgrade\n", "(none)"},
      {"upgrade", "Copy result ran action Upgrade\n", "(none)"},
      {"install", "Copy result ran word word\n", "ran"},             // no setting: the word itself
      {"install", "Copy result ran - true\n", "(none)"},             // nothing to compare with
      {"install", "Copy a b action\nCopy result ran - -\n", "ran"},  // carried name only
  };
  for (const auto& c : cases) {
    run(c.lines, c.action);
    EXPECT_EQ(get("result"), c.result) << c.action << ": " << c.lines;
  }
}

TEST_F(InitCommandsTest, WebServerCommandsSetValueOrFailureFlag) {
  write_file("httpd.conf", "User root\nGroup root\nDocumentRoot \"/srv/www\"\n");
  std::string printed =
      run("HTTP_User user flag - -\nHTTP_Group group flag - -\nHTTP_Root root_dir flag - -\n"
          "HTTP_Scripts cgi_dir cgi_failed - -\nCopy after yes - -\n");
  EXPECT_EQ(get("user") + get("group") + get("root_dir"), "rootroot/srv/www");
  EXPECT_EQ(get("flag"), "false");
  EXPECT_EQ(get("cgi_dir") + get("cgi_failed"), "(none)true");
  EXPECT_EQ(get("after"), "yes");
  EXPECT_EQ(printed, "ERROR: Could not find, ScriptAlias\n");
}

}  // namespace
