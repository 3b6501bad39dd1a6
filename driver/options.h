// The command line and the three values it sets for the whole run: the
// program's base name, the automate flag and the special tag.
#pragma once

#include "foundation/logger.h"

inline constexpr const char* kInstallerVersion = "1.0d";

// What the command line asks for: go on with the run, or end it at once
// with a status ("-version": 0, an option without its argument: 1).
struct option_outcome {
  bool end = false;
  int status = 0;
};

// The command-line pass: "-debug", "-version", "-automate", "-special <tag>"
// and "-httpd-conf <path>" (the web server's main configuration file, read
// as the server reads it instead of probing the usual places), compared
// exactly; anything else is passed over. "-debug" sets log's level;
// "-version" prints the version, and "-special" or "-httpd-conf" without its
// argument a usage line, on the console. Nothing is done when argv is null
// or argc < 2.
option_outcome parse_options(logger* log, char** argv, int argc);

// The program's base name (argv[0] without directory, cut at its first dot);
// "" until set.
const char* program_base_name();
void set_program_base_name(const char* name);
// Non-zero when "-automate" was given.
int automate_mode();
// Non-zero when "-check" was given (also read by parse_options): the
// product's files are checked, not run (driver/package_check.h).
int check_mode();
// The tag given after "-special", or nullptr.
const char* special_tag();
