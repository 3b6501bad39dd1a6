// ini_store: the installer's one table of named settings. A setting has a
// name, flags, an ordered list of values with a cursor, and associations: the
// settings whose value it falls back to when it has none of its own.
//
// Life cycle: ini_create -> ini_setup (once, from a definition table) -> use
// -> ini_destroy. Every function accepts null arguments and a store that was
// never set up, and then gives its not-found result (0, -1 or nullptr).
// Texts handed in are copied; texts handed out stay the store's and keep their
// address until that very value is replaced or taken out, or the store is
// destroyed. Single-threaded.
//
// Settings are reached by name (exact, case-sensitive; the first setting of a
// name wins) or by index (0 .. count-1 in creation order). Name look-ups go
// through a hash index and do not scan the table.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "foundation/dyn_list.h"
#include "settings/value_list.h"

// ---- setting flags ------------------------------------------------------

inline constexpr unsigned INI_MULTI = 0x01;        // keeps every value added
inline constexpr unsigned INI_MASKED = 0x02;       // logged as "xxxx"
inline constexpr unsigned INI_REPLACEABLE = 0x04;  // may replace "$(name)"
inline constexpr unsigned INI_PATH = 0x08;         // "\" and "/" written "/"
inline constexpr unsigned INI_EMPTY_OK = 0x10;     // empty value accepted
inline constexpr unsigned INI_FIXED = 0x20;        // can't change once set
// Bits 0x40 .. 0x8000 select the value filters registered for them.
inline constexpr unsigned INI_FILTER_BITS = 0xFFC0;

// ---- store options --------------------------------------------------------

inline constexpr unsigned INI_OPT_HIDE_FIXED = 0x0001;    // fixed reads as null
inline constexpr unsigned INI_OPT_REJECT_EMPTY = 0x0002;  // unless INI_EMPTY_OK
inline constexpr unsigned INI_OPT_MASK_LOG = 0x0004;      // masked as "xxxx"
inline constexpr unsigned INI_OPT_KEEP_FIXED = 0x0008;    // refuse adds to fixed
inline constexpr unsigned INI_OPT_SINGLE = 0x0010;        // non-multi: replace
inline constexpr unsigned INI_OPT_PATHS = 0x0020;         // INI_PATH takes effect
inline constexpr unsigned INI_OPT_RESERVED_40 = 0x0040;   // no effect
inline constexpr unsigned INI_OPT_CREATE = 0x0080;        // ini_set creates
inline constexpr unsigned INI_OPT_NEW_MULTI = 0x0100;     // created: INI_MULTI
inline constexpr unsigned INI_OPT_NEW_EMPTY_OK = 0x0200;  // created: INI_EMPTY_OK
inline constexpr unsigned INI_OPT_NEW_FIXED = 0x0400;     // created: INI_FIXED
inline constexpr unsigned INI_OPT_NEW_MASKED = 0x0800;    // created: INI_MASKED
inline constexpr unsigned INI_OPT_NEW_LOCKED = 0x1000;    // created: INI_FIXED
inline constexpr unsigned INI_OPT_DEFAULT = 0x3FE;

// ---- records ----------------------------------------------------------------

// One row of a definition table; a row with a null name ends the table. The
// table stays the caller's: the store copies what it keeps.
struct ini_setting_def {
  const char* name;
  const char* value;  // default value, nullptr for none
  unsigned flags;
};

// A value filter: returns the text that replaces value (it may return value
// itself or a buffer of its own; the store copies the result at once and
// frees nothing). A nullptr result leaves the value as it was.
using ini_load_fn = const char* (*)(const char* value);

struct ini_load_fn_entry {
  ini_load_fn fn;
  int flag;  // applied to settings whose flags share a bit with it
};

struct ini_setting {
  owned_text name;  // never null; keeps its address for the store's life
  unsigned flags = 0;
};

struct ini_value_record {
  value_list values;
  std::vector<int> associations;  // indices, in the order they were added
};

// Hash on texts that also takes string_view keys, so look-ups copy nothing.
struct ini_name_hash {
  using is_transparent = void;
  size_t operator()(std::string_view name) const noexcept {
    return std::hash<std::string_view>{}(name);
  }
};
using ini_name_index = std::unordered_map<std::string, int, ini_name_hash, std::equal_to<>>;

struct ini_store {
  std::vector<ini_setting> settings;        // index order
  std::vector<ini_load_fn_entry> load_fns;  // registration order
  unsigned options = INI_OPT_DEFAULT;
  int count = 0;                         // settings in use
  bool set_up = false;                   // ini_setup has run
  std::vector<ini_value_record> values;  // one per setting, same order
  ini_name_index by_name;                // name -> first index
  ini_name_index by_folded_name;         // A-Z folded name -> first index
};

