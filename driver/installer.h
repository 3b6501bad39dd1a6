// The program's entry: creates the log and the settings store, forms the
// names of the installer's own files from the working directory and the
// program's base name, reads the command line, loads the run-time settings
// and the init file, runs the init commands, hands over to the menu, and
// frees everything at the end.
#pragma once

#include "foundation/logger.h"

inline constexpr const char* kInstallerVersion = "1.0d";

// The whole run. Returns 0; "-version" and a "-special" without a tag end
// the process themselves (status 0 and 1).
int run_installer(int argc, char** argv);

// The command-line pass: "-debug", "-version", "-automate", "-special <tag>",
// "-httpd-conf <path>" (the web server's main configuration file; without a
// path a usage line and exit status 1), compared exactly; anything else is passed over. Nothing is done when argv
// is null or argc < 2.
void parse_options(logger* log, char** argv, int argc);

// Process-wide state read by the menu and the action flows.
// The program's base name (argv[0] without directory, cut at its first dot).
const char* program_base_name();
// Non-zero when "-automate" was given.
int automate_mode();
// The tag given after "-special", or nullptr.
const char* special_tag();
