// The settings store: its life cycle, look-ups, reads, adding values and
// creating settings.
#include "settings/ini_store.h"

#include <cstdarg>
#include <string>

#include "fileops/wild_match.h"
#include "foundation/formatter.h"
#include "foundation/logger.h"
#include "foundation/results.h"
#include "foundation/str_text.h"

namespace {

bool usable(const ini_store* store) { return store != nullptr && store->set_up; }

bool valid_index(const ini_store* store, int index) {
  return usable(store) && index >= 0 && index < store->count;
}

void add_associations(ini_store* store, const int* assocs) {
  for (const int* pair = assocs; pair[0] != -1; pair += 2) {
    const int from = pair[0];
    const int to = pair[1];
    if (from >= 0 && from < store->count) {
      store->values[from].associations.push_back(to);
      log_debug("Ini association index %d->%d added", from, to);
    } else {
      log_error("Ini association index %d invalid.", from);
    }
  }
}

bool hidden(const ini_store* store, int index) {
  return (store->options & INI_OPT_HIDE_FIXED) != 0 &&
         (store->settings[index].flags & INI_FIXED) != 0;
}

// First value with association fall-back. path holds the settings whose
// associations are being walked, so a cycle of associations ends.
const char* first_value(ini_store* store, int index, std::vector<int>& path) {
  if (index < 0 || index >= store->count || hidden(store, index)) return nullptr;
  ini_value_record& record = store->values[index];
  value_list_rewind(&record.values);
  if (const char* value = value_list_current(&record.values)) return value;
  if (record.associations.empty()) return nullptr;
  for (const int on_path : path) {
    if (on_path == index) return nullptr;
  }
  path.push_back(index);
  const char* result = nullptr;
  for (const int other : record.associations) result = first_value(store, other, path);
  path.pop_back();
  return result;
}

void cut_to_line(std::string& value) {
  if (value.size() > static_cast<size_t>(kLineMax)) value.resize(kLineMax);
}

// Passes value through every filter whose mask shares a bit with flags.
void apply_filters(const ini_store* store, unsigned flags, std::string& value) {
  if ((flags & INI_FILTER_BITS) == 0) return;
  for (const ini_load_fn_entry& entry : store->load_fns) {
    if ((static_cast<unsigned>(entry.flag) & flags) == 0) continue;
    if (const char* result = entry.fn(value.c_str())) {
      value = std::string(result);
      cut_to_line(value);
    }
  }
}

void to_forward_slashes(std::string& value) {
  cut_to_line(value);
  for (char& c : value) {
    if (c == '\\') c = '/';
  }
}

bool log_masked(const ini_store* store, unsigned flags) {
  return (store->options & INI_OPT_MASK_LOG) != 0 && (flags & INI_MASKED) != 0;
}

// The one path every value takes into an existing setting.
int add_value(ini_store* store, int index, const char* text) {
  const ini_setting& setting = store->settings[index];
  const char* name = setting.name.get();
  std::string value(text);  // a copy first: text may be one of our own values
  apply_filters(store, setting.flags, value);
  if ((store->options & INI_OPT_PATHS) != 0 && (setting.flags & INI_PATH) != 0) {
    to_forward_slashes(value);
  }
  if ((store->options & INI_OPT_KEEP_FIXED) != 0 && (setting.flags & INI_FIXED) != 0) {
    log_debug("Ini value for '%s' not addded, value is fixed", name);
    return k_skipped;
  }
  if (value.empty() && (store->options & INI_OPT_REJECT_EMPTY) != 0 &&
      (setting.flags & INI_EMPTY_OK) == 0) {
    log_debug("Ini value for '%s' not added, value was empty", name);
    return k_skipped;
  }
  value_list* values = &store->values[index].values;
  if (value_list_count(values) > 0 && (store->options & INI_OPT_SINGLE) != 0 &&
      (setting.flags & INI_MULTI) == 0) {
    free(value_list_remove_next(values));
  }
  value_list_append(values, value.c_str());
  if (log_masked(store, setting.flags)) {
    log_debug("Ini value for '%s' set to 'xxxx'", name);
  } else {
    log_debug("Ini value for '%s' set to '%s'", name, value.c_str());
  }
  return k_ok;
}

unsigned flags_for_new_setting(unsigned options) {
  unsigned flags = 0;
  if ((options & INI_OPT_NEW_MULTI) != 0) flags |= INI_MULTI;
  if ((options & INI_OPT_NEW_MASKED) != 0) flags |= INI_MASKED;
  if ((options & (INI_OPT_NEW_FIXED | INI_OPT_NEW_LOCKED)) != 0) flags |= INI_FIXED;
  if ((options & INI_OPT_NEW_EMPTY_OK) != 0) flags |= INI_EMPTY_OK;
  return flags;
}

// name with A-Z folded to a-z, every other byte as it is.
std::string fold(const char* name) {
  std::string folded(name);
  for (char& c : folded) c = str_fold(c);
  return folded;
}

// Appends a setting without values and indexes its name (the first setting
// of a name keeps the index). Returns the new index.
int append_setting(ini_store* store, const char* name, unsigned flags) {
  const int index = store->count;
  store->settings.push_back({owned_text(str_dup(name)), flags});
  store->values.emplace_back();
  store->by_name.emplace(name, index);
  store->by_folded_name.emplace(fold(name), index);
  ++store->count;
  return index;
}

}  // namespace

