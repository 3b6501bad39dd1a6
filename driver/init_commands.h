// The init commands: each record of the loaded init file, carried out against
// the settings store in file order before the banner. This is how the host's
// facts (web-server user, group and directories, dates, file contents,
// whether paths exist) become plain settings.
#pragma once

#include "environment/init_file.h"
#include "settings/ini_store.h"

// Runs every command of list whose condition holds. A record with an expected
// value runs only when that value equals (exactly) the condition setting's
// value, or the condition word itself when no such setting exists; with no
// condition word it is skipped. Failures are reported (log, or "ERROR: %s\n"
// on standard output for the web-server commands) and never stop the loop.
// Nothing for a null store or list.
void run_init_commands(ini_store* store, init_list* list);
