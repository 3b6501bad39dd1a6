// The copy script as "install -check" sees it: each line of a section fed
// to the loader's line parser, checked against what the run of its
// operation does; and the templates that its Ini lines render.
#pragma once

#include <string>

#include "foundation/check_report.h"
#include "settings/ini_store.h"

// Checks the copy script at path (named `file` in messages). Reports the
// file not readable; lines outside sections and sections given twice;
// unknown operation words; lines with a required field missing; Error lines
// without a message; RFile lines; Chmod modes that are not octal; Chown of a
// literal user or group this host does not know (warnings); copy
// destinations that end in a separator or have no directory part; copies
// into the source's own directory; wildcards in Rename and MkDir paths;
// removals whose source ends in a separator. Records the sections in
// report->sections, the templates of Ini lines (paths filled in from store,
// when they can be) in report->templates, and in report->uses what each line
// writes, refers to and reads. False when the file cannot be read (reported), or
// for a null path or report.
bool copy_check_file(ini_store* store, const char* path, const std::string& file,
                     check_report* report);

// Reads the template that the Ini line at `place` renders (place.name, its
// path), named `label` in messages, as the Ini operation reads it, and
// records its references. A template that cannot be read is reported at
// place. Nothing for null.
void copy_check_template(const check_place& place, const std::string& label, check_report* report);
