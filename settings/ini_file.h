// Settings files: plain text, one "name value" line per setting, with
// "vhost <site>" ... "vend" blocks that apply only to one virtual host.
//
// Line rules (shared with the run-time settings file): lines are read in
// pieces of at most 999 characters, each piece a line; leading white space and
// trailing CR, LF and white space are dropped; empty lines and lines whose
// first character is "#" are skipped; the name runs to the first blank or
// tab, the value is the rest after the blanks and tabs that follow it.
#pragma once

#include <string>

struct ini_store;

// One parsed line. value is empty when the line holds a name alone.
struct ini_line {
  std::string name;
  std::string value;
};

// Parses one line read from a settings file. 1 when it holds a setting, 0 for
// an empty or comment line or a null text.
int ini_parse_line(const char* text, ini_line* out);

// Reads a settings file into the store with ini_set (unknown names are
// created under the store's options). A file name whose last component has no
// "." gets ".ini" appended. Fixed settings may be set while loading;
// INI_OPT_KEEP_FIXED is set afterwards. vhost: the site whose blocks apply
// (nullptr: the environment variable named by the setting "vhost_match").
// 1 when read; 0 for a null store or file name, a store not set up, or a file
// that can't be opened.
[[nodiscard]] int ini_load(ini_store* store, const char* file_name, const char* vhost);

// The value of the first line of the file named like the setting at index
// (vhost blocks mean nothing here), in one result buffer shared by every
// call and overwritten by the next hit. A miss leaves the buffer as it was, so
// it returns the previous hit, if any. nullptr when the buffer is empty, for
// a null store or name, a bad index or a file that can't be opened.
const char* ini_read_file_value(ini_store* store, const char* file_name, int index);

// Writes every value of every setting as "name value" lines into file_name
// exactly as named (truncating it). 1 when written, 0 otherwise.
int ini_save(ini_store* store, const char* file_name);
