#include "foundation/dyn_list.h"

#include <initializer_list>

#include "foundation/str_text.h"
#include "foundation/test_scratch.h"

namespace {

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
  char texts[][3] = {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11"};
  dyn_list* list = list_create();
  for (char* text : texts) list_append(list, text);
  EXPECT_EQ(list_append(list, nullptr) + list_insert(list, texts[9], 13) +
                list_insert(list, texts[9], -1) + list_insert_at_cursor(list, texts[9]),
            0);
  EXPECT_EQ(joined({list_get(list, 11), list_next(list), list_prev(list), list_prev(list)}),
            "11 - 11 11 ");
  list_seek(list, 1);
  EXPECT_EQ(list_insert(list, texts[9], 0) + list_insert_at_cursor(list, texts[8]), 2);
  EXPECT_EQ(
      joined({list_remove(list, 0), list_remove(list, 13), list_remove_before_cursor(list),
              list_next(list), list_unposition(list)->items[0], list_remove_before_cursor(list)}),
      "9 - 8 1 0 11 ");
  list_free(&list);
}

using DynListFile = scratch_test;

// Lines are cut at their first CR or LF and read 999 bytes at a time; an
// empty line keeps its line end. Split pieces follow, runs of delimiters
// collapsed.
TEST_F(DynListFile, LinesAndPiecesOfText) {
  write_file("lines", "one\r\n\ntwo\rlost\n" + std::string(1200, 'x') + "\nlast");
  dyn_list* list = list_load_lines(path("lines").c_str());
  EXPECT_EQ(list_split(list, ",b,,a,", ",") + list_split(list, ",,,", ","), 2);
  EXPECT_EQ(joined(list),
            "one \n two " + std::string(998, 'x') + " " + std::string(202, 'x') + " last b a ");
  list_free_with(&list, [](void** slot) { str_free(reinterpret_cast<char**>(slot)); });
}

}  // namespace
