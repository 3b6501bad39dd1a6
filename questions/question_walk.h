// The question walk: every action goes through the questions of its loaded
// set in order, asking the asking types (or taking their defaults when
// unattended) and carrying out the four automatic ones:
//   Copy   copies the setting named by the text into the question's setting;
//   Exist  sets the question's setting to "true" / "false" by whether the
//          path in the text (settings substituted) exists;
//   Error  ends the walk with failure, printing "Error: <text>\n", when the
//          question's setting reads as false;
//   Loop   goes back to the question numbered by the text (0-based) when the
//          question's setting reads as false.
// An asking question with a control setting is asked only when the control
// reads as true (no comparison) or equals the comparison (the value of the
// setting of that name, else the comparison itself), exactly.
#pragma once

#include <string>
#include <vector>

#include "questions/question_file.h"

enum class walk_outcome { success, failure, quit };

// What a walk did, for a caller that keeps the answers or explains a failure.
struct walk_report {
  // The settings that asking questions set (answered or taken by default),
  // each once, in the order they were first set.
  std::vector<std::string> answered;
  // Why a walk that failed failed, in words; "" otherwise.
  std::string failure;
};

// Unattended mode: questions are not asked, their defaults are taken, and
// there is no closing offer to change the answers. Off until set.
void question_set_unattended(int on);
int question_unattended();

// Walks set, reading and writing the settings of store (normally the set's
// own; answers go to the set's store). expand_error_text non-zero prints an
// Error question's text with settings substituted, else as written.
//
// Interactive answers: "q" / "Q" quits (as does the end of input), "b" / "B"
// takes the previous question again (the first one stays first); a refused
// answer prints "Error: <reason>, please try again\n" and asks again. After
// the last question "Do you want to change your answers [n]? " starts again
// from the first on a true answer. Unattended: a refused default fails the
// walk; a question without default gets an empty answer.
//
// Failure, with "Error: <reason>\n" printed and logged, also ends a walk that
// could otherwise never end: a Loop whose index is not a number below the
// question count; a Loop about to go back with every setting the walk writes
// as it was at an earlier go-back of the same Loop and no question asked
// since (it would go round for ever); an unattended default of "q" or "b".
// A null set fails at once. report, when given, is filled as the walk goes.
walk_outcome question_walk(const question_set* set, ini_store* store, int expand_error_text,
                           walk_report* report = nullptr);
