// The program's entry: creates the log and the settings store, forms the
// names of the installer's own files from the working directory and the
// program's base name, reads the command line, loads the run-time settings
// and the init file, runs the init commands, hands over to the menu, and
// frees everything at the end.
#pragma once

// The whole run; returns the exit status: 0, or what an option that ends
// the run asks for (driver/options.h), or 1 when, as root, the product's
// directory or one of its data files may be written by every account.
int run_installer(int argc, char** argv);
