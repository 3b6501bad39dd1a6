#include "driver/init_commands.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "environment/httpd_conf.h"
#include "foundation/logger.h"

namespace {

std::string read_text(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

class InitCommandsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/init_commands_test.XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir_ = pattern;
    log_ = log_create(3);
    ASSERT_EQ(log_open(log_, (dir_ + "/install.log").c_str()), 1);
    log_set_current(log_);
    std::vector<std::string> candidates{dir_ + "/httpd.conf"};
    httpd_conf_set_candidates(&candidates);
    httpd_conf_reset_cache();
    make_store("install");
  }
  void TearDown() override {
    ini_destroy(&store_);
    httpd_conf_set_candidates(nullptr);
    httpd_conf_reset_cache();
    log_set_current(nullptr);
    log_free(&log_);
    std::error_code ignored;
    std::filesystem::remove_all(dir_, ignored);
  }

  void make_store(const char* action) {
    ini_destroy(&store_);
    store_ = ini_create();
    const ini_setting_def defs[] = {
        {"action", action, 0},  {"root", dir_.c_str(), 0}, {"greeting", "hello\n", 0},
        {"year_format", "%Y", 0}, {"flag", "false", 0},    {nullptr, nullptr, 0},
    };
    ini_setup(store_, defs, nullptr, 1);
  }

  // Loads the init lines and runs them; returns what they printed.
  std::string run(const std::string& lines) {
    std::string path = dir_ + "/install.int";
    std::ofstream(path) << lines;
    init_list* list = init_list_create();
    EXPECT_EQ(init_load(list, path.c_str()), 1);
    testing::internal::CaptureStdout();
    run_init_commands(store_, list);
    init_list_free(&list);
    return testing::internal::GetCapturedStdout();
  }

  std::string get(const char* name) {
    const char* value = ini_get(store_, name);
    return value == nullptr ? "(none)" : value;
  }
  std::string log_text() { return read_text(dir_ + "/install.log"); }
  void write(const std::string& name, const std::string& text) {
    std::ofstream(dir_ + "/" + name, std::ios::binary) << text;
  }

  std::string dir_;
  logger* log_ = nullptr;
  ini_store* store_ = nullptr;
};

struct ConditionCase {
  const char* action;
  const char* condition;  // the fourth and fifth words
  bool runs;
};

TEST_F(InitCommandsTest, Conditions) {
  const ConditionCase cases[] = {
      {"install", "- -", true},
      {"upgrade", "action upgrade", true},
      {"install", "action upgrade", false},
      {"upgrade", "action Upgrade", false},
      {"install", "literal literal", true},  // no such setting: the word itself
      {"install", "literal other", false},
      {"install", "- true", false},  // nothing to compare against: skipped
      {"install", "- no", false},
  };
  for (const ConditionCase& c : cases) {
    SCOPED_TRACE(std::string(c.action) + " / " + c.condition);
    make_store(c.action);
    run(std::string("Copy result ran ") + c.condition + "\n");
    EXPECT_EQ(get("result"), c.runs ? "ran" : "(none)");
  }
  // A condition word carried over from a short line, with no expected value,
  // does not make a condition.
  make_store("install");
  run("Copy a b action\nCopy result ran - -\n");
  EXPECT_EQ(get("result"), "ran");
}

TEST_F(InitCommandsTest, CopyTakesSettingOrLiteral) {
  run("Copy a root - -\nCopy b no_such_setting - -\n");
  EXPECT_EQ(get("a"), dir_);
  EXPECT_EQ(get("b"), "no_such_setting");
}

TEST_F(InitCommandsTest, ExistTestsTheExpandedPath) {
  std::filesystem::create_directory(dir_ + "/x");
  write("f", "");
  run("Exist $(root)/x dir_found - -\nExist $(root)/f file_found - -\n"
      "Exist $(root)/missing missing_found - -\n");
  EXPECT_EQ(get("dir_found"), "true");
  EXPECT_EQ(get("file_found"), "true");
  EXPECT_EQ(get("missing_found"), "false");
}

