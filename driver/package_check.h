// "install -check": the product's files in the working directory, loaded as
// a run loads them (the same readers, named after the program's base name),
// checked without running, asking or changing anything but the log.
//
// Each file's own lines are checked beside its reader
// (environment/runtime_check, environment/init_check,
// questions/question_check, copyscript/copy_check). This module runs them,
// then the checks that span files: settings referred to or read that
// nothing sets, settings written but not declared, the web-server failure
// flags, the menu's sections and sections found in one file only, the
// templates of Ini lines and blurb.txt; and prints the report.
#pragma once

#include "settings/ini_store.h"

// Checks the product with store, a store that is not set up yet (the
// run-time settings are loaded into it as a run loads them). Prints every
// problem in file and line order and the summary line on the console.
// Returns the exit status: 0 when there is no error, 1 otherwise.
int run_package_check(ini_store* store);
