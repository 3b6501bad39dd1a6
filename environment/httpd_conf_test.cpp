#include "environment/httpd_conf.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "foundation/logger.h"

namespace {

// What one request yields: the value, or "ERR:" and the message.
struct Outcome {
  std::string text;
  bool operator==(const Outcome&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Outcome& o) { return out << o.text; }

enum Want { kUser, kGroup, kRoot, kScripts };

Outcome request(Want want) {
  char value[1000] = "";
  char error[1000] = "";
  int ok = httpd_conf_lookup(want == kUser ? value : nullptr, want == kGroup ? value : nullptr,
                             want == kRoot ? value : nullptr,
                             want == kScripts ? value : nullptr, error);
  return {ok ? std::string(value) : "ERR:" + std::string(error)};
}

Outcome failure(const std::string& message) { return {"ERR:" + message}; }

std::string read_text(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

class HttpdConfTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/httpd_conf_test.XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir_ = pattern;
    candidates_ = {dir_ + "/first.conf", dir_ + "/second.conf", dir_ + "/third.conf"};
    httpd_conf_set_candidates(&candidates_);
    httpd_conf_reset_cache();
  }
  void TearDown() override {
    httpd_conf_set_candidates(nullptr);
    httpd_conf_reset_cache();
    std::error_code ignored;
    std::filesystem::remove_all(dir_, ignored);
  }

  void put(int index, const std::string& text) {
    std::ofstream(candidates_[index], std::ios::binary) << text;
  }
  void drop(int index) { std::filesystem::remove(candidates_[index]); }

