#include "questions/question_file.h"

#include <cerrno>
#include <cstdio>
#include <span>
#include <string_view>

#include "foundation/file_guard.h"
#include "foundation/handles.h"
#include "foundation/logger.h"
#include "foundation/results.h"
#include "foundation/section_file.h"
#include "foundation/str_text.h"
#include "questions/question_error.h"

namespace {

constexpr const char* kSeparators = " \t";
constexpr unsigned kGrowth = 5;

// How a field is taken from the line.
enum class field_kind {
  token,     // the next field as it stands
  optional,  // the next field; "-" leaves the record's value alone
  rest,      // the rest of the line, trimmed, escapes resolved
};

struct field_step {
  std::optional<std::string> question::*member;
  field_kind kind;
  const char* missing;  // logged when the field is absent
};

constexpr const char* kNoLabel = "Missing setting label";
constexpr const char* kNoHelp = "Missing Help ID text";
constexpr const char* kNoText = "Missing question text";

constexpr field_step kAskingFields[] = {
    {&question::label, field_kind::token, kNoLabel},
    {&question::control, field_kind::optional, "Missing control"},
    {&question::compare, field_kind::optional, "Missing control comparison"},
    {&question::help_id, field_kind::token, kNoHelp},
    {&question::text, field_kind::rest, kNoText},
};
constexpr field_step kErrorFields[] = {
    {&question::label, field_kind::token, kNoLabel},
    {&question::help_id, field_kind::token, kNoHelp},
    {&question::text, field_kind::rest, kNoText},
};
constexpr field_step kExistFields[] = {
    {&question::text, field_kind::token, kNoLabel},
    {&question::label, field_kind::token, kNoHelp},
};
constexpr field_step kLoopFields[] = {
    {&question::label, field_kind::token, kNoLabel},
    {&question::text, field_kind::token, kNoHelp},
};

unsigned type_of(const char* word) {
  for (const question_type_word& entry : kQuestionTypeWords) {
    if (str_icmp(entry.word, word) == 0) return entry.type;
  }
  log_error("Unknown question type '%s'", word);
  return 0;
}

std::span<const field_step> layout_of(unsigned type) {
  switch (type) {
    case kQuestionError: return kErrorFields;
    case kQuestionExist: return kExistFields;
    case kQuestionLoop: return kLoopFields;
    default: return kAskingFields;
  }
}

// "\n" and "\t" become a line feed and a tab, a backslash before any other
// character yields that character; a lone backslash at the end stays.
std::string unescape(std::string_view text) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (c == '\\' && i + 1 < text.size()) {
      c = text[++i];
      if (c == 'n') c = '\n';
      if (c == 't') c = '\t';
    }
    out += c;
  }
  return out;
}

// Takes one field from the line being split by str_token; null when absent.
const char* take_field(field_kind kind, char*& cont) {
  if (kind != field_kind::rest) return str_token(nullptr, kSeparators, &cont);
  char* rest = str_trim(cont);
  return rest != nullptr && *rest != '\0' ? rest : nullptr;
}

void store_field(question* q, const field_step& step, const char* value) {
  std::optional<std::string>& field = q->*(step.member);
  if (step.kind == field_kind::rest) {
    field = unescape(value);
  } else if (step.kind == field_kind::token || str_cmp(value, "-") != 0) {
    field = value;
  }
}

// Accepts a trimmed question line into the next free slot of set.
void add_question(question_set* set, const char* line) {
  if (set->count == set->questions.size()) set->questions.resize(set->count + kGrowth);
  if (question_parse_line(&set->questions[set->count], line)) ++set->count;
}

// Reads question lines of `section` until the next header or the end; 1 when
// the section's header was seen.
const question* question_at(const question_set* set, unsigned index) {
  if (set == nullptr || index >= set->count) return nullptr;
  return &set->questions[index];
}

const char* text_or_null(const std::optional<std::string>& text) {
  return text ? text->c_str() : nullptr;
}

}  // namespace

question_set* question_set_create(ini_store* store) {
  question_set* set = new question_set;
  set->store = store;
  return set;
}

void question_set_free(question_set** set_ref) {
  if (set_ref == nullptr || *set_ref == nullptr) return;
  delete *set_ref;
  *set_ref = nullptr;
}

void question_set_clear(question_set* set) {
  if (set == nullptr || !set->section) return;
  set->section.reset();
  set->questions.clear();
  set->questions.shrink_to_fit();
  set->count = 0;
}

int question_parse_line(question* q, const char* line) {
  if (q == nullptr || line == nullptr) return k_fail;
  std::string buffer(line);
  char* cont = nullptr;
  const char* word = str_token(buffer.data(), kSeparators, &cont);
  if (word == nullptr) return k_fail;
  q->type = type_of(word);
  for (const field_step& step : layout_of(q->type)) {
    const char* value = take_field(step.kind, cont);
    if (value == nullptr) {
      log_error("%s", step.missing);
      return k_fail;
    }
    store_field(q, step, value);
  }
  return k_ok;
}

int question_load(question_set* set, const char* path, const char* section) {
  if (set == nullptr || path == nullptr || section == nullptr) return k_fail;
  if (set->section && str_icmp(set->section->c_str(), section) == 0) return k_ok;
  question_set_clear(set);
  errno = 0;
  unique_file file(file_open(path, "r"));
  if (!file) {
    question_set_error("Error opening '%s'", path);
    return k_fail;
  }
  if (!section_file_read(file.get(), section, [set](char* line) { add_question(set, line); })) {
    log_error("Section '%s' not found", section);
    return k_fail;
  }
  set->section = section;
  return k_ok;
}

unsigned question_count(const question_set* set) { return set != nullptr ? set->count : 0; }

const char* question_text(const question_set* set, unsigned index) {
  const question* q = question_at(set, index);
  return q != nullptr ? text_or_null(q->text) : nullptr;
}

const char* question_label(const question_set* set, unsigned index) {
  const question* q = question_at(set, index);
  return q != nullptr ? text_or_null(q->label) : nullptr;
}

const char* question_control(const question_set* set, unsigned index) {
  const question* q = question_at(set, index);
  return q != nullptr ? text_or_null(q->control) : nullptr;
}

const char* question_compare(const question_set* set, unsigned index) {
  const question* q = question_at(set, index);
  return q != nullptr ? text_or_null(q->compare) : nullptr;
}

const char* question_help_id(const question_set* set, unsigned index) {
  const question* q = question_at(set, index);
  return q != nullptr ? text_or_null(q->help_id) : nullptr;
}

unsigned question_type(const question_set* set, unsigned index) {
  const question* q = question_at(set, index);
  return q != nullptr ? q->type : 0;
}
