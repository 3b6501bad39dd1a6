// The run-time settings file as "install -check" sees it: each line taken
// with the settings-file line parser that the loader uses, and compared with
// the store that the loader has just set up from the same file.
#pragma once

#include <string>

#include "foundation/check_report.h"
#include "settings/ini_store.h"

// Checks the run-time settings file at path (named `file` in messages)
// against store, which runtime_settings_load has set up from it. Records in
// report->uses each reference to another of the file's settings (for the
// checks across files). Reports the file not
// readable; a name given twice or a built-in name (the line is never
// reached); a reference that names no setting of the file (kept as written)
// or one that is not replaceable (empty); references that never settle.
// Nothing for a null argument.
void runtime_settings_check(ini_store* store, const char* path, const std::string& file,
                            check_report* report);
