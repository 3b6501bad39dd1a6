// The installer's face on the console: the banner, the main menu and its
// loop, and "blurb.txt" after an install, written and read through
// foundation/console.h.
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
// Exit and the end of input are recorded as the run's outcome
// (driver/run_status.h); an action records its own.
void run_menu(ini_store* store);
