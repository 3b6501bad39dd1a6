// Text helpers over terminated byte texts, used everywhere instead of raw libc
// calls. Every helper accepts null arguments and then returns a neutral result
// (0, -1, nullptr, or its destination unchanged); every copy into a caller's
// buffer takes the buffer's size (terminator included) and never writes past
// it. No helper logs or reports errors.
//
// Heap texts handed out (str_dup, str_dup_n, str_append_heap, list pieces) are
// malloc'd: release them with free() or str_free().
#pragma once

#include <cstdarg>
#include <cstdio>
#include <string>

// Bounds used throughout the program: a path keeps at most 255 characters, a
// line, value, prompt or log message at most 999.
inline constexpr int kPathSize = 256;
inline constexpr int kPathMax = kPathSize - 1;
inline constexpr int kLineSize = 1000;
inline constexpr int kLineMax = kLineSize - 1;

// ---- copies and appends -------------------------------------------------

// Copies at most size-1 characters and terminates; returns the count copied.
// Null destination or size < 1: nothing, 0. Null source: empty text, 0.
int str_copy(char* dest, const char* src, int size);
// Appends so the result holds at most size-1 characters; returns dest
// (nullptr for a null dest or size 0).
char* str_append(char* dest, const char* src, int size);
// Like str_append but keeps one more byte in reserve: at most size-2
// characters. Returns the new length; 0 for null dest/src or size < 1.
int str_append_short(char* dest, const char* src, int size);
// Inserts prefix before dest in place; nullptr when either is null or the two
// lengths together reach size.
char* str_prepend(char* dest, const char* prefix, int size);
// Grows a heap text (nullptr counts as empty) by src with realloc; returns the
// new text, or the old one when src is null or memory runs out.
char* str_append_heap(char* text, const char* src);
// Heap copy holding at most n-1 characters of src (callers pass length + 1);
// nullptr for a null src or a negative n.
char* str_dup_n(const char* src, int n);
// Copies src up to its first character in delims (at most size-1); returns the
// length copied, 0 for a null src or dest.
int str_copy_until(const char* src, const char* delims, char* dest, int size);
// Replaces every occurrence of pattern by replacement (null counts as "") into
// out, cut at size-1 characters (out may be text itself; an empty pattern
// matches nothing). Returns out; nullptr for a null text, pattern or out.
char* str_replace_all(const char* text, const char* pattern, const char* replacement, char* out,
                      int size);

// ---- compares and searches ----------------------------------------------

// Compare folding A-Z to a-z; -1 when either is null.
int str_icmp(const char* a, const char* b);
// strcmp / strncmp; -1 when either is null.
int str_cmp(const char* a, const char* b);
int str_ncmp(const char* a, const char* b, int n);
// Case-insensitive compare of at most n characters; -1 for null, 0 for n 0.
int str_nicmp(const char* a, const char* b, int n);
// Folds one byte: A-Z to a-z, everything else unchanged.
char str_fold(char c);
const char* str_chr(const char* text, int c);
const char* str_str(const char* text, const char* pattern);
// Case-insensitive first / last position of pattern in text, or nullptr.
const char* str_istr(const char* text, const char* pattern);
const char* str_irstr(const char* text, const char* pattern);
// Position after the common part when text begins with prefix, else text.
const char* str_skip_prefix(const char* text, const char* prefix);

// ---- in-place edits ---------------------------------------------------------

// Skips leading blanks and cuts trailing CR, LF and blanks in place; returns
// the first kept character (inside text), or nullptr for null.
char* str_trim(char* text);
// Re-entrant tokeniser: starts at text, or at *cont when text is null; skips
// runs of delims, terminates the token in place and stores where to go on
// (nullptr at the end). Returns the token, nullptr when none is left or cont
// is null.
char* str_token(char* text, const char* delims, char** cont);
char* str_lower(char* text);
char* str_upper(char* text);
char* str_replace_char(char* text, char from, char to);
char* str_separators_to(char* text, char sep);

// ---- small wrappers ---------------------------------------------------------

void str_free(char** text);
int str_len(const char* text);
int str_cspn(const char* text, const char* reject);
int str_atoi(const char* text);
long str_atol(const char* text);
double str_atof(const char* text);
unsigned long str_strtoul(const char* text, char** end, int base);
char* str_dup(const char* text);
char* str_cpy(char* dest, const char* src);
char* str_cat(char* dest, const char* src);
const char* str_or_empty(const char* text);

// ---- true and false words ---------------------------------------------------

// 1 for "true", "yes", "y", "on", "checked", "selected" (any case) or a text
// whose atoi value is non-zero; 0 otherwise, also for null.
int str_is_true(const char* text);
// 1 for "false", "no", "n", "off" (any case), or a text whose first or second
// character is a digit and whose atoi value is 0; 0 otherwise.
int str_is_false(const char* text);

// ---- numbers, streams, system -------------------------------------------

// Inserts "," between groups of three digits of the integer part of the
// number in text (after blanks and a sign), keeping at most max_len
// characters: text's buffer holds max_len + 1 bytes. Returns text.
char* str_group_thousands(char* text, int max_len);
// A text on a stream as a native 32-bit length and that many bytes. Reading
// gives a heap text (nullptr on failure); writing gives 1 / 0.
char* str_read_counted(FILE* stream);
int str_write_counted(FILE* stream, const char* text);
// The system's text for an error number into buffer (limit 1000); "" without
// a buffer. str_last_error does the same for the current errno.
const char* str_error_text(int err, char* buffer, int size);
const char* str_last_error(char* buffer, int size);
// ", <system text>" for a log line when err is set, else "".
std::string str_error_suffix(int err);
// An error line: format and args formatted (at most 999 characters), then,
// when err is not 0, ", " and the system's text for it; the whole cut at
// 999 characters. Every error line that carries the system's reason is made
// here.
std::string str_error_line(int err, const char* format, va_list args);
void sleep_ms(long ms);
