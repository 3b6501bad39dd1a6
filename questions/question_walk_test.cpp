#include "questions/question_walk.h"

#include "questions/test_support.h"

namespace {

using QuestionWalk = question_test;

// A question is asked when its control has no value, or when the control's
// value is true (no comparison) or is exactly the comparison (a setting's
// value, else the word itself).
TEST_F(QuestionWalk, ConditionsCompareExactly) {
  load_set(
      "Text x t - 1 T?\nText x f - 1 F?\nText x m - 1 M?\nText x none mysql 1 N?\n"
      "Text x my mysql 1 E?\nText x MY mysql 1 C?\nText x pg kind 1 S?\nText x k kind 1 W?\n");
  console("1\n2\n3\n4\n");
  EXPECT_EQ(question_walk(set_, store_, 0), walk_outcome::success);
  EXPECT_EQ(printed(), "T? []? N? [1]? E? [2]? S? [3]? Do you want to change your answers [n]? ");
}

TEST_F(QuestionWalk, EndsWithTheRightOutcomeAndMessage) {
  const struct {
    int unattended;
    const char* lines;
    const char* input;
    walk_outcome outcome;
    const char* shown;
  } rows[] = {
      // A loop may be taken again once a setting has changed, or a question
      // was asked.
      {1, "Copy a - - 0 b\nCopy b - - 0 c\nCopy c - - 0 d\nLoop a 0\n", "", walk_outcome::success,
       ""},
      {1, "Copy a - - 0 b\nLoop a 0\n", "", walk_outcome::failure,
       "Error: Loop to 0 would repeat forever in unattended mode\n"},
      {0, "Text d - - 0 D?\nLoop a 0\n", "\n", walk_outcome::quit, "D? [true]? D? [true]? "},
      {0, "Loop a 1\n", "", walk_outcome::failure,
       "Error: Loop index '1' is not a question number\n"},
      {1, "Text q - - 1 Q?\n", "", walk_outcome::failure,
       "Error: Default answer 'q' for 'q' would quit the action in unattended mode\n"},
      {1, "Text back - - 1 B?\n", "", walk_outcome::failure,
       "Error: Default answer 'B' for 'back' would step back forever in unattended mode\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.lines);
    question_set_unattended(row.unattended);
    for (const char* name : {"a", "b", "c"}) ini_set(store_, name, "false");
    load_set(row.lines);
    console(row.input);
    EXPECT_EQ(question_walk(set_, store_, 0), row.outcome);
    EXPECT_EQ(printed(), row.shown);
  }
}

}  // namespace
