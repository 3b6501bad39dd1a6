// Wildcard matching. The algorithm is the documented recursive one: a literal
// phase up to the first star, then a star phase that tries the rest of the
// pattern at every text position holding the anchor (the character after the
// stars). Its answer for a given (text position, star run) never changes,
// and once the rest fails from some position it fails from every later one
// too, so each star run remembers the first position known to fail. That
// keeps the work at text length times pattern length instead of exponential.
#include "fileops/wild_match.h"

#include <array>
#include <cstddef>
#include <limits>
#include <string_view>
#include <vector>

#include "foundation/str_text.h"

namespace {

constexpr std::string_view kListSeparators = " \t,";
constexpr size_t kInlineRuns = 16;  // star runs remembered without allocating

class matcher {
 public:
  matcher(std::string_view text, std::string_view pattern, bool exact)
      : text_(text), pattern_(pattern), exact_(exact) {
    size_t runs = count_star_runs();
    if (runs > small_.size()) {
      large_.resize(runs);
      failed_from_ = large_.data();
    }
    for (size_t i = 0; i < runs; ++i) failed_from_[i] = kNever;
  }
  matcher(const matcher&) = delete;
  matcher& operator=(const matcher&) = delete;

  bool matches() { return pattern_.empty() ? text_.empty() : literal(0, 0, 0); }

 private:
  static constexpr size_t kNever = std::numeric_limits<size_t>::max();

  size_t count_star_runs() const {
    size_t runs = 0;
    for (size_t p = 0; p < pattern_.size(); ++p) {
      if (pattern_[p] == '*' && (p == 0 || pattern_[p - 1] != '*')) ++runs;
    }
    return runs;
  }

  bool same(char pattern_char, char text_char) const {
    return exact_ ? pattern_char == text_char : str_fold(pattern_char) == str_fold(text_char);
  }

  // The pattern from p up to its next star, one character at a time; `run`
  // is the number of the star run that follows.
  bool literal(size_t t, size_t p, size_t run) {
    while (pattern_[p] != '*') {
      if (t == text_.size()) return false;
      if (pattern_[p] != '?' && !same(pattern_[p], text_[t])) return false;
      ++t;
      ++p;
      if (p == pattern_.size()) return t == text_.size();
    }
    return stars(t, p, run);
  }

  // The anchor is found ignoring case in both modes and a "?" anchor is
  // literal; the retry from it then compares in the caller's mode.
  bool stars(size_t t, size_t p, size_t run) {
    while (p < pattern_.size() && pattern_[p] == '*') ++p;
    if (p == pattern_.size()) return true;
    if (t == text_.size()) return false;
    size_t& failed = failed_from_[run];
    const char anchor = str_fold(pattern_[p]);
    for (size_t at = t; at < text_.size() && at < failed; ++at) {
      if (str_fold(text_[at]) == anchor && literal(at, p, run + 1)) return true;
    }
    if (t < failed) failed = t;
    return false;
  }

  std::string_view text_;
  std::string_view pattern_;
  bool exact_;
  std::array<size_t, kInlineRuns> small_{};
  std::vector<size_t> large_;
  size_t* failed_from_ = small_.data();
};

bool match_views(std::string_view text, std::string_view pattern, bool exact) {
  matcher m(text, pattern, exact);
  return m.matches();
}

// Takes the next item off the front of list; empty when none is left.
std::string_view next_item(std::string_view& list) {
  size_t start = list.find_first_not_of(kListSeparators);
  if (start == std::string_view::npos) {
    list = {};
    return {};
  }
  list.remove_prefix(start);
  size_t end = list.find_first_of(kListSeparators);
  std::string_view item = list.substr(0, end);
  list.remove_prefix(item.size());
  return item;
}

int list_match(const char* names, const char* patterns, bool exact) {
  if (names == nullptr || patterns == nullptr) return 0;
  std::string_view name_list(names);
  for (std::string_view name = next_item(name_list); !name.empty(); name = next_item(name_list)) {
    std::string_view pattern_list(patterns);
    for (std::string_view pattern = next_item(pattern_list); !pattern.empty();
         pattern = next_item(pattern_list)) {
      if (match_views(name, pattern, exact)) return 1;
    }
  }
  return 0;
}

int single_match(const char* name, const char* pattern, bool exact) {
  if (name == nullptr || pattern == nullptr) return 0;
  if (pattern[0] == '*' && pattern[1] == '\0') return 1;
  return match_views(name, pattern, exact) ? 1 : 0;
}

}  // namespace

int wild_match_core(const char* text, const char* pattern, int exact) {
  if (text == nullptr || pattern == nullptr) return 0;
  return match_views(text, pattern, exact != 0) ? 1 : 0;
}

int wild_match(const char* name, const char* pattern) { return single_match(name, pattern, true); }

int wild_match_nocase(const char* name, const char* pattern) {
  return single_match(name, pattern, false);
}

int wild_list_match(const char* names, const char* patterns) {
  return list_match(names, patterns, true);
}

int wild_list_match_nocase(const char* names, const char* patterns) {
  return list_match(names, patterns, false);
}
