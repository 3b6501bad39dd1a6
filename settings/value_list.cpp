#include "settings/value_list.h"

#include "foundation/str_text.h"

namespace {

bool has_cursor(const value_list* list) {
  return list->cursor >= 0 && list->cursor < static_cast<int>(list->items.size());
}

// Takes the value at index out of the list and keeps the cursor on the value
// it was on (or nowhere when that value was the one removed and was last).
char* remove_at(value_list* list, int index) {
  char* text = list->items[index].release();
  list->items.erase(list->items.begin() + index);
  if (index < list->cursor) --list->cursor;
  if (!has_cursor(list)) list->cursor = -1;
  return text;
}

}  // namespace

value_list* value_list_create() { return new value_list(); }

void value_list_free(value_list** list) {
  if (list == nullptr) return;
  delete *list;
  *list = nullptr;
}

void value_list_rewind(value_list* list) {
  if (list == nullptr) return;
  list->cursor = list->items.empty() ? -1 : 0;
}

const char* value_list_current(const value_list* list) {
  if (list == nullptr || !has_cursor(list)) return nullptr;
  return list->items[list->cursor].get();
}

const char* value_list_advance(value_list* list) {
  if (list == nullptr || !has_cursor(list)) return nullptr;
  ++list->cursor;
  if (!has_cursor(list)) list->cursor = -1;
  return value_list_current(list);
}

int value_list_append(value_list* list, const char* text) {
  if (list == nullptr || text == nullptr) return 0;
  owned_text copy(str_dup(text));
  if (!copy) return 0;
  const int at = has_cursor(list) ? list->cursor + 1 : static_cast<int>(list->items.size());
  list->items.insert(list->items.begin() + at, std::move(copy));
  list->cursor = at;
  return 1;
}

char* value_list_remove_next(value_list* list) {
  if (list == nullptr || list->items.empty()) return nullptr;
  int victim = has_cursor(list) ? list->cursor + 1 : 0;
  if (victim >= static_cast<int>(list->items.size())) victim = 0;
  return remove_at(list, victim);
}

char* value_list_remove_current(value_list* list) {
  if (list == nullptr || list->items.empty()) return nullptr;
  if (!has_cursor(list)) return remove_at(list, 0);
  // The cursor index now names the value that followed the removed one.
  const int at = list->cursor;
  char* text = list->items[at].release();
  list->items.erase(list->items.begin() + at);
  if (!has_cursor(list)) list->cursor = -1;
  return text;
}

int value_list_replace_current(value_list* list, const char* text) {
  if (list == nullptr || text == nullptr || !has_cursor(list)) return 0;
  owned_text copy(str_dup(text));
  if (!copy) return 0;
  list->items[list->cursor] = std::move(copy);
  return 1;
}

const char* value_list_at(const value_list* list, int index) {
  if (list == nullptr || index < 0 || index >= static_cast<int>(list->items.size())) {
    return nullptr;
  }
  return list->items[index].get();
}

int value_list_count(const value_list* list) {
  return list == nullptr ? 0 : static_cast<int>(list->items.size());
}
