// Sectioned text files (the question file, the copy script): lines read in
// pieces of at most 999 characters and trimmed; empty lines and lines that
// begin with "#" are skipped; a line that begins with "[" opens a section
// whose name is the rest of the line without a final "]", compared ignoring
// case. A wanted section ends at the next header or the end of the file.
#pragma once

#include <cstdio>
#include <functional>

// Hands each trimmed line of `section` to on_line (the text may be changed in
// place). 1 when the section was found, even empty; 0 otherwise or for null.
int section_file_read(FILE* stream, const char* section,
                      const std::function<void(char* line)>& on_line);
