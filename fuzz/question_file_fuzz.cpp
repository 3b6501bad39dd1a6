// The question file. The input's first line names the section to load; the
// rest is the file. Every accepted question answers its accessors.
#include <string>

#include "fuzz/fuzz_support.h"
#include "questions/question_file.h"
#include "settings/ini_store.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz_open_log();
  std::string_view text = fuzz_text(data, size);
  std::string section(fuzz_take_line(text));
  std::string path = fuzz_write("install.q", text);

  static const ini_setting_def defs[] = {
      {"docroot", "/var/www/html", 0}, {"answer", "yes", 0}, {nullptr, nullptr, 0}};
  ini_store* store = ini_create();
  ini_setup(store, defs, nullptr, 1);
  question_set* set = question_set_create(store);
  if (question_load(set, path.c_str(), section.c_str()) == 1) {
    for (unsigned i = 0; i < question_count(set); ++i) {
      question_type(set, i);
      fuzz_require(question_text(set, i) != nullptr, "an accepted question has its text");
      question_label(set, i);
      question_control(set, i);
      question_compare(set, i);
      question_help_id(set, i);
    }
    fuzz_require(question_text(set, question_count(set)) == nullptr,
                 "nothing past the last question");
  }
  question_set_free(&set);
  ini_destroy(&store);
  return 0;
}
