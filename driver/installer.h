// The program's entry: creates the log and the settings store, forms the
// names of the installer's own files from the working directory and the
// program's base name, reads the command line, loads the run-time settings,
// the init file and the answers file ("-answers"), runs the init commands
// between two settings of the answers, hands over to the menu, and frees
// everything at the end.
#pragma once

// The whole run; returns the exit status: 0, or what an option that ends
// the run asks for (driver/options.h), or 1 (4 with "-status") when, as
// root, the product's directory or one of its data files may be written by
// every account. With "-status", the run's outcome (driver/run_status.h),
// whose reason is printed first as "Exit status <n>: <reason>".
int run_installer(int argc, char** argv);
