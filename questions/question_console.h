// The console the questions talk on: the operator's answers come from one
// input stream and prompts go to one output stream, standard input and
// output unless a caller (a test, say) points them elsewhere.
#pragma once

#include <cstdio>

// Uses in and out from now on; a null stream means standard input / output.
// The streams stay the caller's.
void question_set_streams(FILE* in, FILE* out);

// Writes text as it is; nothing for null.
void question_print(const char* text);

// Flushes the output, then reads one line into buffer: the line end is kept,
// a line longer than size-1 characters is cut there and the rest of it is
// read and dropped, so it never answers the next question. 1 when a line (or
// a last line without line end) was read; 0 at the end of input or for a
// null buffer or size < 2.
int question_read_line(char* buffer, int size);
