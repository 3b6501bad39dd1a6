#include "questions/question_ask.h"

#include <cctype>
#include <cerrno>
#include <cstring>
#include <string>

#include "fileops/file_dir.h"
#include "fileops/file_ops.h"
#include "foundation/console.h"
#include "foundation/formatter.h"
#include "foundation/logger.h"
#include "foundation/results.h"
#include "foundation/str_path.h"
#include "foundation/str_text.h"
#include "questions/question_error.h"
#include "settings/ini_expand.h"
#include "settings/ini_store.h"

namespace {

// A prompt longer than this is printed in pieces of at most kPieceMax.
constexpr size_t kOneLineMax = 80;
constexpr size_t kPieceMax = 79;

bool is_blank(char c) { return c == ' ' || c == '\t'; }

// Where the piece starting at start ends: the blank kPieceMax on, else the
// nearest blank before it (after start), else kPieceMax on (a hard break).
// The character at the break is not printed.
size_t break_point(const std::string& prompt, size_t start) {
  const size_t probe = start + kPieceMax;
  if (is_blank(prompt[probe])) return probe;
  for (size_t at = probe - 1; at > start; --at) {
    if (is_blank(prompt[at])) return at;
  }
  return probe;
}

void print_wrapped(const std::string& prompt) {
  size_t start = 0;
  if (prompt.size() > kOneLineMax) {
    do {
      const size_t cut = break_point(prompt, start);
      console_print((prompt.substr(start, cut - start) + "\n").c_str());
      start = cut + 1;
      while (start < prompt.size() && is_blank(prompt[start])) ++start;
    } while (prompt.size() - start > kPieceMax);
  }
  console_print((prompt.substr(start) + " ").c_str());
}

std::string make_prompt(const question_set* set, unsigned index, const char* fallback) {
  char prompt[kLineSize] = {};
  const char* text = question_text(set, index);
  str_copy(prompt, text, kLineSize);  // stays as written without a store
  ini_expand(set->store, text, prompt, kLineSize);
  str_format_append(prompt, kLineSize, " [%s]?", fallback);
  return prompt;
}

void trim_end(char* text) {
  size_t length = strlen(text);
  while (length > 0 && isspace(static_cast<unsigned char>(text[length - 1])) != 0) {
    text[--length] = '\0';
  }
}

// An answer missing (end of input) quits rather than asking for ever.
constexpr const char* kQuitAnswer = "q";

bool dir_is_empty(const char* path) {
  file_listing* listing = nullptr;
  file_entry* entry = file_dir_open(&listing, path, "*");
  if (entry == nullptr) {
    errno = 0;  // an unreadable or missing directory counts as empty
    return true;
  }
  file_entry_free(&entry);
  file_dir_close(&listing);
  return false;
}

// The yes/no and existence tests; 0 with the question error on a refusal.
int check_answer(unsigned type, char* answer) {
  if ((type & kQuestionDir) != 0) {
    const size_t length = strlen(answer);
    if (length > 0 && (answer[length - 1] == '/' || answer[length - 1] == '\\')) {
      answer[length - 1] = '\0';
    }
  }
  if ((type & kQuestionMustExist) != 0 && file_path_type(answer) == 0) {
    question_set_error(
        (type & kQuestionDir) != 0 ? "Directory '%s' must exist" : "File '%s' must exist", answer);
    return k_fail;
  }
  if (type == kQuestionDirEmpty && !dir_is_empty(answer)) {
    errno = 0;
    question_set_error("Directory '%s' must be empty", answer);
    return k_fail;
  }
  if ((type & kQuestionYesNo) != 0 && !str_is_true(answer) && !str_is_false(answer)) {
    question_set_error("You must answer either Yes or No");
    return k_fail;
  }
  return k_ok;
}

}  // namespace

char* question_default(const question_set* set, unsigned index, char* buffer, int size) {
  if (set == nullptr || buffer == nullptr || index >= question_count(set)) return nullptr;
  const char* value = ini_get(set->store, question_label(set, index));
  if (value == nullptr) return nullptr;
  if ((question_type(set, index) & kQuestionYesNo) != 0) value = str_is_true(value) ? "y" : "n";
  str_copy(buffer, value, size);
  return buffer;
}

int question_ask(const question_set* set, unsigned index, char* answer, int size) {
  if (set == nullptr || answer == nullptr || size < 2 || index >= question_count(set)) {
    return k_fail;
  }
  char fallback[kLineSize] = {};
  question_default(set, index, fallback, kLineSize);
  print_wrapped(make_prompt(set, index, fallback));
  errno = 0;
  if (!console_read_line(answer, size)) {
    log_info("End of input at '%s', taken as '%s'", question_label(set, index), kQuitAnswer);
    str_copy(answer, kQuitAnswer, size);
    return k_ok;
  }
  trim_end(answer);
  if (answer[0] != '\0') return k_ok;
  if (fallback[0] != '\0') {
    str_copy(answer, fallback, size);
    return k_ok;
  }
  errno = 0;  // reading may leave a stale reason behind
  question_set_error("You must enter an answer");
  return k_fail;
}

int question_accept(const question_set* set, unsigned index, char* answer) {
  if (set == nullptr || answer == nullptr || index >= question_count(set)) return k_fail;
  const unsigned type = question_type(set, index);
  errno = 0;
  if (!check_answer(type, answer)) return k_fail;
  const char* value = answer;
  if ((type & kQuestionYesNo) != 0) {
    value = str_is_true(answer) ? "true" : "false";
  } else if ((type & kQuestionFileName) != 0) {
    str_strip_ext(str_strip_dir(answer));
  }
  if (set->store != nullptr) ini_set(set->store, question_label(set, index), value);
  return k_ok;
}
