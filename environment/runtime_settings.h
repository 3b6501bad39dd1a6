// Run-time settings: the program's ".dat" file plus four built-in settings
// ("host", "system_dir", "current_dir" fixed and replaceable; "action" =
// "install") become the settings store's definition table. The table is kept
// process-wide from a successful load until runtime_settings_free.
//
// File lines follow the settings-file rules (see settings/ini_file.h); every
// line gives a row of its own, flagged INI_REPLACEABLE, after the built-in
// rows; a name alone gives a setting without a value; names may repeat (a
// later one is never reached by name).
#pragma once

#include "settings/ini_store.h"

// The built-in rows that come before the file's: "host", "system_dir",
// "current_dir", "action". The file's n-th setting line (from 0) is the
// store's setting kRuntimeBuiltIns + n.
inline constexpr int kRuntimeBuiltIns = 4;

// Reads the file at path, sets the store up from the built-in rows and the
// file's rows, and runs the replaceable pass. 1 when done; 0 for a null store
// or path, or a file that can't be opened (logged; the store is left as it
// was and nothing is kept).
[[nodiscard]] int runtime_settings_load(ini_store* store, const char* path);

// Frees the kept definition table; nothing when none is kept.
void runtime_settings_free();

// The kept definition table (ended by a row with a null name), nullptr when
// none is kept. Owned by this module.
const ini_setting_def* runtime_settings_defs();

// The machine's host name in buffer (at most size - 1 characters, always
// terminated); "127.0.0.1" when the system can't tell it (logged at error
// level). Returns buffer; nullptr for a null buffer or size 0.
char* local_host_name(char* buffer, unsigned size);
