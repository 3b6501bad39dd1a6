#include "questions/question_walk.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "fileops/file_ops.h"
#include "foundation/console.h"
#include "foundation/str_text.h"
#include "questions/question_ask.h"
#include "questions/question_error.h"
#include "settings/ini_expand.h"
#include "settings/ini_store.h"

namespace {

int g_unattended = 0;

constexpr const char* kChangePrompt = "Do you want to change your answers [n]? ";

// What one question does to the walk.
enum class step { next, moved, failure, quit };

struct walk_state {
  const question_set* set;
  ini_store* store;
  bool expand_error_text;
  bool unattended;
  unsigned index = 0;
  // Loops that went back since the operator was last asked anything, each
  // with the settings as they were then. The walk in between depends on
  // nothing else, so meeting a pair again means it would repeat for ever.
  std::vector<std::pair<unsigned, std::string>> loops_taken;
  walk_report* report = nullptr;
};

std::string expanded(ini_store* store, const char* text) {
  char out[kLineSize] = {};
  str_copy(out, text, kLineSize);  // stays as written without a store
  ini_expand(store, text, out, kLineSize);
  return out;
}

// Every value the walk itself can have written, in question order.
std::string settings_fingerprint(const walk_state& walk) {
  std::string print;
  for (unsigned i = 0; i < question_count(walk.set); ++i) {
    const char* value = ini_get(walk.store, question_label(walk.set, i));
    print += value != nullptr ? value : "\x1e";
    print += '\x1f';
  }
  return print;
}

void print_error(const char* reason, const char* tail) {
  console_print("Error: ");
  console_print(reason);
  console_print(tail);
}

// Records why the walk fails, for a caller that asked.
step failed(const walk_state& walk, const std::string& why) {
  if (walk.report != nullptr) walk.report->failure = why;
  return step::failure;
}

// Ends a walk that cannot go on, printing the question error just set.
step fail_walk(const walk_state& walk) {
  print_error(question_last_error(), "\n");
  return failed(walk, question_last_error());
}

// Notes that an asking question set its setting.
void note_answered(const walk_state& walk) {
  if (walk.report == nullptr) return;
  std::vector<std::string>& answered = walk.report->answered;
  const std::string label = str_or_empty(question_label(walk.set, walk.index));
  if (std::find(answered.begin(), answered.end(), label) == answered.end()) {
    answered.push_back(label);
  }
}

bool reads_false(ini_store* store, const char* name) {
  const char* value = ini_get(store, name);
  return value != nullptr && str_is_false(value);
}

void take_copy(const walk_state& walk) {
  const char* value = ini_get(walk.store, question_text(walk.set, walk.index));
  if (value == nullptr) return;
  const std::string copy(value);  // the store may drop value while setting
  ini_set(walk.store, question_label(walk.set, walk.index), copy.c_str());
}

void take_exist(const walk_state& walk) {
  const std::string path = expanded(walk.store, question_text(walk.set, walk.index));
  const int exists = file_path_type(path.c_str()) != 0;
  ini_set(walk.store, question_label(walk.set, walk.index), exists ? "true" : "false");
}

step take_error(const walk_state& walk) {
  if (!reads_false(walk.store, question_label(walk.set, walk.index))) return step::next;
  const char* text = str_or_empty(question_text(walk.set, walk.index));
  const std::string message = walk.expand_error_text ? expanded(walk.store, text) : text;
  print_error(message.c_str(), "\n");
  return failed(walk, message);
}

step take_loop(walk_state& walk) {
  if (!reads_false(walk.store, question_label(walk.set, walk.index))) return step::next;
  const char* text = str_or_empty(question_text(walk.set, walk.index));
  unsigned target = 0;
  const char* end = text + strlen(text);
  const auto [stop, error] = std::from_chars(text, end, target);
  if (error != std::errc() || stop != end || target >= question_count(walk.set)) {
    errno = 0;
    question_set_error("Loop index '%s' is not a question number", text);
    return fail_walk(walk);
  }
  std::pair<unsigned, std::string> taken(walk.index, settings_fingerprint(walk));
  for (const auto& earlier : walk.loops_taken) {
    if (earlier == taken) {
      errno = 0;
      question_set_error("Loop to %u would repeat forever%s", target,
                         walk.unattended ? " in unattended mode" : "");
      return fail_walk(walk);
    }
  }
  walk.loops_taken.push_back(std::move(taken));
  walk.index = target;
  return step::moved;
}

// The question's condition: asked unless a control value says otherwise.
bool condition_holds(const walk_state& walk) {
  const char* control = ini_get(walk.store, question_control(walk.set, walk.index));
  if (control == nullptr) return true;
  const char* compare = question_compare(walk.set, walk.index);
  const char* compare_value = ini_get(walk.store, compare);
  if (compare_value != nullptr) compare = compare_value;
  if (compare == nullptr) return str_is_true(control) != 0;
  return strcmp(control, compare) == 0;
}

// The answer of the current question: typed, or the default when
// unattended. false after a refusal has been printed (interactive only).
bool get_answer(walk_state& walk, char* answer) {
  answer[0] = '\0';
  if (walk.unattended) {
    question_default(walk.set, walk.index, answer, kLineSize);
    return true;
  }
  walk.loops_taken.clear();  // the operator can change things from here on
  if (question_ask(walk.set, walk.index, answer, kLineSize)) return true;
  print_error(question_last_error(), ", please try again\n");
  return false;
}

bool is_word(const char* answer, char word) {
  return str_fold(answer[0]) == word && answer[1] == '\0';
}

step take_asked(walk_state& walk) {
  if (!condition_holds(walk)) return step::next;
  char answer[kLineSize];
  for (;;) {
    if (!get_answer(walk, answer)) continue;
    const bool quit = is_word(answer, 'q');
    if ((quit || is_word(answer, 'b')) && walk.unattended) {
      errno = 0;
      question_set_error("Default answer '%s' for '%s' would %s in unattended mode", answer,
                         question_label(walk.set, walk.index),
                         quit ? "quit the action" : "step back forever");
      return fail_walk(walk);
    }
    if (quit) return step::quit;
    if (is_word(answer, 'b')) {
      if (walk.index > 0) --walk.index;
      return step::moved;
    }
    if (question_accept(walk.set, walk.index, answer)) {
      note_answered(walk);
      return step::next;
    }
    print_error(question_last_error(), ", please try again\n");
    if (walk.unattended) {
      return failed(walk, std::string("the default of '") +
                              str_or_empty(question_label(walk.set, walk.index)) +
                              "' was refused: " + question_last_error());
    }
  }
}

step take_question(walk_state& walk) {
  switch (question_type(walk.set, walk.index) & kQuestionAutomatic) {
    case kQuestionCopy: take_copy(walk); return step::next;
    case kQuestionExist: take_exist(walk); return step::next;
    case kQuestionError: return take_error(walk);
    case kQuestionLoop: return take_loop(walk);
    default: return take_asked(walk);
  }
}

bool wants_changes() {
  console_print(kChangePrompt);
  char line[kLineSize];
  if (!console_read_line(line, kLineSize)) return false;
  return str_is_true(str_trim(line)) != 0;
}

}  // namespace

void question_set_unattended(int on) { g_unattended = on; }

int question_unattended() { return g_unattended; }

walk_outcome question_walk(const question_set* set, ini_store* store, int expand_error_text,
                           walk_report* report) {
  if (set == nullptr) return walk_outcome::failure;
  walk_state walk{set, store, expand_error_text != 0, g_unattended != 0, 0, {}, report};
  for (;;) {
    while (walk.index < question_count(set)) {
      switch (take_question(walk)) {
        case step::next: ++walk.index; break;
        case step::moved: break;
        case step::failure: return walk_outcome::failure;
        case step::quit: return walk_outcome::quit;
      }
    }
    if (walk.unattended || !wants_changes()) return walk_outcome::success;
    walk.index = 0;
    walk.loops_taken.clear();
  }
}
