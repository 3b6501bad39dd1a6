// The init file as "install -check" sees it: each line fed to the loader's
// line parser, with the record carried from line to line as the loader
// carries it, and once more on its own to see what it takes over.
#pragma once

#include <string>

#include "foundation/check_report.h"

// Checks the init file at path (named `file` in messages). Reports the file
// not readable; unknown command words; lines of fewer than five words; what
// a complete line takes over from an incomplete one above it; an expected
// value without a condition setting (the command never runs) and a
// condition setting without an expected value (ignored). Records in
// report->uses what each stored line writes, refers to and reads, and the
// failure flags of the web-server commands. Nothing for a null argument.
void init_check_file(const char* path, const std::string& file, check_report* report);
