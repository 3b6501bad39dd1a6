// Asking one question on the console and checking its answer. Prompts and
// answers go through foundation/console.h; every refusal is reported through
// question_set_error (question_error.h), whose text the caller prints.
#pragma once

#include "questions/question_file.h"

// Writes the default of question index into buffer (at most size-1
// characters): the current value of its setting, or "y" / "n" for a yes/no
// question by whether that value reads as true. Returns buffer; null, with
// buffer untouched, for a null argument, an index out of range, a set without
// store or a setting that gives no value.
char* question_default(const question_set* set, unsigned index, char* buffer, int size);

// Prints the prompt (the question text with settings substituted, then
// " [default]?", wrapped at 79 characters when longer than 80, then a blank)
// and reads one answer line into answer (at most size-1 characters; the rest
// of a longer line is dropped). Trailing blanks are trimmed, leading ones
// kept. 1 when answer holds the typed answer or, for an empty one, the
// default; also 1 with answer "q" at the end of input, so the caller quits
// instead of asking again. 0 with "You must enter an answer" when the answer
// and the default are empty; 0 at once for a null argument, size < 2 or an
// index out of range.
int question_ask(const question_set* set, unsigned index, char* answer, int size);

// Checks answer against the question's type, normalises it in place (one
// trailing "/" or "\" off a directory, a file name without directory and
// extension) and stores it under the question's setting ("true" / "false"
// for yes/no). 1 when accepted, stored or not (no store, a refused value);
// 0 with the reason as the question error: "Directory '%s' must exist",
// "File '%s' must exist", "Directory '%s' must be empty", "You must answer
// either Yes or No". 0 without a reason for a null argument or an index out
// of range.
int question_accept(const question_set* set, unsigned index, char* answer);
