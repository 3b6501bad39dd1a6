// The answers file ("-answers <file>"): settings that a run starts from,
// and where the answers of a successful action are kept for the next run.
//
// It holds "name value" lines by the run-time settings file's rules
// (settings/ini_file.h: trimmed, "#" comments and blank lines skipped, the
// value the rest of the line after the blanks that follow the name); a line
// longer than 999 characters or holding a NUL byte is refused rather than
// read in pieces. It is read and rewritten only under
// foundation/file_replace.h's rules (no link at its name, nobody else's).
#pragma once

#include <set>
#include <string>
#include <vector>

#include "settings/ini_store.h"

// One setting line of the file.
struct answer {
  std::string name;
  std::string value;
  int line = 0;  // 1-based
};

// A file as read: every line as it stands (line end cut) and its settings.
struct answers_file {
  std::string path;  // as given, for messages
  std::vector<std::string> lines;
  std::vector<answer> answers;
};

// Splits text (a whole file) into out's lines and answers. 1 when every line
// is readable; 0 with *error "<path>:<line>: <what>" at the first that is
// not. out->path names the file in the message.
int answers_parse(const std::string& text, answers_file* out, std::string* error);

// Reads the file at path into out (out->path = path). A file that does not
// exist reads as empty. 0 with *error (naming the file) when it cannot be
// read, is refused, or answers_parse refuses it.
int answers_read(const char* path, answers_file* out, std::string* error);

// Checks the answers against store and the names the product's data files
// know (driver/known_settings.h). An answer for a fixed setting is logged
// and dropped; one whose name is not known gives 0 with *error
// "<path>:<line>: unknown setting '<name>'".
int answers_check(ini_store* store, const std::set<std::string>& known, answers_file* file,
                  std::string* error);

// Sets each answer in store as an answer to a question would, in file
// order. A setting that an answer creates holds one value, so a later
// answer to its question replaces it.
void answers_apply(ini_store* store, const answers_file& file);

// The file's text with values kept: each value replaces the value on the
// last line of its name (the one a read ends with), or is added as a line
// "name value" at the end; every other line stays as it stands.
std::string answers_merge(const answers_file& file, const std::vector<answer>& values);

// Keeps in the file at path the current values of names (the settings an
// action's questions set): read again, merged, replaced whole. Masked
// settings, settings without a value and values that cannot stand on one
// line (a line break, more than 999 characters) are left out (logged).
// 1 when written; 0 with *error naming the file and the reason.
int answers_keep(ini_store* store, const char* path, const std::vector<std::string>& names,
                 std::string* error);
