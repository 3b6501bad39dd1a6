#include "foundation/dyn_list.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "foundation/file_guard.h"
#include "foundation/logger.h"
#include "foundation/str_path.h"
#include "foundation/str_text.h"

namespace {

constexpr int kReserveStepFloor = 5;
constexpr int kReadPieceSize = 999;

// Adds `step` zeroed slots. 0 when that gives no slots or memory runs out;
// the old slots are kept then.
int list_grow(dyn_list* list) {
  long long wanted = static_cast<long long>(list->capacity) + list->step;
  if (wanted <= 0) return 0;
  int capacity = wanted > INT_MAX ? 0 : static_cast<int>(wanted);
  void* grown = capacity == 0
                    ? nullptr
                    : std::realloc(list->items, sizeof(void*) * static_cast<size_t>(capacity));
  if (grown == nullptr) {
    log_error("Memory allocation error.");
    return 0;
  }
  list->items = static_cast<void**>(grown);
  for (int i = list->capacity; i < capacity; ++i) list->items[i] = nullptr;
  list->capacity = capacity;
  return 1;
}

bool in_range(const dyn_list* list, int index) {
  return list != nullptr && list->capacity > 0 && index >= 0 && index < list->count;
}

}  // namespace

dyn_list* list_create() { return new (std::nothrow) dyn_list(); }

void list_free(dyn_list** list) {
  if (list == nullptr) return;
  delete *list;
  *list = nullptr;
}

void list_free_all(dyn_list** list) {
  if (list == nullptr || *list == nullptr) return;
  list_clear_all(*list);
  list_free(list);
}

void list_free_with(dyn_list** list, list_destructor destructor) {
  if (list == nullptr || *list == nullptr) return;
  list_clear_with(*list, destructor);
  list_free(list);
}

dyn_list* list_reset(dyn_list* list) {
  if (list == nullptr) return nullptr;
  list->count = 0;
  list->cursor = -1;
  return list;
}

void list_clear_all(dyn_list* list) {
  if (list == nullptr) return;
  for (int i = 0; i < list->count; ++i) {
    std::free(list->items[i]);
    list->items[i] = nullptr;
  }
  list_reset(list);
}

void list_clear_with(dyn_list* list, list_destructor destructor) {
  if (list == nullptr) return;
  if (destructor != nullptr) {
    for (int i = 0; i < list->count; ++i) destructor(&list->items[i]);
  }
  list_reset(list);
}

void list_reserve(dyn_list* list, int capacity, int step) {
  if (list == nullptr) return;
  if (list->capacity > 0) {
    if (list->capacity < capacity) {
      list->step = capacity - list->capacity;
      list_grow(list);
    }
  } else if (capacity > 0) {
    list->step = capacity;
    list_grow(list);
  }
  list->step = step < 1 ? kReserveStepFloor : step;
}

int list_insert(dyn_list* list, void* element, int index) {
  if (list == nullptr || element == nullptr) return 0;
  if (list->count == list->capacity && !list_grow(list)) return 0;
  if (index < 0 || index > list->count) return 0;
  std::memmove(&list->items[index + 1], &list->items[index],
               sizeof(void*) * static_cast<size_t>(list->count - index));
  list->items[index] = element;
  ++list->count;
  if (list->cursor >= index) ++list->cursor;
  return 1;
}

int list_append(dyn_list* list, void* element) {
  return list == nullptr ? 0 : list_insert(list, element, list->count);
}

int list_insert_at_cursor(dyn_list* list, void* element) {
  if (list == nullptr || list->cursor == -1) return 0;
  return list_insert(list, element, list->cursor);
}

void* list_get(dyn_list* list, int index) {
  if (!in_range(list, index)) return nullptr;
  list->cursor = index + 1 == list->count ? -1 : index + 1;
  return list->items[index];
}

void* list_next(dyn_list* list) {
  if (list == nullptr || list->cursor == -1) return nullptr;
  return list_get(list, list->cursor);
}

void* list_prev(dyn_list* list) {
  if (list == nullptr) return nullptr;
  list->cursor = list->cursor == -1 ? list->count - 1 : list->cursor - 1;
  return list_get(list, list->cursor);
}

void* list_remove(dyn_list* list, int index) {
  if (!in_range(list, index)) return nullptr;
  void* element = list->items[index];
  std::memmove(&list->items[index], &list->items[index + 1],
               sizeof(void*) * static_cast<size_t>(list->count - index - 1));
  --list->count;
  list->items[list->count] = nullptr;
  if (list->count == 0) {
    list->cursor = -1;
  } else if (list->cursor >= index) {
    --list->cursor;
  }
  return element;
}

