// The web-server configuration scan: any file yields terminated values of at
// most 999 characters, or a message saying what is missing.
#include <cstring>
#include <string>
#include <vector>

#include "environment/httpd_conf.h"
#include "fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz_open_log();
  std::vector<std::string> candidates{fuzz_write("httpd.conf", fuzz_text(data, size))};
  httpd_conf_set_candidates(&candidates);
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
  httpd_conf_set_candidates(nullptr);
  return 0;
}
