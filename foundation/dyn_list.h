// dyn_list: the program's one container, a growable array of untyped pointers
// with a built-in cursor. The list owns its slots, never its elements, unless
// it is freed or cleared with a destructor (or list_free_all / list_clear_all,
// which free() each element). Every operation accepts a null list and then
// does nothing and returns 0 or nullptr.
//
// Growth is linear: `step` slots at a time (10 for a new list), no doubling.
// The cursor is the index the next list_next returns; -1 means past the end
// or not positioned. Iteration idiom: list_get(l, 0), then list_next(l) until
// it yields nullptr.
#pragma once

#include <cstdio>
#include <cstdlib>

struct dyn_list {
  int capacity = 0;        // slots allocated
  int step = 10;           // slots added by each growth
  int count = 0;           // slots in use, at the front
  int cursor = -1;         // next index list_next returns, -1 none
  void** items = nullptr;  // `capacity` slots (realloc'd); unused ones are null

  dyn_list() = default;
  dyn_list(const dyn_list&) = delete;
  dyn_list& operator=(const dyn_list&) = delete;
  ~dyn_list() { std::free(items); }
};

using list_destructor = void (*)(void** slot);
using list_compare = int (*)(const void* slot_a, const void* slot_b);

dyn_list* list_create();
// Frees slots and record and clears *list; elements untouched.
void list_free(dyn_list** list);
// free() on every element, then list_free.
void list_free_all(dyn_list** list);
// destructor(&slot) for each slot from index 0, then list_free.
void list_free_with(dyn_list** list, list_destructor destructor);
// count 0, cursor -1; slots and elements untouched. Returns list.
dyn_list* list_reset(dyn_list* list);
void list_clear_all(dyn_list* list);
void list_clear_with(dyn_list* list, list_destructor destructor);
// Makes room for `capacity` slots in one step, then sets step (5 when < 1).
void list_reserve(dyn_list* list, int capacity, int step);

// 1 / 0. A null element is never stored. Insert grows before it checks the
// index, and moves a cursor at or after index along with its element.
int list_append(dyn_list* list, void* element);
int list_insert(dyn_list* list, void* element, int index);
int list_insert_at_cursor(dyn_list* list, void* element);

// Element at index (nullptr when out of range); the cursor moves past it.
void* list_get(dyn_list* list, int index);
void* list_next(dyn_list* list);
// Steps the cursor back then gets; repeated calls return the same element.
void* list_prev(dyn_list* list);
// Takes the element out (not freed) and returns it, nullptr when out of range.
void* list_remove(dyn_list* list, int index);
void* list_remove_before_cursor(dyn_list* list);

void list_rewind(dyn_list* list);
dyn_list* list_unposition(dyn_list* list);
void list_seek(dyn_list* list, int index);
void list_skip(dyn_list* list);
void list_back(dyn_list* list);
int list_count(const dyn_list* list);
int list_cursor(const dyn_list* list);

// Shallow copy: same capacity, step, count and cursor; elements shared.
dyn_list* list_copy(const dyn_list* list);
// Appends source's elements (shallow) to dest; dest's step is left at the
// growth it needed.
void list_append_all(dyn_list* dest, const dyn_list* source);
void list_sort(dyn_list* list, list_compare compare);
// strcmp of two slots holding texts.
int list_compare_text(const void* slot_a, const void* slot_b);
void list_reverse(dyn_list* list);

// Appends heap copies of the runs of text between delimiter characters (runs
// of delimiters collapse); returns the number of pieces, 0 for null input.
int list_split(dyn_list* list, const char* text, const char* delims);
// Appends every line of stream as a heap text, cut at its first CR or LF
// (read in 999-byte pieces; an empty line keeps its line end). Returns the
// number of lines appended.
int list_read_lines(dyn_list* list, FILE* stream);
// A new list of the file's lines, or nullptr when it cannot be opened.
dyn_list* list_load_lines(const char* path);
dyn_list* list_load_lines_sized(const char* path, int capacity, int step);
