// Wildcard matching with "*" (any run of characters) and "?" (any one
// character), and its list form for texts holding several names or patterns
// separated by runs of blanks, tabs and commas.
//
// The matcher keeps two deliberate quirks of its algorithm:
//   - the first character after a run of stars (the anchor) is located in
//     the text ignoring letter case, even in exact mode, before the rest is
//     matched in the caller's mode;
//   - a "?" right after a star is such an anchor and so matches only a
//     literal "?" in the text ("a*?c" does not match "abxc").
// Matching takes time proportional to text length times pattern length at
// worst, never exponential, and allocates nothing for patterns of up to 16
// runs of stars.
#pragma once

// 1 when text matches pattern, 0 otherwise (also when either is null). With
// exact set letters compare exactly, else A-Z and a-z are taken as equal.
// An empty pattern matches only the empty text.
int wild_match_core(const char* text, const char* pattern, int exact);

// Case-sensitive match; the pattern "*" alone accepts every name.
int wild_match(const char* name, const char* pattern);
// Case-insensitive match; the pattern "*" alone accepts every name.
int wild_match_nocase(const char* name, const char* pattern);

// 1 when any item of names matches any pattern of patterns (both split on
// runs of " ", "\t" and ","), exact resp. ignoring case; 0 when either is
// null or holds no item.
int wild_list_match(const char* names, const char* patterns);
int wild_list_match_nocase(const char* names, const char* patterns);
