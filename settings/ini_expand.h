// Substitution of settings into texts. A reference is "$(", a name running to
// the next ")" (at most 999 characters are looked up), and the ")".
//
// ini_expand_refs is the one expander; the two kinds of text expansion are it
// with a policy for references whose setting gives no value:
//   ini_expand          drops them (prompts, the blurb, paths of the flows);
//   copy-script fields  keep them as written.
// ini_process_replaceable rewrites the store's own values once at start.
#pragma once

#include <string>
#include <vector>

#include "settings/ini_store.h"

enum class ini_unknown_refs { drop, keep };

// Copies text into out (out_size bytes, always terminated when out_size > 0)
// with each reference replaced by ini_get of its name (exact case, first
// value, association fall-back; masked values in plain). A name that gives no
// value expands to nothing (drop) or stays "$(name)" as written (keep).
// Inserted values are not expanded again. An unclosed "$(" ends the text
// (drop) or is copied as written (keep). Output is cut at out_size - 1
// characters. Returns the number of characters written; 0 and out untouched
// for a null store, text or out, or out_size 0.
int ini_expand_refs(ini_store* store, const char* text, char* out, unsigned out_size,
                    ini_unknown_refs policy);

// The names of the references in text, in order, as ini_expand_refs reads
// them (an unclosed "$(" is no reference). Empty for null.
std::vector<std::string> ini_reference_names(const char* text);

// ini_expand_refs with the drop policy.
void ini_expand(ini_store* store, const char* text, char* out, unsigned out_size);

// Resolves references between the store's values, setting by setting, value
// by value, in place (fixed settings too; no setting or value is created or
// removed). A name matched ignoring the case of A-Z takes the first value of
// its first setting when that one is INI_REPLACEABLE, else the empty text;
// names no setting bears stay. References brought in by a replacement are
// resolved in turn; values are cut at 999 characters. A value whose
// references never settle (it refers to itself, directly or through a cycle)
// is left as it was before the pass, with an error line in the log.
// 1 when the pass ran; 0 for a null store or one not set up.
int ini_process_replaceable(ini_store* store);