TEST_F(InitCommandsTest, WriteThenReadFiles) {
  write("old.txt", "previous contents that are longer");
  run("WFile $(root)/old.txt greeting - -\nWFile $(root)/lit.txt just_words - -\n"
      "RFile $(root)/old.txt copied - -\n");
  EXPECT_EQ(read_text(dir_ + "/old.txt"), "hello\n");
  EXPECT_EQ(read_text(dir_ + "/lit.txt"), "just_words");
  EXPECT_EQ(get("copied"), "hello\n");

  // Long lines arrive whole, line ends kept.
  std::string long_line(2500, 'z');
  write("long.txt", "one\n" + long_line + "\nthree");
  run("RFile $(root)/long.txt long - -\n");
  EXPECT_EQ(get("long"), "one\n" + long_line + "\nthree");
}

TEST_F(InitCommandsTest, FileFailuresAreLoggedAndTheRunGoesOn) {
  write("empty.txt", "");
  run("RFile $(root)/empty.txt flag - -\n"
      "RFile $(root)/missing.txt flag - -\n"
      "WFile $(root)/no/dir/out.txt greeting - -\n"
      "Copy after yes - -\n");
  EXPECT_EQ(get("flag"), "false");  // an empty file changes nothing
  EXPECT_EQ(get("after"), "yes");
  std::string log = log_text();
  EXPECT_NE(log.find("Failed to read (" + dir_ + "/missing.txt), No such file or directory"),
            std::string::npos) << log;
  EXPECT_NE(log.find("Failed to write (" + dir_ + "/no/dir/out.txt), No such file or directory"),
            std::string::npos) << log;
}

TEST_F(InitCommandsTest, TimeDateFormatsTheLocalTime) {
  std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  run("TimeDate year_format year - -\nTimeDate no_format stamp - -\n");
  EXPECT_EQ(get("year"), std::to_string(local.tm_year + 1900));
  EXPECT_EQ(get("stamp"), "(none)");
  EXPECT_NE(log_text().find("TimeDate 'no_format' is NULL"), std::string::npos);
}

TEST_F(InitCommandsTest, WebServerCommands) {
  write("httpd.conf", "User root\nGroup root\nDocumentRoot \"/srv/www\"\n");
  std::string printed =
      run("HTTP_User web_user user_failed - -\nHTTP_Group web_group group_failed - -\n"
          "HTTP_Root web_root flag - -\nHTTP_Scripts cgi_dir cgi_failed - -\n"
          "Copy after yes - -\n");
  EXPECT_EQ(get("web_user"), "root");
  EXPECT_EQ(get("web_group"), "root");
  EXPECT_EQ(get("web_root"), "/srv/www");
  EXPECT_EQ(get("flag"), "false");
  EXPECT_EQ(get("user_failed"), "(none)");
  EXPECT_EQ(get("cgi_dir"), "(none)");
  EXPECT_EQ(get("cgi_failed"), "true");
  EXPECT_EQ(get("after"), "yes");
  EXPECT_EQ(printed, "ERROR: Could not find, ScriptAlias\n");
}

TEST_F(InitCommandsTest, WebServerFailureWithoutConfiguration) {
  std::string printed = run("HTTP_Root web_root flag - -\n");
  EXPECT_EQ(printed, "ERROR: Cannot find httpd.conf file\n");
  EXPECT_EQ(get("flag"), "true");
  EXPECT_EQ(get("web_root"), "(none)");
}

TEST_F(InitCommandsTest, UnknownCommandsDoNothing) {
  std::string printed = run("copy a root - -\nExist\n");
  EXPECT_EQ(printed, "");
  EXPECT_EQ(get("a"), "(none)");
  run_init_commands(nullptr, nullptr);
  run_init_commands(store_, nullptr);
}

}  // namespace
