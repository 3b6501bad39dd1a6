// Sectioned text files (the question file, the copy script): lines read in
// pieces of at most 999 characters and trimmed; empty lines and lines that
// begin with "#" are skipped; a line that begins with "[" opens a section
// whose name is the rest of the line without a final "]", compared ignoring
// case. A wanted section ends at the next header or the end of the file.
#pragma once

#include <cstdio>
#include <functional>
#include <string_view>

// Hands each trimmed line of `section` to on_line (the text may be changed in
// place). 1 when the section was found, even empty; 0 otherwise or for null.
int section_file_read(FILE* stream, const char* section,
                      const std::function<void(char* line)>& on_line);

// Whether a trimmed line is a section header; *name is then the section it
// opens (the text after "[", a final "]" dropped). False for null.
bool section_file_header(const char* line, std::string_view* name);
// Whether two section names are the same, ignoring case.
bool section_file_same(std::string_view name, std::string_view wanted);