  std::string dir_;
  std::vector<std::string> candidates_;
};

struct DirectiveCase {
  const char* conf;
  Want want;
  Outcome expected;
};

TEST_F(HttpdConfTest, DirectiveLines) {
  const DirectiveCase cases[] = {
      {"user  root\n", kUser, {"root"}},
      {"\tUSER\troot\r\n", kUser, {"root"}},
      {"  # User nobody\nUser root # runs as root\n", kUser, {"root"}},
      {"User\nUserDir public_html\n", kUser, failure("Could not find, Group, User, DocumentRoot, ScriptAlias")},
      {"User no_such_user_zq\n", kUser, failure("User 'no_such_user_zq' has bad uid '-1'")},
      {"group root\n", kGroup, {"root"}},
      {"Group no_such_group_zq\nGroup root\n", kGroup,
       failure("Group 'no_such_group_zq' has bad uid '-1'")},
      {"ScriptAlias /cgi-bin/ \"/usr/local/www/cgi-bin/\"\n", kScripts, {"/usr/local/www/cgi-bin/"}},
      {"ScriptAlias /icons/ /usr/share/icons/\n", kScripts, failure("Could not find, Group, User, DocumentRoot, ScriptAlias")},
      {"scriptalias /my-cgi-bin/ /srv/cgi\n", kScripts, {"/srv/cgi"}},
      {"ScriptAlias /cgi-bin /srv/a\nScriptAlias /CGI-BIN/ /srv/b\n", kScripts, {"/srv/a"}},
      {"ScriptAlias /cgi-bin/\nScriptAliasMatch ^/cgi-bin/(.*) /srv/$1\n", kScripts,
       failure("Could not find, Group, User, DocumentRoot, ScriptAlias")},
      {"DocumentRoot \"/var/www\"\n", kRoot, {"/var/www"}},
      {"DocumentRoot \"/var/www\n", kRoot, {"/var/ww"}},
      {"DocumentRoot \"/my docs\"\n", kRoot, {"/m"}},
      {"DocumentRoot \"\n", kRoot, {""}},
      {"DocumentRoot /var/www/\n", kRoot, {"/var/www/"}},
      {"DocumentRoot /a\n<VirtualHost *:80>\n  documentroot /b\n</VirtualHost>\n", kRoot, {"/b"}},
  };
  for (const DirectiveCase& c : cases) {
    SCOPED_TRACE(c.conf);
    httpd_conf_reset_cache();
    put(0, c.conf);
    EXPECT_EQ(request(c.want), c.expected);
  }
}

TEST_F(HttpdConfTest, MissingValuesAreNamedInFixedOrder) {
  put(0, "User root\nGroup root\nDocumentRoot /srv/www\n");
  EXPECT_EQ(request(kRoot), Outcome{"/srv/www"});
  EXPECT_EQ(request(kScripts), failure("Could not find, ScriptAlias"));

  httpd_conf_reset_cache();
  put(0, "DocumentRoot /srv/www\n");
  char user[1000], group[1000], error[1000];
  EXPECT_EQ(httpd_conf_lookup(user, group, nullptr, nullptr, error), 0);
  EXPECT_STREQ(error, "Could not find, Group, User, ScriptAlias");
  EXPECT_EQ(httpd_conf_lookup(user, nullptr, nullptr, nullptr, nullptr), 0);
}

TEST_F(HttpdConfTest, OnlyTheFirstCandidateThatOpensIsRead) {
  logger* log = log_create(3);
  std::string log_path = dir_ + "/install.log";
  ASSERT_EQ(log_open(log, log_path.c_str()), 1);
  log_set_current(log);
  put(1, "User root\n");
  put(2, "User root\nGroup root\n");
  EXPECT_EQ(request(kGroup), failure("Could not find, Group, DocumentRoot, ScriptAlias"));
  log_set_current(nullptr);
  log_free(&log);

  std::string text = read_text(log_path);
  size_t first = text.find("Is Httpd conf?[" + candidates_[0] + "]");
  size_t second = text.find("Is Httpd conf?[" + candidates_[1] + "]");
  size_t chosen = text.find("Httpd conf is [" + candidates_[1] + "]");
  EXPECT_LT(first, second);
  EXPECT_LT(second, chosen);
  EXPECT_NE(chosen, std::string::npos) << text;
  EXPECT_EQ(text.find(candidates_[2]), std::string::npos) << text;
  EXPECT_NE(text.find("Found user [root]"), std::string::npos) << text;
}

TEST_F(HttpdConfTest, NoCandidateOpens) {
  EXPECT_EQ(request(kUser), failure("Cannot find httpd.conf file"));
  std::vector<std::string> none;
  httpd_conf_set_candidates(&none);
  EXPECT_EQ(request(kRoot), failure("Cannot find httpd.conf file"));
  // A request for nothing needs no file.
  EXPECT_EQ(httpd_conf_lookup(nullptr, nullptr, nullptr, nullptr, nullptr), 1);
}

TEST_F(HttpdConfTest, CacheAnswersRepeatedRequests) {
  put(0, "User root\nDocumentRoot /d\nUser no_such_user_zq\n");
  // The bad user stops the scan, but what came before stays cached.
  EXPECT_EQ(request(kUser), failure("User 'no_such_user_zq' has bad uid '-1'"));
  drop(0);
  EXPECT_EQ(request(kRoot), Outcome{"/d"});
  EXPECT_EQ(request(kUser), Outcome{"root"});
  // A value never found sends the next request back to the files.
  EXPECT_EQ(request(kGroup), failure("Cannot find httpd.conf file"));
  put(1, "Group root\nDocumentRoot /e\n");
  EXPECT_EQ(request(kGroup), Outcome{"root"});
  EXPECT_EQ(request(kRoot), Outcome{"/e"});
}

TEST_F(HttpdConfTest, ScanStopsOnceAllFourAreKnown) {
  put(0, "User root\nGroup root\nDocumentRoot /d\nScriptAlias /cgi-bin/ /c\n"
         "User no_such_user_zq\n");
  char user[1000], group[1000], root[1000], scripts[1000], error[1000] = "";
  EXPECT_EQ(httpd_conf_lookup(user, group, root, scripts, error), 1) << error;
  EXPECT_STREQ(user, "root");
  EXPECT_STREQ(group, "root");
  EXPECT_STREQ(root, "/d");
  EXPECT_STREQ(scripts, "/c");
}

TEST_F(HttpdConfTest, LongLinesAreReadIn999CharacterPieces) {
  // The directive after character 999 of a comment line is a line of its own.
  put(0, "#" + std::string(998, 'x') + " User root\n");
  EXPECT_EQ(request(kUser), Outcome{"root"});

  httpd_conf_reset_cache();
  std::string head = "DocumentRoot /";
  put(0, head + std::string(1500, 'r') + "\n");
  EXPECT_EQ(request(kRoot), Outcome{"/" + std::string(999 - head.size(), 'r')});
}

TEST_F(HttpdConfTest, BinaryFileIsNoConfiguration) {
  std::string junk;
  for (int i = 0; i < 20000; ++i) junk += static_cast<char>((i * 131 + 7) % 256);
  put(0, junk);
  EXPECT_EQ(request(kScripts), failure("Could not find, Group, User, DocumentRoot, ScriptAlias"));
}

struct SampleCase {
  const char* file;
  Outcome user, group, root, scripts;
};

// Configurations as operators have them, in tests/data/httpd.
TEST_F(HttpdConfTest, RealWorldSamples) {
  std::filesystem::path data =
      std::filesystem::path(__FILE__).parent_path().parent_path() / "tests/data/httpd";
  const SampleCase cases[] = {
      {"upstream-default.conf", {"daemon"}, {"daemon"}, {"/usr/local/apache2/htdocs"},
       {"/usr/local/apache2/cgi-bin/"}},
      {"vhosts-crlf.conf", {"www-data"}, {"www-data"}, {"/srv/www/vhosts/shop"},
       {"/srv/www/vhosts/shop/cgi-bin/"}},
      {"no-cgi.conf", {"nobody"}, {"nogroup"}, {"/var/www/html"},
       failure("Could not find, ScriptAlias")},
      // The group comes right after the user, so every scan stops there.
      {"legacy-group-number.conf", failure("Group '#-1' has bad uid '-1'"),
       failure("Group '#-1' has bad uid '-1'"), failure("Group '#-1' has bad uid '-1'"),
       failure("Group '#-1' has bad uid '-1'")},
      {"distro-envvars.conf", failure("User '${APACHE_RUN_USER}' has bad uid '-1'"),
       failure("User '${APACHE_RUN_USER}' has bad uid '-1'"),
       failure("User '${APACHE_RUN_USER}' has bad uid '-1'"),
       failure("User '${APACHE_RUN_USER}' has bad uid '-1'")},
  };
  for (const SampleCase& c : cases) {
    SCOPED_TRACE(c.file);
    std::string path = (data / c.file).string();
    ASSERT_TRUE(std::filesystem::exists(path));
    std::vector<std::string> only{path};
    httpd_conf_set_candidates(&only);
    httpd_conf_reset_cache();
    EXPECT_EQ(request(kUser), c.user);
    EXPECT_EQ(request(kGroup), c.group);
    EXPECT_EQ(request(kRoot), c.root);
    EXPECT_EQ(request(kScripts), c.scripts);
  }
}

}  // namespace
