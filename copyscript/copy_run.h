// Running a loaded copy script: each line's control decides whether it
// applies, its operation is carried out through the file operations, and
// what was done is counted. A failing line never undoes earlier lines.
#pragma once

#include <string>

#include "copyscript/copy_script.h"

// The first line of a run that failed: its index, -1 when none did, and why:
// the text of an Error line, else the last error line logged while it ran
// (the system's reason included), else "nothing matched it".
struct copy_first_failure {
  int index = -1;
  std::string why;
};

// Runs every line in file order. *files_out (may be null) receives the sum
// of the positive line results and *bytes_out (may be null) the bytes the
// copies wrote; both start at 0; *first_failure (may be null) the first
// failing line. Returns 1 when every line was processed (failures included
// when stop_on_fail is 0), 0 when it stopped at a failing line (everything
// done before stays) or the script is null.
int copy_script_run(copy_script* script, int* files_out, unsigned* bytes_out, int stop_on_fail,
                    copy_first_failure* first_failure = nullptr);

// Runs one line. Returns the number of things done (files copied or
// removed, entries changed, 1 for a single operation), 0 on failure or for
// an index out of range, -1 when its control setting says no. Bytes copied
// are added to *bytes_out when given.
int copy_line_run(copy_script* script, int index, unsigned* bytes_out);

// Whether the line's control setting lets it run: no control setting, or
// one that is not set, lets it; with a comparison (a setting's value, else
// the text itself) the two must be equal ignoring case; without one the
// setting must read as true.
bool copy_line_allowed(ini_store* store, const copy_line& line);

// Ini templates are read in pieces of at most 2,999 bytes; each piece is one
// line of the written file.
inline constexpr int k_template_line_size = 3000;
// One piece of an Ini template as written: trimmed, settings expanded
// (unknown references kept), "\n" added.
std::string copy_template_line(copy_script* script, char* piece);

// The user and group ids a Chown line names ("user:group", or one name for
// both, settings expanded); -1 for a name this host does not know.
void copy_owner_ids(copy_script* script, const copy_line& line, int* uid, int* gid);
// The mode a Chmod line names: its octal digits, taken as they stand, low
// 16 bits kept.
int copy_line_mode(const copy_line& line);

// The text of the last failing "Error" line, "" when none failed yet. Stays
// valid until the next failing "Error" line.
const char* copy_last_error();