void* list_remove_before_cursor(dyn_list* list) {
  if (list == nullptr) return nullptr;
  return list_remove(list, list->cursor == -1 ? list->count - 1 : list->cursor - 1);
}

void list_rewind(dyn_list* list) {
  if (list != nullptr) list->cursor = 0;
}

dyn_list* list_unposition(dyn_list* list) {
  if (list != nullptr) list->cursor = -1;
  return list;
}

void list_seek(dyn_list* list, int index) {
  if (list != nullptr && index < list->count) list->cursor = index;
}

void list_skip(dyn_list* list) {
  if (list == nullptr || list->cursor == -1) return;
  ++list->cursor;
  if (list->cursor >= list->count) list->cursor = -1;
}

void list_back(dyn_list* list) {
  if (list != nullptr && list->cursor != 0) --list->cursor;
}

int list_count(const dyn_list* list) { return list == nullptr ? 0 : list->count; }

int list_cursor(const dyn_list* list) { return list == nullptr ? 0 : list->cursor; }

dyn_list* list_copy(const dyn_list* list) {
  if (list == nullptr) return nullptr;
  dyn_list* copy = list_create();
  if (copy == nullptr) return nullptr;
  list_reserve(copy, list->capacity, list->step);
  if (copy->capacity < list->capacity) {
    list_free(&copy);
    return nullptr;
  }
  if (list->capacity > 0) {
    std::memcpy(copy->items, list->items, sizeof(void*) * static_cast<size_t>(list->capacity));
  }
  copy->count = list->count;
  copy->cursor = list->cursor;
  return copy;
}

void list_append_all(dyn_list* dest, const dyn_list* source) {
  if (dest == nullptr || source == nullptr) return;
  int need = dest->count - dest->capacity + source->count;
  if (need >= 1) {
    dest->step = need;
    if (!list_grow(dest)) return;
  }
  if (source->count > 0) {
    std::memcpy(&dest->items[dest->count], source->items,
                sizeof(void*) * static_cast<size_t>(source->count));
  }
  dest->count += source->count;
}

void list_sort(dyn_list* list, list_compare compare) {
  if (list == nullptr || compare == nullptr || list->count < 2) return;
  std::qsort(list->items, static_cast<size_t>(list->count), sizeof(void*), compare);
}

int list_compare_text(const void* slot_a, const void* slot_b) {
  if (slot_a == nullptr || slot_b == nullptr) return 0;
  return str_cmp(*static_cast<char* const*>(slot_a), *static_cast<char* const*>(slot_b));
}

void list_reverse(dyn_list* list) {
  if (list == nullptr) return;
  for (int low = 0, high = list->count - 1; low < high; ++low, --high) {
    std::swap(list->items[low], list->items[high]);
  }
}

int list_split(dyn_list* list, const char* text, const char* delims) {
  if (list == nullptr || text == nullptr || delims == nullptr) return 0;
  int pieces = 0;
  const char* p = text;
  while (true) {
    p += std::strspn(p, delims);
    if (*p == '\0') break;
    size_t length = std::strcspn(p, delims);
    char* piece = str_dup_n(p, static_cast<int>(length) + 1);
    if (piece != nullptr && list_append(list, piece)) {
      ++pieces;
    } else {
      std::free(piece);
    }
    p += length;
  }
  return pieces;
}

int list_read_lines(dyn_list* list, FILE* stream) {
  if (list == nullptr || stream == nullptr) return 0;
  char buffer[kReadPieceSize];
  int lines = 0;
  while (std::fgets(buffer, sizeof buffer, stream) != nullptr) {
    // Cut as strtok on CR/LF would: the first token ends at its line end; a
    // piece that is only line-end characters has no token and is kept whole.
    size_t start = std::strspn(buffer, "\r\n");
    if (buffer[start] != '\0') buffer[start + std::strcspn(buffer + start, "\r\n")] = '\0';
    char* line = str_dup(buffer);
    if (line != nullptr && list_append(list, line)) {
      ++lines;
    } else {
      std::free(line);
    }
  }
  return lines;
}

namespace {

dyn_list* load_lines(const char* path, bool sized, int capacity, int step) {
  FILE* stream = file_open(path, "r");
  if (stream == nullptr) return nullptr;
  dyn_list* list = list_create();
  if (sized) list_reserve(list, capacity, step);
  list_read_lines(list, stream);
  file_close(&stream);
  return list;
}

}  // namespace

dyn_list* list_load_lines(const char* path) { return load_lines(path, false, 0, 0); }

dyn_list* list_load_lines_sized(const char* path, int capacity, int step) {
  return load_lines(path, true, capacity, step);
}
