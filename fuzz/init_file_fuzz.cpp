// The start-up command file: any text loads without harm, and every stored
// record has its two arguments.
#include "environment/init_file.h"
#include "fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz_open_log();
  std::string path = fuzz_write("install.int", fuzz_text(data, size));
  init_list* list = init_list_create();
  fuzz_require(init_load(list, path.c_str()) == 1, "an existing file loads");
  for (init_command* command = init_first(list, 0); command != nullptr; command = init_next(list)) {
    fuzz_require(!command->name.empty() && !command->value.empty(),
                 "a stored record has both arguments");
  }
  init_list_free(&list);
  return 0;
}
