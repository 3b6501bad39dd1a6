// The last question error: one process-wide text shared by the loader and
// the walk, kept from the failing call until the caller prints it.
#pragma once

// Formats the message (999 characters at most) and makes it the last
// question error. When errno is set, the message gains ", " and the
// system's reason; it is logged at error level either way. errno is left
// as it was. A null format does nothing.
void question_set_error(const char* format, ...) __attribute__((format(printf, 1, 2)));

// The last question error, "" before the first; valid until the next
// question_set_error.
const char* question_last_error();
