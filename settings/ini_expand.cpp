#include "settings/ini_expand.h"

#include <cstring>
#include <string>
#include <string_view>

#include "foundation/logger.h"
#include "foundation/results.h"
#include "foundation/str_text.h"

namespace {

constexpr std::string_view kOpen = "$(";
constexpr char kClose = ')';

std::string reference_to(std::string_view name) {
  std::string token(kOpen);
  token.append(name);
  token += kClose;
  return token;
}

// The name of the reference whose "$(" is at `at`, up to ")" or the end of
// the text, at most kLineMax characters.
std::string_view name_at(std::string_view text, size_t at) {
  const size_t start = at + kOpen.size();
  const size_t close = text.find(kClose, start);
  const size_t length = (close == std::string_view::npos ? text.size() : close) - start;
  return text.substr(start, length < kLineMax ? length : kLineMax);
}

}  // namespace

int ini_expand_refs(ini_store* store, const char* text, char* out, unsigned out_size,
                    ini_unknown_refs policy) {
  if (store == nullptr || text == nullptr || out == nullptr || out_size == 0) return 0;
  const size_t limit = out_size - 1;
  const std::string_view source(text);
  std::string result;
  size_t read = 0;
  for (size_t hit = source.find(kOpen); hit != std::string_view::npos && result.size() < limit;
       hit = source.find(kOpen, read)) {
    result.append(source.substr(read, hit - read));
    const size_t close = source.find(kClose, hit + kOpen.size());
    if (close == std::string_view::npos) {
      // An unclosed reference is no reference: drop ends the text there.
      read = policy == ini_unknown_refs::keep ? hit : source.size();
      break;
    }
    const std::string name(name_at(source, hit));
    if (const char* value = ini_get(store, name.c_str())) {
      result.append(value);
    } else if (policy == ini_unknown_refs::keep) {
      result.append(source.substr(hit, close + 1 - hit));
    }
    read = close + 1;
  }
  if (read < source.size() && result.size() < limit) {
    result.append(source.substr(read, limit - result.size()));
  }
  const size_t written = result.size() < limit ? result.size() : limit;
  memcpy(out, result.data(), written);
  out[written] = '\0';
  return static_cast<int>(written);
}

std::vector<std::string> ini_reference_names(const char* text) {
  std::vector<std::string> names;
  if (text == nullptr) return names;
  const std::string_view source(text);
  for (size_t hit = source.find(kOpen); hit != std::string_view::npos;) {
    const size_t close = source.find(kClose, hit + kOpen.size());
    if (close == std::string_view::npos) break;
    names.emplace_back(name_at(source, hit));
    hit = source.find(kOpen, close + 1);
  }
  return names;
}

void ini_expand(ini_store* store, const char* text, char* out, unsigned out_size) {
  ini_expand_refs(store, text, out, out_size, ini_unknown_refs::drop);
}

namespace {

// Every occurrence of token in value replaced, the result cut to a line.
std::string replace_all(const std::string& value, const std::string& token,
                        const std::string& replacement) {
  std::string result;
  size_t from = 0;
  for (size_t at = value.find(token); at != std::string::npos; at = value.find(token, from)) {
    result.append(value, from, at - from);
    result.append(replacement);
    from = at + token.size();
  }
  result.append(value, from, std::string::npos);
  if (result.size() > static_cast<size_t>(kLineMax)) result.resize(kLineMax);
  return result;
}

// Brent's cycle finder over the successive texts of one value: each text
// decides the next, so meeting a text again means the rewriting never ends.
class cycle_finder {
 public:
  explicit cycle_finder(const std::string& first) : saved_(first) {}
  bool seen_again(const std::string& text) {
    if (text == saved_) return true;
    if (++steps_ == power_) {
      saved_ = text;
      power_ *= 2;
      steps_ = 0;
    }
    return false;
  }

 private:
  std::string saved_;
  unsigned long power_ = 1;
  unsigned long steps_ = 0;
};

// The replacement text for target, nullptr when it gives none.
const char* replacement_of(const ini_store* store, int target) {
  if ((store->settings[target].flags & INI_REPLACEABLE) == 0) return nullptr;
  return value_list_at(&store->values[target].values, 0);
}

// Rewrites the value at the cursor of values until no reference in it names
// a setting. Returns false when it would never settle.
bool resolve_current(ini_store* store, value_list* values) {
  std::string value(value_list_current(values));
  cycle_finder cycle(value);
  size_t search = 0;
  for (size_t hit = value.find(kOpen); hit != std::string::npos; hit = value.find(kOpen, search)) {
    search = hit + 1;
    const std::string name(name_at(value, hit));
    const int target = ini_index_of_nocase(store, name.c_str());
    if (target < 0) continue;
    const char* replacement = replacement_of(store, target);
    const std::string token = reference_to(name);
    std::string changed = replace_all(value, token, replacement != nullptr ? replacement : "");
    log_debug("Replaced '%s' in '%s' with '%s' = '%s'", token.c_str(), value.c_str(), replacement,
              changed.c_str());
    value_list_replace_current(values, changed.c_str());
    value = std::move(changed);
    search = 0;
    if (cycle.seen_again(value)) return false;
  }
  return true;
}

}  // namespace

int ini_process_replaceable(ini_store* store) {
  if (store == nullptr || !store->set_up) return k_fail;
  log_debug("Processing replacable settings...");
  for (int i = 0; i < store->count; ++i) {
    value_list* values = &store->values[i].values;
    value_list_rewind(values);
    for (const char* value = value_list_current(values); value != nullptr;
         value = value_list_advance(values)) {
      const std::string original(value);
      if (!resolve_current(store, values)) {
        log_error("References in setting '%s' never resolve, value left as '%s'",
                  store->settings[i].name.get(), original.c_str());
        value_list_replace_current(values, original.c_str());
      }
    }
  }
  log_debug("Finished processing replacable settings");
  return k_ok;
}
