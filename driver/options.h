// The command line and the values it sets for the whole run: the program's
// base name, the automate flag, the special tag, the answers file and
// whether the exit status tells what happened. One table holds every
// option: parsing and "-help" both read it.
#pragma once

#include "foundation/logger.h"

inline constexpr const char* kInstallerVersion = "1.0d";

// What the command line asks for: go on with the run, or end it at once
// with a status ("-version", "-help": 0; an option without its argument: 1).
struct option_outcome {
  bool end = false;
  int status = 0;
};

// The command-line pass, in argument order, each compared exactly against
// the table (driver/options.cpp): "-debug", "-version", "-automate",
// "-plan", "-special <tag>", "-httpd-conf <path>" (the web server's main
// configuration file, read as the server reads it instead of probing the
// usual places), "-answers <file>", "-status" and "-help"; anything else is
// passed over. "-debug" sets log's level; "-version" prints the version,
// "-help" every option and the files a run reads and writes, and an option
// without its argument "Usage: install <option> <argument>", on the console.
// Nothing is done when argv is null or argc < 2.
option_outcome parse_options(logger* log, char** argv, int argc);

// True when name stands in argv as an option (not as the argument of one),
// for the checks made before the options are read. False for null.
bool option_given(char** argv, int argc, const char* name);

// The program's base name (argv[0] without directory, cut at its first dot);
// "" until set.
const char* program_base_name();
void set_program_base_name(const char* name);
// Non-zero when "-automate" was given.
int automate_mode();
// Non-zero when "-check" was given (also read by parse_options): the
// product's files are checked, not run (driver/package_check.h).
int check_mode();
// Non-zero when "-plan" was given: the start-up, the menu and the questions
// run as usual, then the action's copy script is printed as a plan instead
// of run (copyscript/copy_plan.h), and init WFile lines print what they
// would write. Nothing changes on disk but the log.
int plan_mode();
// The tag given after "-special", or nullptr.
const char* special_tag();
// The file given after "-answers", or nullptr.
const char* answers_path();
// Non-zero when "-status" was given: the exit status then tells what
// happened (driver/run_status.h).
int status_mode();
