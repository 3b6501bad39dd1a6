// The console: the operator's answers come from one input stream, and every
// banner, menu, prompt, dot and message goes to one output stream, standard
// input and output unless a caller (a test, say) points them elsewhere.
#pragma once

#include <cstdio>

// Uses in and out from now on; a null stream means standard input / output.
// The streams stay the caller's.
void console_set_streams(FILE* in, FILE* out);

// Writes text as it is; nothing for null.
void console_print(const char* text);
// Formats into at most 999 characters, then writes; nothing for a null
// format.
void console_printf(const char* format, ...) __attribute__((format(printf, 1, 2)));
// Writes a line end unless the output is at the start of a line (nothing
// written yet, or the last text ended with one), so that what follows
// stands on a line of its own in the output, whatever was read meanwhile.
void console_end_line();
// Pushes what was written out to the operator.
void console_flush();

// Flushes the output, then reads one line into buffer: the line end is kept,
// a line longer than size-1 characters is cut there and the rest of it is
// read and dropped, so it never answers the next question. 1 when a line (or
// a last line without line end) was read; 0 at the end of input or for a
// null buffer or size < 2.
int console_read_line(char* buffer, int size);
