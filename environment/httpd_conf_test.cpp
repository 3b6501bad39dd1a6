#include "environment/httpd_conf.h"

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

// One candidate, first.conf, and two more places that are never written.
class HttpdConfTest : public scratch_test {
 protected:
  void SetUp() override {
    scratch_test::SetUp();
    const std::vector<std::string> candidates{path("first.conf")};
    const std::vector<std::string> more{path("more1.conf"), path("more2.conf")};
    httpd_conf_set_candidates(&candidates);
    httpd_conf_set_more_places(&more);
  }
  void TearDown() override {
    httpd_conf_set_candidates(nullptr);
    httpd_conf_set_more_places(nullptr);
    scratch_test::TearDown();
  }
};

// The line scan of the candidate; where it gives no usable answer, the
// configuration is read again as the server reads it, and only then.
TEST_F(HttpdConfTest, ScanThenReadOnWhereNoUsableAnswer) {
  const std::string none = "ERR:Could not find, Group, User, DocumentRoot, ScriptAlias";
  const struct {
    std::string conf;  // first.conf; "" for none
    Want want;
    std::string expected;
    bool read_on;
  } rows[] = {
      {"User\nUserDir public_html\n", kUser, none, true},
      {"Group no_such_group_zq\nGroup root\n", kGroup,
       "ERR:Group 'no_such_group_zq' has bad uid '-1'", false},
      {"ScriptAlias /cgi-bin/\nScriptAlias /my-cgi-bin/ /a\nScriptAlias /CGI-BIN/ /b\n", kScripts,
       "/a", false},
      // A longer line is read in pieces of 999 characters.
      {"DocumentRoot /" + std::string(1500, 'r'), kRoot, "/" + std::string(985, 'r'), false},
      // Nothing past the first mebibyte is read.
      {std::string(1 << 20, '#') + "\nUser root\n", kUser, none, true},
      {"User ${RUN_USER}\n", kUser, "root", true},
      {"ServerRoot /srv\nDocumentRoot htdocs\n", kRoot, "/srv/htdocs", true},
      {"User root\n", kScripts, "ERR:Could not find, Group, DocumentRoot, ScriptAlias", true},
      {"", kUser, "ERR:Cannot find httpd.conf file", false},
  };
  write_file("envvars", "export RUN_USER=root\n");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.conf.substr(0, 60));
    httpd_conf_reset_cache();
    std::filesystem::remove(path("first.conf"));
    if (!row.conf.empty()) write_file("first.conf", row.conf);
    write_file("test.log", "");
    EXPECT_EQ(request(row.want), row.expected);
    EXPECT_EQ(logged("Reading httpd conf") > 0, row.read_on);
  }
}

TEST_F(HttpdConfTest, WhatTheScanFoundStaysCached) {
  write_file("first.conf",
             "User root\nDocumentRoot /server\n<VirtualHost *:80>\nDocumentRoot /host\n"
             "</VirtualHost>\n");
  EXPECT_EQ(request(kScripts), "ERR:Could not find, Group, ScriptAlias");
  std::filesystem::remove(path("first.conf"));
  // Not the server-wide root that the second reading prefers; no file needed.
  EXPECT_EQ(request(kRoot), "/host");
  EXPECT_EQ(request(kUser), "root");
}

}  // namespace
