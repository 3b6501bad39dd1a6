// value_list: the ordered values of one setting, with a cursor. The list owns
// its texts; each text keeps its address until it is removed or the list is
// freed, whatever else is added or removed around it.
//
// The cursor is on one value or nowhere (past the end, or the list is empty).
// Every operation accepts a null list and then does nothing and returns
// 0 or nullptr.
#pragma once

#include <cstdlib>
#include <memory>
#include <vector>

struct text_free {
  void operator()(char* text) const noexcept { free(text); }
};
// A malloc'd text, released with free().
using owned_text = std::unique_ptr<char, text_free>;

struct value_list {
  std::vector<owned_text> items;
  int cursor = -1;  // index of the current value, -1 nowhere
};

value_list* value_list_create();
// Frees every text and the list; clears *list. Null or null *list: nothing.
void value_list_free(value_list** list);

// Cursor onto the first value (nowhere when empty).
void value_list_rewind(value_list* list);
// The value at the cursor, nullptr when nowhere. Owned by the list.
const char* value_list_current(const value_list* list);
// Moves the cursor one value on and returns the value there; nullptr (cursor
// nowhere) past the last one, and also when the cursor was nowhere already.
const char* value_list_advance(value_list* list);
// Inserts a copy of text after the cursor (at the end when the cursor is
// nowhere); the cursor moves onto it. 1, or 0 for a null text.
int value_list_append(value_list* list, const char* text);
// Removes the value after the cursor, or the first one when the cursor is on
// the last value or nowhere. The cursor stays on its value. Returns the
// removed text for the caller to free(); nullptr when the list is empty.
char* value_list_remove_next(value_list* list);
// Removes the value at the cursor (the first one when the cursor is nowhere);
// the cursor moves onto the value that followed it. Caller free()s the result;
// nullptr when the list is empty.
char* value_list_remove_current(value_list* list);
// Puts a copy of text in place of the value at the cursor. 1, or 0 when the
// cursor is nowhere or text is null.
int value_list_replace_current(value_list* list, const char* text);
// The value at index (0 first), nullptr out of range; the cursor stays.
const char* value_list_at(const value_list* list, int index);
int value_list_count(const value_list* list);
