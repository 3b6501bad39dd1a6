// The copy script. The input's first line names the section to load; the
// rest is the script. Every accepted line's fields expand and split into
// bounded, terminated paths.
#include <cstring>
#include <string>

#include "copyscript/copy_script.h"
#include "foundation/str_text.h"
#include "fuzz/fuzz_support.h"
#include "settings/ini_store.h"

namespace {

void check_bounded(const char* text, size_t limit, const char* what) {
  if (text != nullptr) fuzz_require(strlen(text) < limit, what);
}

void split_paths(const copy_script* script, int index) {
  char buffer[1000];
  check_bounded(copy_source_dir(script, index, buffer, sizeof buffer), sizeof buffer,
                "source directory bounded");
  check_bounded(copy_destination_dir(script, index, buffer, sizeof buffer), sizeof buffer,
                "destination directory bounded");
  check_bounded(copy_source_pattern(script, index, buffer, sizeof buffer), sizeof buffer,
                "source pattern bounded");
  check_bounded(copy_destination_pattern(script, index, buffer, sizeof buffer), sizeof buffer,
                "destination pattern bounded");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz_open_log();
  std::string_view text = fuzz_text(data, size);
  std::string section(fuzz_take_line(text));
  std::string path = fuzz_write("install.cpy", text);

  static const ini_setting_def defs[] = {{"docroot", "/var/www/html", 0},
                                         {"app", "$(docroot)/app", 0},
                                         {"owner", "www-data", 0},
                                         {nullptr, nullptr, 0}};
  ini_store* store = ini_create();
  ini_setup(store, defs, nullptr, 1);
  copy_script* script = copy_script_create(store);
  if (!copy_script_load(script, path.c_str(), section.c_str())) {
    fuzz_require(copy_count(script) == 0, "a section that was not found adds no lines");
  }
  for (int i = 0; i < copy_count(script); ++i) {
    fuzz_require(copy_type(script, i) == 0 || copy_source(script, i) != nullptr,
                 "a known operation has its source");
    split_paths(script, i);
    char* expanded = copy_expand(script, copy_destination(script, i));
    check_bounded(expanded, 10000, "expansion bounded");
    str_free(&expanded);
  }
  copy_script_free(&script);
  ini_destroy(&store);
  return 0;
}
