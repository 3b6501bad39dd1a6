// What every file operation shares: the two step callbacks it reports to,
// its error line, and joining a directory and a name without ever cutting.
#pragma once

#include "foundation/str_text.h"

using file_step_callback = void (*)(const char* source, const char* destination, int is_file);

struct file_callback_pair {
  file_step_callback done = nullptr;
  file_step_callback failed = nullptr;
};

// Sets both step callbacks (either may be null).
void file_set_callbacks(file_step_callback done, file_step_callback failed);
// Sets both from pair; a null pair clears both.
void file_set_callback_pair(const file_callback_pair* pair);
// Fills pair with the current callbacks; nothing for a null pair.
void file_get_callbacks(file_callback_pair* pair);
// Calls the done (ok) or failed callback, when set.
void file_report(bool ok, const char* source, const char* destination, int is_file);

// dir joined with name (str_path_join: one separator between them) into
// dest, which holds kPathSize bytes. 1, or 0 with dest empty when either is
// null or the result would exceed 255 characters (logged, never cut short,
// so a long name can never stand for a shorter path).
int file_path_join(char* dest, const char* dir, const char* name);
// Logs the formatted message (999 characters at most) at error level,
// followed by ", " and the system's text when errno is set (str_error_line).
void file_error(const char* format, ...) __attribute__((format(printf, 1, 2)));