// ---- life cycle -------------------------------------------------------------

// A new store: no settings, options INI_OPT_DEFAULT, no filters. Never null.
ini_store* ini_create();
// Frees the store and everything in it; clears *store. Null: nothing.
void ini_destroy(ini_store** store);
// Builds one setting per row of defs, in order; with load_defaults non-zero
// each row's value (if any) becomes the setting's first value. assocs: pairs
// (setting index, associated index) ended by -1 where a pair would begin, or
// nullptr. Null store or defs, or a store already set up: nothing.
void ini_setup(ini_store* store, const ini_setting_def* defs, const int* assocs, int load_defaults);
void ini_set_options(ini_store* store, unsigned options);
void ini_add_options(ini_store* store, unsigned bits);
void ini_clear_options(ini_store* store, unsigned bits);
unsigned ini_get_options(const ini_store* store);  // 0 for null
// Registers a filter for a flag mask, replacing the filter registered with
// exactly the same mask. Null store or fn: nothing.
void ini_set_load_fn(ini_store* store, ini_load_fn fn, int flag);

// ---- reading ----------------------------------------------------------------

// First value of the setting of that name; when it has none, the result of
// the last of its associations (recursively). Rewinds the setting's cursor.
// nullptr: null/unknown name, no value, or fixed under INI_OPT_HIDE_FIXED.
const char* ini_get(ini_store* store, const char* name);
// Advances the setting's cursor: the next value, nullptr at the end. No
// fall-back to associations.
const char* ini_get_next(ini_store* store, const char* name);
const char* ini_get_value(ini_store* store, int index);
const char* ini_get_next_value(ini_store* store, int index);
// The first value read as a true / false word; 0 when there is no value.
int ini_is_true(ini_store* store, int index);
int ini_is_false(ini_store* store, int index);
// Index of the first setting of that name, -1 when none.
int ini_index_of(const ini_store* store, const char* name);
// Index of the first setting whose name equals name when A-Z are folded to
// a-z (no other letter folds), -1 when none.
int ini_index_of_nocase(const ini_store* store, const char* name);
const char* ini_name_at(const ini_store* store, int index);
unsigned ini_flags_at(const ini_store* store, int index);  // 0: not found
unsigned ini_flags_of(const ini_store* store, const char* name);
int ini_count(const ini_store* store);  // 0 for null

// New lists of the store's names in index order (nullptr for a null store).
// ini_names and ini_names_matching hold the store's own name texts: free
// the list with list_free, never the names. ini_name_list holds copies:
// free it with value_list_free. ini_names_matching keeps the names that
// wild_match accepts for pattern ("*" accepts all; case-sensitive).
dyn_list* ini_names(const ini_store* store);
value_list* ini_name_list(const ini_store* store);
dyn_list* ini_names_matching(const ini_store* store, const char* pattern);

// ---- writing ----------------------------------------------------------------

// Adds value to the setting of that name: filters, path separators, then the
// fixed and empty checks (-1, value kept as it was), then a single-valued
// setting loses its old value. 1 when added. An unknown name is created under
// INI_OPT_CREATE (ini_create_setting's result), else 0. 0 for null arguments
// or a store not set up.
int ini_set(ini_store* store, const char* name, const char* value);
int ini_set_value(ini_store* store, int index, const char* value);
// Formats into 1,000 bytes (at most 999 characters kept), then adds.
int ini_set_value_fmt(ini_store* store, int index, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
// Adds each text of strings in order (refusals do not stop it). 1, or 0 for
// a null store or list or a bad index.
int ini_set_values(ini_store* store, int index, const dyn_list* strings);
// Appends a setting with value as its only value (no filters or checks) and
// flags from the INI_OPT_NEW_* options. 1; -1 for an empty value without
// INI_OPT_NEW_EMPTY_OK; 0 for null arguments or a store not set up.
int ini_create_setting(ini_store* store, const char* name, const char* value);

// ---- taking values out (the caller free()s the result) ----------------------

// Rewinds, then removes and returns the first value; nullptr when none.
char* ini_take_first(ini_store* store, int index);
// Removes and returns the value at the cursor (the first one when the cursor
// is past the end); nullptr when none.
char* ini_take_current(ini_store* store, int index);
char* ini_take_first_by_name(ini_store* store, const char* name);
char* ini_take_current_by_name(ini_store* store, const char* name);
