#include "driver/options.h"

#include <string>

#include "environment/httpd_conf.h"
#include "foundation/console.h"
#include "foundation/str_text.h"

namespace {

std::string g_base_name;
int g_automated = 0;
int g_check = 0;
std::string g_tag;
bool g_has_tag = false;

}  // namespace

const char* program_base_name() { return g_base_name.c_str(); }

void set_program_base_name(const char* name) { g_base_name = str_or_empty(name); }

int automate_mode() { return g_automated; }

int check_mode() { return g_check; }

const char* special_tag() { return g_has_tag ? g_tag.c_str() : nullptr; }

option_outcome parse_options(logger* log, char** argv, int argc) {
  if (argv == nullptr || argc < 2) return {};
  for (int i = 1; i < argc; ++i) {
    const char* arg = argv[i];
    if (str_cmp(arg, "-debug") == 0) {
      log_set_level(log, static_cast<unsigned>(log_level::debug));
      log_info("Logging set to debug");
    } else if (str_cmp(arg, "-version") == 0) {
      console_printf("Installer version %s\n", kInstallerVersion);
      return {true, 0};
    } else if (str_cmp(arg, "-automate") == 0) {
      log_info("Automated install/upgrade...");
      g_automated = 1;
    } else if (str_cmp(arg, "-check") == 0) {
      log_info("Checking the product's files");
      g_check = 1;
    } else if (str_cmp(arg, "-special") == 0) {
      if (i + 1 >= argc) {
        console_print("Usage: install -special <tag>\n");
        return {true, 1};
      }
      g_tag = str_or_empty(argv[++i]);
      g_has_tag = true;
      log_info("Special mode [%s]", g_tag.c_str());
    } else if (str_cmp(arg, "-httpd-conf") == 0) {
      if (i + 1 >= argc) {
        console_print("Usage: install -httpd-conf <path>\n");
        return {true, 1};
      }
      httpd_conf_set_main(argv[++i]);
      log_info("Httpd conf given [%s]", argv[i]);
    }
  }
  return {};
}
