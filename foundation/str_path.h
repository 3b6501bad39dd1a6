// Path helpers: both "/" and "\" are separators on input, the separator
// (default "/") on output. Null-safe and bounded like the text helpers.
#pragma once

#include <cstdio>

// ---- paths --------------------------------------------------------------

// Sets the separator str_path_join writes ("/" by default).
void str_set_separator(char sep);
// Appends name to the path in dest with exactly one separator between, every
// "/" and "\" written as the separator. Returns dest, nullptr when empty.
char* str_path_join(char* dest, const char* name, int size);
// What follows the last separator of path, cut at its first dot.
char* str_base_name(char* dest, const char* path, int size);
// Moves the last component into name and cuts path at that separator.
char* str_split_path(char* path, char* name, int size);
// In place: keep what follows the last separator.
char* str_strip_dir(char* path);
// In place: cut at the last dot after the last separator (a leading dot stays).
char* str_strip_ext(char* path);
// Text after the first dot of the last component into out; its length, 0 when
// there is none.
int str_get_ext(char* out, const char* path, int size);
// Absolute directory of path (relative paths start at the working directory),
// "." and ".." resolved, "/" separators, no trailing separator except for a
// root ("/", "C:/"). dest is left as it is for a null path; nullptr when the
// working directory is unknown.
char* str_abs_dir(char* dest, const char* path, int size);
char* str_getcwd(char* buffer, int size);
char* str_etc_dir(char* buffer, int size);
