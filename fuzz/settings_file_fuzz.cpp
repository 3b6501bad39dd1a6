// A settings file with virtual-host blocks. The input's first line names the
// site whose blocks apply; the rest is the file. Loading, reading single
// values back from the file and saving the store all hold.
#include <string>

#include "fuzz/fuzz_support.h"
#include "settings/ini_file.h"
#include "settings/ini_store.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz_open_log();
  std::string_view text = fuzz_text(data, size);
  std::string site(fuzz_take_line(text));
  std::string path = fuzz_write("product.ini", text);

  static const ini_setting_def defs[] = {{"docroot", "/var/www/html", INI_REPLACEABLE},
                                         {"product", nullptr, INI_FIXED},
                                         {"vhost_match", "INSTALL_FUZZ_SITE", 0},
                                         {nullptr, nullptr, 0}};
  ini_store* store = ini_create();
  ini_setup(store, defs, nullptr, 1);
  fuzz_require(ini_load(store, path.c_str(), site.c_str()) == 1, "an existing file loads");
  for (int i = 0; i < ini_count(store); ++i) ini_read_file_value(store, path.c_str(), i);
  fuzz_require(ini_save(store, fuzz_write("saved.ini", "").c_str()) == 1, "the store saves");
  ini_destroy(&store);
  return 0;
}
