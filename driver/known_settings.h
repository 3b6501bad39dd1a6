// The names of the settings a product's data files know: declared in the
// run-time settings file (or built in), or set by an init command, a
// question (asking, Copy or Exist) or a copy line (Exist, RFile) of any
// section. An answer for any other name is almost always a typo.
#pragma once

#include <set>
#include <string>

#include "environment/init_file.h"
#include "settings/ini_store.h"

// The names in store, those commands set, and those the question file and
// the copy script at their paths set (a file that cannot be read adds none).
std::set<std::string> known_settings(const ini_store* store, init_list* commands,
                                     const char* questions_path, const char* script_path);