// ---- life cycle -------------------------------------------------------------

ini_store* ini_create() { return new ini_store(); }

void ini_destroy(ini_store** store) {
  if (store == nullptr) return;
  delete *store;
  *store = nullptr;
}

void ini_setup(ini_store* store, const ini_setting_def* defs, const int* assocs,
               int load_defaults) {
  if (store == nullptr || defs == nullptr) return;
  if (store->set_up) {
    log_error("Ini store already set up");
    return;
  }
  store->set_up = true;
  for (const ini_setting_def* row = defs; row->name != nullptr; ++row) {
    const int index = append_setting(store, row->name, row->flags);
    if (load_defaults != 0 && row->value != nullptr) {
      value_list_append(&store->values[index].values, row->value);
    }
    log_debug("Ini setting '%s' setup", row->name);
  }
  if (assocs != nullptr) add_associations(store, assocs);
}

void ini_set_options(ini_store* store, unsigned options) {
  if (store != nullptr) store->options = options;
}

void ini_add_options(ini_store* store, unsigned bits) {
  if (store != nullptr) store->options |= bits;
}

void ini_clear_options(ini_store* store, unsigned bits) {
  if (store != nullptr) store->options &= ~bits;
}

unsigned ini_get_options(const ini_store* store) { return store == nullptr ? 0 : store->options; }

void ini_set_load_fn(ini_store* store, ini_load_fn fn, int flag) {
  if (store == nullptr || fn == nullptr) return;
  for (ini_load_fn_entry& entry : store->load_fns) {
    if (entry.flag == flag) {
      log_info("Load fn [%p] already set for flag [%d], replacing with new fn",
               reinterpret_cast<void*>(entry.fn), flag);
      entry.fn = fn;
      return;
    }
  }
  log_info("New load fn [%p] set for flag [%d]", reinterpret_cast<void*>(fn), flag);
  store->load_fns.push_back({fn, flag});
}

// ---- look-ups -----------------------------------------------------------------

int ini_index_of(const ini_store* store, const char* name) {
  if (!usable(store) || name == nullptr) return -1;
  const auto found = store->by_name.find(std::string_view(name));
  return found == store->by_name.end() ? -1 : found->second;
}

int ini_index_of_nocase(const ini_store* store, const char* name) {
  if (!usable(store) || name == nullptr) return -1;
  const auto found = store->by_folded_name.find(fold(name));
  return found == store->by_folded_name.end() ? -1 : found->second;
}

const char* ini_name_at(const ini_store* store, int index) {
  return valid_index(store, index) ? store->settings[index].name.get() : nullptr;
}

unsigned ini_flags_at(const ini_store* store, int index) {
  return valid_index(store, index) ? store->settings[index].flags : 0;
}

unsigned ini_flags_of(const ini_store* store, const char* name) {
  return ini_flags_at(store, ini_index_of(store, name));
}

int ini_count(const ini_store* store) { return usable(store) ? store->count : 0; }

// ---- reading ------------------------------------------------------------------

const char* ini_get_value(ini_store* store, int index) {
  if (!valid_index(store, index)) return nullptr;
  std::vector<int> path;  // allocates only when associations are walked
  return first_value(store, index, path);
}

const char* ini_get_next_value(ini_store* store, int index) {
  if (!valid_index(store, index) || hidden(store, index)) return nullptr;
  return value_list_advance(&store->values[index].values);
}

