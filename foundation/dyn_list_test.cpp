#include "foundation/dyn_list.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "foundation/str_text.h"

namespace {

// Distinct non-null elements for lists that do not own them.
int values[40];
void* element(int i) { return &values[i]; }

struct list_holder {
  dyn_list* list = list_create();
  ~list_holder() { list_free(&list); }
};

std::vector<std::string> texts_of(dyn_list* list) {
  std::vector<std::string> texts;
  for (void* item = list_get(list, 0); item != nullptr; item = list_next(list)) {
    texts.emplace_back(static_cast<char*>(item));
  }
  return texts;
}

TEST(DynList, GrowsByStepNotByDoubling) {
  list_holder h;
  EXPECT_EQ(h.list->capacity, 0);
  for (int i = 0; i < 10; ++i) ASSERT_EQ(list_append(h.list, element(i)), 1);
  EXPECT_EQ(h.list->capacity, 10);
  ASSERT_EQ(list_append(h.list, element(10)), 1);
  EXPECT_EQ(h.list->capacity, 20);
  EXPECT_EQ(list_count(h.list), 11);
  EXPECT_EQ(list_append(h.list, nullptr), 0);
}

TEST(DynList, ReserveSetsCapacityAndAFlooredStep) {
  list_holder h;
  list_reserve(h.list, 25, 0);
  EXPECT_EQ(h.list->capacity, 25);
  EXPECT_EQ(h.list->step, 5);
  list_reserve(h.list, 10, 7);  // already larger: only the step changes
  EXPECT_EQ(h.list->capacity, 25);
  EXPECT_EQ(h.list->step, 7);
}

TEST(DynList, InsertGrowsBeforeItChecksTheIndex) {
  list_holder h;
  for (int i = 0; i < 10; ++i) list_append(h.list, element(i));
  EXPECT_EQ(list_insert(h.list, element(20), 11), 0);
  EXPECT_EQ(h.list->capacity, 20);
  EXPECT_EQ(list_insert(h.list, element(20), 10), 1);
  EXPECT_EQ(list_get(h.list, 10), element(20));
  EXPECT_EQ(list_insert(h.list, element(21), -1), 0);
}

TEST(DynList, InsertMovesTheCursorWithItsElement) {
  list_holder h;
  for (int i = 0; i < 3; ++i) list_append(h.list, element(i));
  list_seek(h.list, 1);
  list_insert(h.list, element(9), 0);
  EXPECT_EQ(list_cursor(h.list), 2);
  EXPECT_EQ(list_next(h.list), element(1));
  list_unposition(h.list);
  list_insert(h.list, element(8), 0);
  EXPECT_EQ(list_cursor(h.list), -1);
  EXPECT_EQ(list_insert_at_cursor(h.list, element(7)), 0);
}

TEST(DynList, CursorWalkAndItsKeptOddities) {
  list_holder h;
  for (int i = 0; i < 3; ++i) list_append(h.list, element(i));
  EXPECT_EQ(list_get(h.list, 2), element(2));
  EXPECT_EQ(list_cursor(h.list), -1);
  EXPECT_EQ(list_next(h.list), nullptr);
  // list_prev from the end returns the last element, then the same again.
  EXPECT_EQ(list_prev(h.list), element(2));
  EXPECT_EQ(list_prev(h.list), element(2));
  list_unposition(h.list);
  list_back(h.list);
  EXPECT_EQ(list_cursor(h.list), -2);
  EXPECT_EQ(list_next(h.list), nullptr);
  list_rewind(h.list);
  list_skip(h.list);
  list_skip(h.list);
  EXPECT_EQ(list_cursor(h.list), 2);
  list_skip(h.list);
  EXPECT_EQ(list_cursor(h.list), -1);
  list_seek(h.list, 5);
  EXPECT_EQ(list_cursor(h.list), -1);
  EXPECT_EQ(list_get(h.list, 3), nullptr);
}

TEST(DynList, RemoveShiftsAndKeepsTheCursorOnItsElement) {
  list_holder h;
  for (int i = 0; i < 4; ++i) list_append(h.list, element(i));
  list_seek(h.list, 3);
  EXPECT_EQ(list_remove(h.list, 1), element(1));
  EXPECT_EQ(list_cursor(h.list), 2);
  EXPECT_EQ(list_next(h.list), element(3));
  EXPECT_EQ(list_remove(h.list, 7), nullptr);
  EXPECT_EQ(list_remove_before_cursor(h.list), element(3));  // cursor -1: the last
  list_seek(h.list, 1);
  EXPECT_EQ(list_remove_before_cursor(h.list), element(0));
  EXPECT_EQ(list_remove(h.list, 0), element(2));
  EXPECT_EQ(list_count(h.list), 0);
  EXPECT_EQ(list_cursor(h.list), -1);
}

TEST(DynList, CopyAndAppendAllAreShallow) {
  list_holder a, b;
  for (int i = 0; i < 12; ++i) list_append(a.list, element(i));
  list_get(a.list, 4);
  dyn_list* copy = list_copy(a.list);
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->capacity, 20);
  EXPECT_EQ(copy->cursor, 5);
  EXPECT_EQ(list_get(copy, 11), element(11));
  list_free(&copy);
  EXPECT_EQ(copy, nullptr);

