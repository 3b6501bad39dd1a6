// Wildcard matching and pattern lists. The input's first line is the
// pattern, the rest the text. Without "*" or "?" a pattern matches exactly
// the text it spells (ignoring A-Z case for the case-blind forms), and a
// case-sensitive match is always a case-blind one too.
#include <cstring>
#include <string>

#include "fileops/wild_match.h"
#include "foundation/str_text.h"
#include "fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view input = fuzz_text(data, size);
  std::string pattern(fuzz_take_line(input));
  std::string text(input);
  pattern.resize(strlen(pattern.c_str()));
  text.resize(strlen(text.c_str()));

  int exact = wild_match(text.c_str(), pattern.c_str());
  int blind = wild_match_nocase(text.c_str(), pattern.c_str());
  fuzz_require(wild_match_core(text.c_str(), pattern.c_str(), 1) == exact || pattern == "*",
               "the core agrees with the exact form");
  fuzz_require(!exact || blind, "an exact match is a case-blind match");
  if (pattern.find_first_of("*?") == std::string::npos) {
    fuzz_require(exact == (text == pattern), "a plain pattern matches only itself");
    fuzz_require(blind == (str_icmp(text.c_str(), pattern.c_str()) == 0),
                 "a plain pattern matches itself in any case");
  }
  int listed = wild_list_match(text.c_str(), pattern.c_str());
  fuzz_require(!listed || wild_list_match_nocase(text.c_str(), pattern.c_str()),
               "an exact list match is a case-blind one");
  return 0;
}
