#include "foundation/dyn_list.h"

#include <initializer_list>
#include <string>

#include "foundation/str_text.h"
#include "foundation/test_scratch.h"

namespace {

// Elements for lists that do not own them, shown by their numbers.
int values[20];
void* at(int i) { return &values[i]; }
dyn_list* numbered(int count) {
  dyn_list* list = list_create();
  for (int i = 0; i < count; ++i) list_append(list, at(i));
  return list;
}
// The given elements' numbers ("-" for none), in order, each followed by " ".
std::string shown(std::initializer_list<void*> elements) {
  std::string text;
  for (void* e : elements) text += (e ? std::to_string(static_cast<int*>(e) - values) : "-") + " ";
  return text;
}
std::string numbers(const dyn_list* list) {
  std::string text;
  for (int i = 0; i < list->count; ++i) text += shown({list->items[i]});
  return text;
}
// A list of texts, each followed by "|".
std::string texts(const dyn_list* list) {
  std::string text;
  for (int i = 0; i < list->count; ++i)
    text += static_cast<char*>(list->items[i]) + std::string("|");
  return text;
}

// Insert and remove keep the cursor on its element; list_prev from the end
// returns the last element, then the same again.
TEST(DynList, InsertRemoveAndTheCursor) {
  dyn_list* list = numbered(3);
  EXPECT_EQ(list_append(list, nullptr) + list_insert(list, at(9), 4) +
                list_insert(list, at(9), -1) + list_insert_at_cursor(list, at(9)),
            0);
  EXPECT_EQ(shown({list_get(list, 2), list_next(list), list_prev(list), list_prev(list),
                   list_get(list, 3)}),
            "2 - 2 2 - ");
  list_seek(list, 1);
  EXPECT_EQ(list_insert(list, at(9), 0) + list_insert_at_cursor(list, at(8)), 2);
  EXPECT_EQ(numbers(list), "9 0 8 1 2 ");
  EXPECT_EQ(shown({list_remove(list, 0), list_remove(list, 4), list_remove_before_cursor(list),
                   list_next(list)}),
            "9 - 8 1 ");
  list_unposition(list);
  EXPECT_EQ(shown({list_remove_before_cursor(list)}), "2 ");  // nowhere: the last one
  EXPECT_EQ(numbers(list), "0 1 ");
  list_rewind(list);
  list_skip(list);
  list_skip(list);
  EXPECT_EQ(list_cursor(list), -1);
  list_back(list);
  EXPECT_EQ(list_cursor(list), -2);
  list_free(&list);
  EXPECT_EQ(list, nullptr);
}

TEST(DynList, CopiesAreShallowAndTextsSplitSortAndReverse) {
  dyn_list* list = numbered(12);
  list_get(list, 4);
  dyn_list* copy = list_copy(list);
  EXPECT_EQ(list_cursor(copy), 5);
  list_append_all(copy, list);
  EXPECT_EQ(numbers(copy), "0 1 2 3 4 5 6 7 8 9 10 11 0 1 2 3 4 5 6 7 8 9 10 11 ");
  list_free(&copy);
  list_free(&list);
  list = list_create();
  EXPECT_EQ(list_split(list, ",b,,a,", ",") + list_split(list, " c\td ", " \t"), 4);
  EXPECT_EQ(list_split(list, ",,,", ","), 0);
  list_sort(list, list_compare_text);
  EXPECT_EQ(texts(list), "a|b|c|d|");
  list_reverse(list);
  EXPECT_EQ(texts(list), "d|c|b|a|");
  list_free_all(&list);
}

using DynListFile = scratch_test;

// Lines are cut at their first CR or LF and read 999 bytes at a time; an
// empty line keeps its line end.
TEST_F(DynListFile, LinesOfAFile) {
  write_file("lines", "one\r\n\ntwo\rlost\n" + std::string(1200, 'x') + "\nlast");
  dyn_list* list = list_load_lines(path("lines").c_str());
  EXPECT_EQ(texts(list),
            "one|\n|two|" + std::string(998, 'x') + "|" + std::string(202, 'x') + "|last|");
  list_free_with(&list, [](void** slot) { str_free(reinterpret_cast<char**>(slot)); });
  EXPECT_EQ(list_load_lines(path("missing").c_str()), nullptr);
}

}  // namespace
