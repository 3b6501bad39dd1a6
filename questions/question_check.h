// The question file as "install -check" sees it: each line of a section fed
// to the loader's line parser in the record slot the loader would use (a
// rejected line leaves its fields there for the next one), and once more on
// its own to see what it takes over; then each section's Loop questions.
#pragma once

#include <string>

#include "foundation/check_report.h"

// Checks the question file at path (named `file` in messages). Reports the
// file not readable; lines outside sections and sections given twice;
// unknown type words; lines with a field missing; what a line takes over
// from a rejected one above it; Loop indexes that are no question of their
// section, Loops that go to themselves or forward, and Loops that would
// repeat for ever under -automate; Error texts with references outside
// [upgrade]. Records the sections in report->sections and in report->uses
// what each question writes, refers to and reads. False when the file cannot
// be read (reported), or for null.
bool question_check_file(const char* path, const std::string& file, check_report* report);
