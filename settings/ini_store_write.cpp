// Adding values to settings and creating settings.
#include <cstdarg>
#include <string>

#include "foundation/formatter.h"
#include "foundation/logger.h"
#include "foundation/results.h"
#include "foundation/str_text.h"
#include "settings/ini_store.h"
#include "settings/ini_store_internal.h"

namespace {

bool valid_index(const ini_store* store, int index) {
  return store != nullptr && store->set_up && index >= 0 && index < store->count;
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

}  // namespace

std::string ini_internal_fold(const char* name) {
  std::string folded(name);
  for (char& c : folded) c = str_fold(c);
  return folded;
}

int ini_internal_append(ini_store* store, const char* name, unsigned flags) {
  const int index = store->count;
  store->settings.push_back({owned_text(str_dup(name)), flags});
  store->values.emplace_back();
  store->by_name.emplace(name, index);
  store->by_folded_name.emplace(ini_internal_fold(name), index);
  ++store->count;
  return index;
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
  const int index = ini_internal_append(store, name, flags);
  value_list_append(&store->values[index].values, value);
  if (log_masked(store, flags)) {
    log_debug("Ini setting '%s' created and set to 'xxxx'", name);
  } else {
    log_debug("Ini setting '%s' created and set to '%s'", name, value);
  }
  return k_ok;
}