  for (int i = 0; i < 5; ++i) list_append(b.list, element(20 + i));
  list_append_all(b.list, a.list);  // needs 5 - 10 + 12 = 7 more slots
  EXPECT_EQ(b.list->capacity, 17);
  EXPECT_EQ(b.list->step, 7);
  EXPECT_EQ(list_count(b.list), 17);
  EXPECT_EQ(list_get(b.list, 16), element(11));
}

TEST(DynList, SortReverseAndSplit) {
  dyn_list* list = list_create();
  EXPECT_EQ(list_split(list, ",b,,a,", ","), 2);
  EXPECT_EQ(list_split(list, " c\td ", " \t"), 2);
  list_sort(list, list_compare_text);
  EXPECT_EQ(texts_of(list), (std::vector<std::string>{"a", "b", "c", "d"}));
  list_reverse(list);
  EXPECT_EQ(texts_of(list), (std::vector<std::string>{"d", "c", "b", "a"}));
  EXPECT_EQ(list_split(list, ",,,", ","), 0);
  list_free_all(&list);
  EXPECT_EQ(list, nullptr);
}

TEST(DynList, ReadLinesKeepsItsDocumentedShapes) {
  std::string long_line(1200, 'x');
  std::string content = "one\r\n\ntwo\rlost\n" + long_line + "\nlast";
  FILE* stream = fmemopen(content.data(), content.size(), "r");
  ASSERT_NE(stream, nullptr);
  dyn_list* list = list_create();
  EXPECT_EQ(list_read_lines(list, stream), 6);
  fclose(stream);
  std::vector<std::string> lines = texts_of(list);
  ASSERT_EQ(lines.size(), 6u);
  EXPECT_EQ(lines[0], "one");
  EXPECT_EQ(lines[1], "\n");   // an empty line keeps its line end
  EXPECT_EQ(lines[2], "two");  // text after a CR is lost
  EXPECT_EQ(lines[3], std::string(998, 'x'));
  EXPECT_EQ(lines[4], std::string(202, 'x'));
  EXPECT_EQ(lines[5], "last");
  list_free_with(&list, [](void** slot) { str_free(reinterpret_cast<char**>(slot)); });
}

TEST(DynList, LoadLinesFromAMissingFileGivesNone) {
  EXPECT_EQ(list_load_lines("/nonexistent/dir/file"), nullptr);
  EXPECT_EQ(list_load_lines_sized(nullptr, 5, 5), nullptr);
}

TEST(DynList, NullListIsAlwaysNothingDone) {
  dyn_list* none = nullptr;
  EXPECT_EQ(list_append(none, element(0)), 0);
  EXPECT_EQ(list_get(none, 0), nullptr);
  EXPECT_EQ(list_next(none), nullptr);
  EXPECT_EQ(list_prev(none), nullptr);
  EXPECT_EQ(list_remove(none, 0), nullptr);
  EXPECT_EQ(list_count(none), 0);
  EXPECT_EQ(list_cursor(none), 0);
  EXPECT_EQ(list_copy(none), nullptr);
  EXPECT_EQ(list_split(none, "a", ","), 0);
  list_reserve(none, 5, 5);
  list_free(&none);
  list_free(nullptr);
  list_free_all(nullptr);
  list_sort(none, list_compare_text);
  list_append_all(none, none);
}

}  // namespace
