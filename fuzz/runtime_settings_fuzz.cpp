// The run-time settings file: it loads into a store whose every value reads
// back terminated and bounded after the replaceable pass.
#include <cstring>

#include "environment/runtime_settings.h"
#include "fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz_open_log();
  std::string path = fuzz_write("install.dat", fuzz_text(data, size));
  ini_store* store = ini_create();
  fuzz_require(runtime_settings_load(store, path.c_str()) == 1, "an existing file loads");
  for (int i = 0; i < ini_count(store); ++i) {
    fuzz_require(ini_name_at(store, i) != nullptr, "every row has a name");
    for (const char* value = ini_get_value(store, i); value != nullptr;
         value = ini_get_next_value(store, i)) {
      fuzz_require(strlen(value) < 1000, "values are cut at 999 characters");
    }
  }
  ini_destroy(&store);
  runtime_settings_free();
  return 0;
}
