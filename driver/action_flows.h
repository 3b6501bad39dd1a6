// The four actions the menu starts. Each loads its section of the question
// file (<cwd>/<base name>.q), walks the questions, then loads and runs the
// same section of the copy script (<base name>.cpy) with the console's step
// callbacks. They are one flow with a few differences (heading, section,
// Error-question text, stop on failure, bytes counted, texts around the run).
#pragma once

#include "settings/ini_store.h"

// Results of a flow.
inline constexpr int kFlowFailed = 0;  // questions not loadable, an Error fired, a default refused
inline constexpr int kFlowDone = 1;    // questions taken; the script ran, failed or was missing
inline constexpr int kFlowQuit = 4;    // the operator quit: back to the menu

int do_install(ini_store* store);
int do_upgrade(ini_store* store);
int do_remove(ini_store* store);
// Runs the sections named by the special tag; kFlowFailed without a tag.
int do_special(ini_store* store);
