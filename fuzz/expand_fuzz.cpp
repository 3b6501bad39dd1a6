// "$(name)" substitution, both kinds, and the replaceable pass. The input's
// lines up to the first empty one define settings ("name value", every one
// replaceable, so references between them meet the pass); the rest is the
// text to expand. Output stays within its buffer, terminated, and the count
// returned is what was written.
#include <cstring>
#include <string>
#include <vector>

#include "copyscript/copy_script.h"
#include "foundation/str_text.h"
#include "fuzz/fuzz_support.h"
#include "settings/ini_expand.h"
#include "settings/ini_store.h"

namespace {

constexpr size_t kMaxSettings = 32;

struct definitions {
  std::vector<std::string> names;
  std::vector<std::string> values;
  std::vector<ini_setting_def> rows;
};

void read_definitions(std::string_view& text, definitions& defs) {
  while (!text.empty() && defs.names.size() < kMaxSettings) {
    std::string_view line = fuzz_take_line(text);
    if (line.empty()) break;
    size_t blank = line.find(' ');
    defs.names.emplace_back(line.substr(0, blank));
    defs.values.emplace_back(blank == std::string_view::npos ? "" : line.substr(blank + 1));
  }
  for (size_t i = 0; i < defs.names.size(); ++i) {
    defs.rows.push_back({defs.names[i].c_str(), defs.values[i].c_str(), INI_REPLACEABLE});
  }
  defs.rows.push_back({nullptr, nullptr, 0});
}

void expand_into(ini_store* store, const std::string& text, unsigned size,
                 ini_unknown_refs policy) {
  std::vector<char> out(size, '\x7f');
  int written = ini_expand_refs(store, text.c_str(), out.data(), size, policy);
  fuzz_require(memchr(out.data(), '\0', size) != nullptr, "the output is terminated");
  fuzz_require(static_cast<size_t>(written) == strlen(out.data()), "the count is the length");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz_open_log();
  std::string_view input = fuzz_text(data, size);
  definitions defs;
  read_definitions(input, defs);
  std::string text(input);

  ini_store* store = ini_create();
  ini_setup(store, defs.rows.data(), nullptr, 1);
  ini_process_replaceable(store);
  for (int i = 0; i < ini_count(store); ++i) {
    const char* value = ini_get_value(store, i);
    fuzz_require(value == nullptr || strlen(value) < 1000, "replaced values are cut at 999");
  }
  expand_into(store, text, 1000, ini_unknown_refs::drop);
  expand_into(store, text, 1 + static_cast<unsigned>(size % 61), ini_unknown_refs::keep);

  copy_script* script = copy_script_create(store);
  char* copied = copy_expand(script, text.c_str());
  fuzz_require(copied == nullptr || strlen(copied) < 10000, "copy fields are cut at 9,999");
  str_free(&copied);
  copy_script_free(&script);
  ini_destroy(&store);
  return 0;
}
