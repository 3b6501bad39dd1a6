// Helpers shared by the store's own source files; not for other modules.
#pragma once

#include <string>

#include "settings/ini_store.h"

// Appends a setting without values and indexes its name (the first setting
// of a name keeps the index). Returns the new index.
int ini_internal_append(ini_store* store, const char* name, unsigned flags);

// name with A-Z folded to a-z, every other byte as it is.
std::string ini_internal_fold(const char* name);
