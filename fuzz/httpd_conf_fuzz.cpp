// The web-server configuration readers: the line scan of one file and the
// reading as the server does. The input is the main file, optionally followed
// by further files, each opened by a line "==> NAME <==" (NAME a plain file
// name beside the main file, so Include and envvars reach it). Any input
// yields terminated values of at most 999 characters, or a message saying
// what is missing, and loops or deep chains of includes end.
#include <cstring>
#include <filesystem>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include "environment/httpd_conf.h"
#include "fuzz/fuzz_support.h"

namespace {

std::set<std::string> written;

// A name the input may give a file: one plain name, never the log's.
bool plain_name(const std::string& name) {
  return !name.empty() && name.find('/') == std::string::npos && name != "." && name != ".." &&
         !name.starts_with("fuzz.log");
}

// Writes the main file and the files after it (those of the previous input
// removed first); returns the main file's path.
std::string write_files(std::string_view text) {
  std::error_code ignored;
  for (const std::string& path : written) std::filesystem::remove(path, ignored);
  written.clear();
  std::string name = "httpd.conf";
  std::string body;
  std::string main;
  auto flush = [&] {
    std::string path = fuzz_write(name.c_str(), body);
    if (name == "httpd.conf") main = path;
    written.insert(path);
  };
  while (!text.empty()) {
    std::string_view line = fuzz_take_line(text);
    if (line.size() > 8 && line.starts_with("==> ") && line.ends_with(" <==")) {
      std::string next(line.substr(4, line.size() - 8));
      if (plain_name(next)) {
        flush();
        name = next;
        body.clear();
        continue;
      }
    }
    body.append(line).append("\n");
  }
  flush();
  return main;
}

void lookup_all() {
  httpd_conf_reset_cache();
  char user[1000] = "";
  char group[1000] = "";
  char docroot[1000] = "";
  char scripts[1000] = "";
  char error[1000] = "";
  int found = httpd_conf_lookup(user, group, docroot, scripts, error);
  for (const char* value : {user, group, docroot, scripts, error}) {
    fuzz_require(memchr(value, '\0', 1000) != nullptr, "values are terminated in their buffer");
  }
  fuzz_require(found == 1 || error[0] != '\0', "a failed scan says why");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz_open_log();
  std::string main = write_files(fuzz_text(data, size));
  std::vector<std::string> candidates{main};
  std::vector<std::string> no_more_places;
  httpd_conf_set_candidates(&candidates);
  httpd_conf_set_more_places(&no_more_places);
  lookup_all();
  httpd_conf_set_main(main.c_str());
  lookup_all();
  httpd_conf_set_main(nullptr);
  httpd_conf_set_more_places(nullptr);
  httpd_conf_set_candidates(nullptr);
  return 0;
}
