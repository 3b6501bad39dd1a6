// Shared by the fuzz targets. The readers under test take file paths, so each
// input is written to a file in a scratch directory private to the process
// (removed at exit); a debug-level log with a small rotation size sits there
// too, so every line a reader logs goes through the formatter and rotation.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// The input as text (it may hold any byte, NUL included).
std::string_view fuzz_text(const uint8_t* data, size_t size);

// Writes text to the file `name` in the scratch directory; returns its path.
std::string fuzz_write(const char* name, std::string_view text);

// Removes and returns the first line of text (without its line end); the
// whole text when it has no line end.
std::string_view fuzz_take_line(std::string_view& text);

// Opens the log once per process and makes it current.
void fuzz_open_log();

// Stops the run with a report when a property every input must keep fails.
void fuzz_require(bool holds, const char* what);
