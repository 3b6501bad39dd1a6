#include "environment/httpd_server_conf.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <utility>
#include <vector>

#include "foundation/test_scratch.h"

namespace {

class HttpdServerConfTest : public scratch_test {
 protected:
  // Writes each file ("@" in names and texts stands for the scratch
  // directory), reads main.conf and gives "user|group|root|scripts", "-" for
  // a value not found, with the scratch directory written as "@" again.
  std::string read(const std::vector<std::pair<std::string, std::string>>& files) {
    for (const auto& [name, text] : files) {
      std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
      write_file(name, at(text));
    }
    values_ = {};
    EXPECT_EQ(httpd_server_conf_read(path("main.conf").c_str(), &values_), 1);
    std::string out;
    for (const httpd_found_value& value : values_) {
      if (!out.empty()) out += "|";
      out += value.found ? value.text : "-";
    }
    for (size_t found = out.find(dir_); found != std::string::npos; found = out.find(dir_)) {
      out.replace(found, dir_.size(), "@");
    }
    return out;
  }
  std::string at(std::string text) const {
    for (size_t found = text.find('@'); found != std::string::npos; found = text.find('@', found)) {
      text.replace(found, 1, dir_);
      found += dir_.size();
    }
    return text;
  }

  httpd_values values_;
};

TEST_F(HttpdServerConfTest, ReadsAsTheServerDoes) {
  std::string chain = "Include @/main.conf\nInclude @/chain0.conf\nUser u\n";
  std::vector<std::pair<std::string, std::string>> links;
  for (int i = 0; i < 20; ++i) {
    links.emplace_back(
        "chain" + std::to_string(i) + ".conf",
        "Group g" + std::to_string(i) + "\nInclude @/chain" + std::to_string(i + 1) + ".conf\n");
  }
  links.emplace_back("main.conf", chain);
  const struct {
    std::vector<std::pair<std::string, std::string>> files;
    std::string expected;
  } cases[] = {
      // Includes relative to ServerRoot in byte order, hidden names left out;
      // the main file's server-wide value beats an included one.
      {{{"conf.d/b.conf", "DocumentRoot /b\nUser bee\n"},
        {"conf.d/a.conf", "User ay\nGroup g\nDocumentRoot /a\n"},
        {"conf.d/.hidden.conf", "ScriptAlias /cgi-bin/ /hidden/\n"},
        {"main.conf", "ServerRoot @\nDocumentRoot /main\nInclude conf.d/*.conf\n"}},
       "bee|g|/main|-"},
      // ${NAME} from Define and from envvars (read, not run); unknown stays.
      {{{"envvars", "unset HOME\nexport APACHE_RUN_USER=www-data\nexport X_DIR=\"/x$SUFFIX\"\n"},
        {"main.conf",
         "Define SRV /srv\nUser ${APACHE_RUN_USER}\nGroup ${NOPE}\n"
         "DocumentRoot ${SRV}/htdocs\nScriptAlias /cgi-bin/ ${X_DIR}/cgi\n"}},
       "www-data|${NOPE}|/srv/htdocs|/x/cgi"},
      // Modules count from their LoadModule line on (either name), or built in.
      {{{"main.conf",
         "<IfModule alias_module>\nGroup early\n</IfModule>\n"
         "LoadModule cgid_module x.so\nLoadModule alias_module y.so\n"
         "<IfModule mod_cgid.c>\nDefine CGI\n</IfModule>\n"
         "<IfModule !unixd_module>\nUser wrong\n</IfModule>\n<IfModule mod_unixd.c>\nUser "
         "right\n</IfModule>\n"
         "<IfModule mod_missing.c>\n<IfDefine !CGI>\n</IfDefine>\nDocumentRoot "
         "/wrong\n</IfModule>\n"
         "<IfDefine CGI>\nScriptAlias /cgi-bin/ /c/\n</IfDefine>\n<IfDefine !CGI>\nScriptAlias "
         "/cgi-bin/ /n/\n</IfDefine>\n"}},
       "right|-|-|/c/"},
      // Server-wide beats any virtual host; else the first host that sets it.
      {{{"main.conf",
         "<VirtualHost *:80>\nDocumentRoot /v1\nScriptAlias /cgi-bin/ /v1c/\n</VirtualHost>\n"
         "<VirtualHost *:81>\nDocumentRoot /v2\nUser v2\n</VirtualHost>\nScriptAlias /cgi-bin/ "
         "/server/\n"}},
       "v2|-|/v1|/server/"},
      // Continued lines, quotes, a DocumentRoot relative to ServerRoot.
      {{{"main.conf",
         "ServerRoot \"@/\"\nDocumentRoot \\\n  htdocs\r\nScriptAlias /cgi-bin/ \"/my cgi/\"\n"
         "User 'o\\'brien'\n"}},
       "o'brien|-|@/htdocs|/my cgi/"},
      // A loop is cut, a chain stops below kHttpdIncludeDepthMax levels.
      {links, "u|g15|-|-"},
      // A line ends at a NUL byte.
      {{{"main.conf", std::string("User ro\0ot\nGroup \0g\n", 20)}}, "ro|-|-|-"},
      // A section left open ends with its file.
      {{{"open.conf", "<IfModule mod_missing.c>\n"},
        {"main.conf", "Include @/open.conf\nUser after\n"}},
       "after|-|-|-"},
      // A directory is read whole, in order, sub-directories included.
      {{{"dir/sub/x.conf", "User deep\n"},
        {"dir/a.conf", "User a\n"},
        {"main.conf", "Include @/dir\n"}},
       "deep|-|-|-"},
  };
  for (const auto& c : cases) {
    std::filesystem::remove_all(dir_ + "/conf.d");
    std::filesystem::remove(path("envvars"));
    EXPECT_EQ(read(c.files), c.expected) << c.files.back().second;
  }
}

TEST_F(HttpdServerConfTest, SaysWhereEachValueWasFound) {
  read({{"inc.conf", "\n# x\nGroup staff\n"}, {"main.conf", "User root\nInclude @/inc.conf\n"}});
  EXPECT_EQ(values_[kHttpdUser].where, path("main.conf") + ":1");
  EXPECT_EQ(values_[kHttpdGroup].where, path("inc.conf") + ":3");
  read({{"main.conf", "Include @/main.conf\n"}});
  EXPECT_NE(read_file("test.log").find("Include loop, skipped [" + path("main.conf") + "]"),
            std::string::npos);
}

TEST_F(HttpdServerConfTest, ReadsOnlyRegularFilesOnlyThroughTrustedLinks) {
  ASSERT_EQ(mkfifo(path("fifo.conf").c_str(), 0600), 0);
  httpd_values values;
  EXPECT_EQ(httpd_server_conf_read(path("fifo.conf").c_str(), &values), 0);
  EXPECT_EQ(httpd_server_conf_read("/dev/zero", &values), 0);
  EXPECT_EQ(httpd_server_conf_read(nullptr, &values), 0);
  EXPECT_NE(read_file("test.log").find("Not a regular file, skipped [" + path("fifo.conf") + "]"),
            std::string::npos);

  // Past the bound nothing more is read.
  write_file("big.conf", "#" + std::string(kHttpdConfMaxBytes, 'x') + "\nGroup late\n");
  // A link that another account owns is not followed; root's is.
  write_file("target.conf", "User linked\n");
  ASSERT_EQ(symlink(path("target.conf").c_str(), path("root-link.conf").c_str()), 0);
  ASSERT_EQ(symlink(path("target.conf").c_str(), path("planted.conf").c_str()), 0);
  const passwd* nobody = getpwnam("nobody");
  ASSERT_NE(nobody, nullptr);
  ASSERT_EQ(lchown(path("planted.conf").c_str(), nobody->pw_uid, nobody->pw_gid), 0);
  EXPECT_EQ(read({{"main.conf", "Include @/big.conf\nInclude @/planted.conf\n"}}), "-|-|-|-");
  EXPECT_EQ(read({{"main.conf", "Include @/root-link.conf\n"}}), "linked|-|-|-");
}

}  // namespace
