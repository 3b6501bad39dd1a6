// The installer's face on the console: the banner, the main menu and its
// loop, "blurb.txt" after an install, and the two step callbacks the action
// flows hand to the copy scripts (a dot per step, a message per failure).
// Output goes to the console's output stream, input comes a line at a time
// from its input stream (standard output and input unless redirected).
#pragma once

#include "settings/ini_store.h"

// The product's name: the setting "product", or "NONAME".
const char* product_name(ini_store* store);

void show_banner(ini_store* store);
void show_menu(ini_store* store);
// Prints "blurb.txt" from the working directory, each line trimmed and with
// settings substituted; nothing when the file cannot be opened.
void show_blurb(ini_store* store);

// The menu loop: banner once, then menu and choice until an action is done,
// "4" is chosen or the input ends. With a special tag the special action runs
// once without the menu. A typed 5 without a tag is not a recognised option.
void run_menu(ini_store* store);

// Step callbacks for the copy scripts: "." flushed at once, and
// "\nError: <system text>\n" for the current errno.
void copy_progress(const char* source, const char* destination, int is_file);
void copy_failure(const char* source, const char* destination, int is_file);
