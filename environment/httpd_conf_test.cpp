#include "environment/httpd_conf.h"

#include <fstream>
#include <string>
#include <vector>

#include "foundation/test_scratch.h"

namespace {

enum Want { kUser, kGroup, kRoot, kScripts };

// The value asked for, or "ERR:" and the message.
std::string request(Want want) {
  char value[1000] = "";
  char error[1000] = "";
  int ok =
      httpd_conf_lookup(want == kUser ? value : nullptr, want == kGroup ? value : nullptr,
                        want == kRoot ? value : nullptr, want == kScripts ? value : nullptr, error);
  return ok ? value : std::string("ERR:") + error;
}

class HttpdConfTest : public scratch_test {
 protected:
  void SetUp() override {
    scratch_test::SetUp();
    candidates_ = {path("first.conf"), path("second.conf")};
    httpd_conf_set_candidates(&candidates_);
    httpd_conf_reset_cache();
  }
  void TearDown() override {
    httpd_conf_set_candidates(nullptr);
    httpd_conf_reset_cache();
    scratch_test::TearDown();
  }
  void put(int index, const std::string& text) {
    std::ofstream(candidates_[index], std::ios::binary) << text;
  }

  std::vector<std::string> candidates_;
};

TEST_F(HttpdConfTest, DirectiveLines) {
  const std::string none = "ERR:Could not find, Group, User, DocumentRoot, ScriptAlias";
  const struct {
    std::string conf;
    Want want;
    std::string expected;
  } cases[] = {
      {"user  root\n", kUser, "root"},
      {"  # User nobody\n\tUSER\troot # a comment\r\n", kUser, "root"},
      {"User\nUserDir public_html\n", kUser, none},
      {"User no_such_user_zq\n", kUser, "ERR:User 'no_such_user_zq' has bad uid '-1'"},
      {"Group no_such_group_zq\nGroup root\n", kGroup,
       "ERR:Group 'no_such_group_zq' has bad uid '-1'"},
      {"ScriptAlias /cgi-bin/ \"/usr/local/www/cgi-bin/\"\n", kScripts, "/usr/local/www/cgi-bin/"},
      {"ScriptAlias /icons/ /usr/share/icons/\nScriptAlias /cgi-bin/\n", kScripts, none},
      {"ScriptAlias /my-cgi-bin/ /a\nScriptAlias /CGI-BIN/ /b\n", kScripts, "/a"},
      {"DocumentRoot \"/var/www\n", kRoot, "/var/ww"},
      {"DocumentRoot \"/my docs\"\n", kRoot, "/m"},
      {"DocumentRoot \"\n", kRoot, ""},
      {"DocumentRoot /a\n<VirtualHost *:80>\n documentroot /b/\n", kRoot, "/b/"},
      {"User root\nGroup root\nDocumentRoot /d\n", kScripts, "ERR:Could not find, ScriptAlias"},
      // A physical line longer than 999 characters is read in pieces.
      {"#" + std::string(998, 'x') + " User root\n", kUser, "root"},
      {"DocumentRoot /" + std::string(1500, 'r'), kRoot, "/" + std::string(985, 'r')},
      // Nothing past the first mebibyte is read.
      {std::string(1 << 20, '#') + "\nUser root\n", kUser, none},
  };
  for (const auto& c : cases) {
    httpd_conf_reset_cache();
    put(0, c.conf);
    EXPECT_EQ(request(c.want), c.expected) << c.conf;
  }
}

TEST_F(HttpdConfTest, CacheAnswersWithoutOpeningAFile) {
  put(0, "User root\nDocumentRoot /d\nUser no_such_user_zq\n");
  EXPECT_EQ(request(kUser), "ERR:User 'no_such_user_zq' has bad uid '-1'");
  std::filesystem::remove(candidates_[0]);
  // What was found before the failure stays.
  EXPECT_EQ(request(kRoot), "/d");
  EXPECT_EQ(request(kUser), "root");
  EXPECT_EQ(request(kGroup), "ERR:Cannot find httpd.conf file");
  EXPECT_EQ(httpd_conf_lookup(nullptr, nullptr, nullptr, nullptr, nullptr), 1);
  // A later scan may overwrite a cached value.
  put(1, "Group root\nDocumentRoot /e\n");
  EXPECT_EQ(request(kGroup), "root");
  EXPECT_EQ(request(kRoot), "/e");
}

// Where the line scan gives no usable answer, the configuration is read again
// as the server reads it; where it does, nothing more is read.
class HttpdConfReadOnTest : public HttpdConfTest {
 protected:
  void SetUp() override {
    HttpdConfTest::SetUp();
    more_ = {path("more1.conf"), path("more2.conf")};
    httpd_conf_set_more_places(&more_);
  }
  void TearDown() override {
    httpd_conf_set_more_places(nullptr);
    httpd_conf_set_main(nullptr);
    HttpdConfTest::TearDown();
  }
  bool logged(const std::string& line) {
    return read_file("test.log").find(line) != std::string::npos;
  }