const char* ini_get(ini_store* store, const char* name) {
  return ini_get_value(store, ini_index_of(store, name));
}

const char* ini_get_next(ini_store* store, const char* name) {
  return ini_get_next_value(store, ini_index_of(store, name));
}

int ini_is_true(ini_store* store, int index) {
  const char* value = ini_get_value(store, index);
  return value != nullptr && str_is_true(value) != 0 ? 1 : 0;
}

int ini_is_false(ini_store* store, int index) {
  const char* value = ini_get_value(store, index);
  return value != nullptr && str_is_false(value) != 0 ? 1 : 0;
}

// ---- names --------------------------------------------------------------------

namespace {

// The store's names that pattern accepts (every name for a null pattern).
dyn_list* names_where(const ini_store* store, const char* pattern) {
  dyn_list* names = list_create();
  for (int i = 0; i < ini_count(store); ++i) {
    char* name = store->settings[i].name.get();
    if (pattern == nullptr || wild_match(name, pattern) != 0) list_append(names, name);
  }
  return names;
}

}  // namespace

dyn_list* ini_names(const ini_store* store) {
  return store == nullptr ? nullptr : names_where(store, nullptr);
}

dyn_list* ini_names_matching(const ini_store* store, const char* pattern) {
  if (store == nullptr || pattern == nullptr) return nullptr;
  return names_where(store, pattern);
}

value_list* ini_name_list(const ini_store* store) {
  if (store == nullptr) return nullptr;
  value_list* names = value_list_create();
  for (int i = 0; i < ini_count(store); ++i) {
    value_list_append(names, store->settings[i].name.get());
  }
  value_list_rewind(names);
  return names;
}

// ---- taking values out --------------------------------------------------------

char* ini_take_first(ini_store* store, int index) {
  if (!valid_index(store, index)) return nullptr;
  value_list* values = &store->values[index].values;
  value_list_rewind(values);
  return value_list_remove_current(values);
}

char* ini_take_current(ini_store* store, int index) {
  if (!valid_index(store, index)) return nullptr;
  return value_list_remove_current(&store->values[index].values);
}

char* ini_take_first_by_name(ini_store* store, const char* name) {
  return ini_take_first(store, ini_index_of(store, name));
}

char* ini_take_current_by_name(ini_store* store, const char* name) {
  return ini_take_current(store, ini_index_of(store, name));
}

int ini_set_value(ini_store* store, int index, const char* value) {
  if (!valid_index(store, index) || value == nullptr) return k_fail;
  return add_value(store, index, value);
}

int ini_set(ini_store* store, const char* name, const char* value) {
  if (store == nullptr || !store->set_up || name == nullptr || value == nullptr) {
    return k_fail;
  }
  const int index = ini_index_of(store, name);
  if (index >= 0) return add_value(store, index, value);
  if ((store->options & INI_OPT_CREATE) == 0) return k_fail;
  return ini_create_setting(store, name, value);
}

int ini_set_value_fmt(ini_store* store, int index, const char* format, ...) {
  if (!valid_index(store, index) || format == nullptr) return k_fail;
  char buffer[kLineSize];
  va_list args;
  va_start(args, format);
  vsnprintf(buffer, sizeof buffer, format, args);
  va_end(args);
  buffer[kLineMax] = '\0';
  return add_value(store, index, buffer);
}

int ini_set_values(ini_store* store, int index, const dyn_list* strings) {
  if (!valid_index(store, index) || strings == nullptr) return k_fail;
  for (int i = 0; i < strings->count; ++i) {
    const auto* text = static_cast<const char*>(strings->items[i]);
    if (text != nullptr) add_value(store, index, text);
  }
  return k_ok;
}

int ini_create_setting(ini_store* store, const char* name, const char* value) {
  if (store == nullptr || !store->set_up || name == nullptr || value == nullptr) {
    return k_fail;
  }
  if ((store->options & INI_OPT_NEW_EMPTY_OK) == 0 && value[0] == '\0') return k_skipped;
  const unsigned flags = flags_for_new_setting(store->options);
  const int index = append_setting(store, name, flags);
  value_list_append(&store->values[index].values, value);
  if (log_masked(store, flags)) {
    log_debug("Ini setting '%s' created and set to 'xxxx'", name);
  } else {
    log_debug("Ini setting '%s' created and set to '%s'", name, value);
  }
  return k_ok;
}
