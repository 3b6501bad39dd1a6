#include "environment/httpd_server_conf.h"

#include <string>
#include <utility>
#include <vector>

#include "foundation/test_scratch.h"

namespace {

using files = std::vector<std::pair<std::string, std::string>>;

class HttpdServerConfTest : public scratch_test {
 protected:
  // Writes each file, reads main.conf (the ServerRoot when none is set) and
  // gives "user|group|root|scripts", "-" for a value not found.
  std::string read(const files& texts) {
    for (const auto& [name, text] : texts) write_file(name, text);
    httpd_values values;
    EXPECT_EQ(httpd_server_conf_read(path("main.conf").c_str(), &values), 1);
    std::string out;
    for (const httpd_found_value& value : values) {
      out += (out.empty() ? "" : "|") + (value.found ? value.text : "-");
    }
    return out;
  }
};

TEST_F(HttpdServerConfTest, ReadsAsTheServerDoes) {
  const struct {
    files texts;  // main.conf last
    std::string expected;
  } rows[] = {
      // Includes relative to ServerRoot in byte order, hidden names left out,
      // a loop cut; the main file's server-wide value beats an included one.
      {{{"conf.d/b.conf", "DocumentRoot /b\nUser bee\n"},
        {"conf.d/a.conf", "User ay\nGroup g\nDocumentRoot /a\n"},
        {"conf.d/.hidden.conf", "ScriptAlias /cgi-bin/ /hidden/\n"},
        {"main.conf", "DocumentRoot /main\nInclude conf.d/*.conf\nInclude main.conf\n"}},
       "bee|g|/main|-"},
      // Modules count from their LoadModule line on (either name), or built in;
      // a "!" turns a condition round.
      {{{"main.conf",
         "<IfModule alias_module>\nGroup early\n</IfModule>\nLoadModule alias_module y.so\n"
         "<IfModule !unixd_module>\nUser wrong\n</IfModule>\n"
         "<IfModule mod_unixd.c>\nUser right\n</IfModule>\n<IfModule mod_alias.c>\nGroup g\n"
         "</IfModule>\n<IfModule mod_missing.c>\n<IfDefine !CGI>\n</IfDefine>\nDocumentRoot "
         "/wrong\n</IfModule>\n<IfDefine !CGI>\nScriptAlias /cgi-bin/ /n/\n</IfDefine>\n"}},
       "right|g|-|/n/"},
      // Server-wide beats any virtual host; else the first host that sets it.
      {{{"main.conf",
         "<VirtualHost *:80>\nDocumentRoot /v1\nScriptAlias /cgi-bin/ /v1c/\n</VirtualHost>\n"
         "<VirtualHost *:81>\nDocumentRoot /v2\nUser v2\n</VirtualHost>\n"
         "ScriptAlias /cgi-bin/ /server/\n"}},
       "v2|-|/v1|/server/"},
      // Continued lines, quotes (a backslash keeps one, even last on the line), a
      // DocumentRoot relative to ServerRoot.
      {{{"main.conf",
         "ServerRoot \"/srv/\"\nDocumentRoot \\\n  htdocs\r\nScriptAlias /cgi-bin/ \"/my cgi/\"\n"
         "User 'o\\'\n"}},
       "o'|-|/srv/htdocs|/my cgi/"},
      // A section left open ends with its file; past kHttpdConfMaxBytes of a
      // file nothing is read; a directory is read whole, in order,
      // sub-directories included.
      {{{"open.conf", "<IfModule mod_missing.c>\n"},
        {"big.conf", "#" + std::string(kHttpdConfMaxBytes, 'x') + "\nGroup late\n"},
        {"dir/sub/x.conf", "User deep\n"},
        {"dir/a.conf", "User a\n"},
        {"main.conf", "Include open.conf\nInclude big.conf\nInclude dir\n"}},
       "deep|-|-|-"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.texts.back().second);
    EXPECT_EQ(read(row.texts), row.expected);
  }
}

}  // namespace