  std::vector<std::string> more_;
};

TEST_F(HttpdConfReadOnTest, OnlyWhereTheScanGivesNoUsableAnswer) {
  const struct {
    std::string conf;  // at the first candidate; "" for none
    std::string more;  // at the second of the more places
    Want want;
    std::string expected;
    bool read_on;
  } cases[] = {
      {"User root\nDocumentRoot /d\n", "", kRoot, "/d", false},
      {"User no_such_user_zq\n", "", kUser, "ERR:User 'no_such_user_zq' has bad uid '-1'", false},
      {"User ${RUN_USER}\n", "", kUser, "root", true},
      {"ServerRoot /srv\nDocumentRoot htdocs\n", "", kRoot, "/srv/htdocs", true},
      {"User root\n", "", kScripts, "ERR:Could not find, Group, DocumentRoot, ScriptAlias", true},
      {"", "Group root\nInclude " + path("inc") + "\n", kScripts, "/c/", true},
      {"", "User nobody_zq_unknown\n", kUser, "ERR:User 'nobody_zq_unknown' has bad uid '-1'",
       true},
      {"", "", kUser, "ERR:Cannot find httpd.conf file", false},
  };
  write_file("envvars", "export RUN_USER=root\n");
  write_file("inc", "ScriptAlias /cgi-bin/ /c/\n");
  for (const auto& c : cases) {
    httpd_conf_reset_cache();
    std::filesystem::remove(candidates_[0]);
    std::filesystem::remove(more_[1]);
    if (!c.conf.empty()) put(0, c.conf);
    if (!c.more.empty()) write_file("more2.conf", c.more);
    write_file("test.log", "");
    EXPECT_EQ(request(c.want), c.expected) << c.conf << c.more;
    EXPECT_EQ(logged("Reading httpd conf"), c.read_on) << c.conf << c.more;
  }
  // What the scan found stays: the virtual host's root it took last, not the
  // server-wide one the second reading prefers.
  httpd_conf_reset_cache();
  put(0,
      "User root\nDocumentRoot /server\n<VirtualHost *:80>\nDocumentRoot /host\n</VirtualHost>\n");
  EXPECT_EQ(request(kScripts), "ERR:Could not find, Group, ScriptAlias");
  EXPECT_EQ(request(kRoot), "/host");
  // The more places are probed and logged as the eight are.
  EXPECT_TRUE(logged("Is Httpd conf?[" + more_[0] + "]"));
  EXPECT_TRUE(logged("Is Httpd conf?[" + more_[1] + "]"));
}

TEST_F(HttpdConfReadOnTest, TheOperatorsFileAloneIsRead) {
  put(0, "User root\n");
  write_file("given.conf", "User ${U}\nDefine U daemon\nUser ${U}\n");
  httpd_conf_set_main(path("given.conf").c_str());
  EXPECT_EQ(request(kUser), "daemon");
  EXPECT_FALSE(logged("Is Httpd conf?"));
  EXPECT_TRUE(logged("User [daemon] found in " + path("given.conf") + ":3"));
  httpd_conf_reset_cache();
  httpd_conf_set_main(path("missing.conf").c_str());
  EXPECT_EQ(request(kUser), "ERR:Cannot find httpd.conf file");
}

}  // namespace
