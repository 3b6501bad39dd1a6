#include "foundation/dyn_list.h"

#include <initializer_list>
#include <string>

#include "foundation/str_text.h"
#include "foundation/test_scratch.h"

namespace {

// Elements for lists that do not own them.
char* at(int i) {
  static char texts[12][3] = {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11"};
  return texts[i];
}
dyn_list* counting(int count) {
  dyn_list* list = list_create();
  for (int i = 0; i < count; ++i) list_append(list, at(i));
  return list;
}
// Texts each followed by " ", "-" for none.
std::string joined(std::initializer_list<void*> elements) {
  std::string text;
  for (void* e : elements) text += (e != nullptr ? static_cast<char*>(e) : "-") + std::string(" ");
  return text;
}
std::string joined(const dyn_list* list) {
  std::string text;
  for (int i = 0; i < list->count; ++i) text += joined({list->items[i]});
  return text;
}

// Insert and remove keep the cursor on its element; list_prev from the end
// returns the last element, then the same again.
TEST(DynList, InsertRemoveAndTheCursor) {
  dyn_list* list = counting(3);
  EXPECT_EQ(list_append(list, nullptr) + list_insert(list, at(9), 4) +
                list_insert(list, at(9), -1) + list_insert_at_cursor(list, at(9)),
            0);
  EXPECT_EQ(joined({list_get(list, 2), list_next(list), list_prev(list), list_prev(list),
                    list_get(list, 3)}),
            "2 - 2 2 - ");
  list_seek(list, 1);
  EXPECT_EQ(list_insert(list, at(9), 0) + list_insert_at_cursor(list, at(8)), 2);
  EXPECT_EQ(joined(list), "9 0 8 1 2 ");
  EXPECT_EQ(joined({list_remove(list, 0), list_remove(list, 4), list_remove_before_cursor(list),
                    list_next(list), list_unposition(list)->items[0]}),
            "9 - 8 1 0 ");
  EXPECT_EQ(joined({list_remove_before_cursor(list)}), "2 ");  // nowhere: the last one
  list_rewind(list);
  list_skip(list);
  list_skip(list);
  EXPECT_EQ(list_cursor(list), -1);
  list_free(&list);
  EXPECT_EQ(list, nullptr);
}

TEST(DynList, CopiesAreShallowAndTextsSplitSortAndReverse) {
  dyn_list* list = counting(12);
  list_get(list, 4);
  dyn_list* copy = list_copy(list);
  EXPECT_EQ(list_cursor(copy), 5);
  list_append_all(copy, list);
  EXPECT_EQ(joined(copy), "0 1 2 3 4 5 6 7 8 9 10 11 0 1 2 3 4 5 6 7 8 9 10 11 ");
  list_free(&copy);
  list_free(&list);
  list = list_create();
  EXPECT_EQ(list_split(list, ",b,,a,", ",") + list_split(list, " c\td ", " \t") +
                list_split(list, ",,,", ","),
            4);
  list_sort(list, list_compare_text);
  list_reverse(list);
  EXPECT_EQ(joined(list), "d c b a ");
  list_free_all(&list);
}

using DynListFile = scratch_test;

// Lines are cut at their first CR or LF and read 999 bytes at a time; an
// empty line keeps its line end.
TEST_F(DynListFile, LinesOfAFile) {
  write_file("lines", "one\r\n\ntwo\rlost\n" + std::string(1200, 'x') + "\nlast");
  dyn_list* list = list_load_lines(path("lines").c_str());
  EXPECT_EQ(joined(list),
            "one \n two " + std::string(998, 'x') + " " + std::string(202, 'x') + " last ");
  list_free_with(&list, [](void** slot) { str_free(reinterpret_cast<char**>(slot)); });
  EXPECT_EQ(list_load_lines(path("missing").c_str()), nullptr);
}

}  // namespace
