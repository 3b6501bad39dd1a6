#include "questions/question_check.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <optional>
#include <span>
#include <vector>

#include "foundation/file_guard.h"
#include "foundation/handles.h"
#include "foundation/section_file.h"
#include "foundation/str_text.h"
#include "questions/question_file.h"
#include "settings/ini_expand.h"

namespace {

constexpr unsigned kGrowth = 5;

// The fields after the type word, as the messages name them.
constexpr const char* kAskingFields[] = {"setting", "control", "comparison", "help ID",
                                         "question text"};
constexpr const char* kErrorFields[] = {"setting", "help ID", "message"};
constexpr const char* kExistFields[] = {"path", "setting"};
constexpr const char* kLoopFields[] = {"setting", "index"};

// One section being read: the accepted questions at the front of the slots,
// as the loader keeps them, with the line each came from.
struct section_check {
  const std::string& file;
  const std::string& section;
  check_report* report;
  std::vector<question> slots;
  unsigned count = 0;
  std::vector<int> lines;
  int rejected_line = 0;  // the rejected line whose fields the free slot holds
};

std::span<const char* const> fields_of(unsigned type) {
  switch (type) {
    case kQuestionError: return kErrorFields;
    case kQuestionExist: return kExistFields;
    case kQuestionLoop: return kLoopFields;
    default: return kAskingFields;
  }
}

std::string joined(std::span<const char* const> words, const char* last) {
  std::string text;
  for (size_t i = 0; i < words.size(); ++i) {
    if (i > 0) text += i + 1 == words.size() ? last : ", ";
    text += words[i];
  }
  return text;
}

std::string type_words() {
  std::vector<const char*> words;
  for (const question_type_word& entry : kQuestionTypeWords) words.push_back(entry.word);
  return joined(words, ", ");
}

// The words of a line: the type word first.
std::vector<std::string> words_of(const char* text) {
  std::string line(text);
  std::vector<std::string> words;
  char* cont = nullptr;
  for (const char* word = str_token(line.data(), " \t", &cont); word != nullptr;
       word = str_token(nullptr, " \t", &cont)) {
    words.emplace_back(word);
  }
  return words;
}

const char* text_of(const std::optional<std::string>& field) { return field ? field->c_str() : ""; }

bool is_asked(unsigned type) { return (type & kQuestionAutomatic) == 0; }

std::string asked_when(const question& q) {
  if (!q.compare) return "it is asked only when " + *q.control + " reads as true";
  return "it is asked only when " + *q.control + " equals " + *q.compare;
}

void report_rejected(section_check& at, int line, const char* text, unsigned type) {
  const std::vector<std::string> words = words_of(text);
  const std::span<const char* const> fields = fields_of(type);
  const size_t given = words.size() - 1;
  const char* missing = fields[given < fields.size() ? given : fields.size() - 1];
  check_error(at.report, at.file, line,
              "the %s is missing (%s takes %s): a run leaves the line out, and the next "
              "question line of [%s] keeps the fields it gave wherever that line has '-'; "
              "complete it",
              missing, words[0].c_str(), joined(fields, " and ").c_str(), at.section.c_str());
}

void report_taken_over(section_check& at, int line, const question& stored, const question& own) {
  if (!is_asked(stored.type) || at.rejected_line == 0) return;
  std::string taken;
  if (stored.control && !own.control) taken = "the control '" + *stored.control + "'";
  if (stored.compare && !own.compare) {
    taken +=
        (taken.empty() ? "" : " and ") + std::string("the comparison '") + *stored.compare + "'";
  }
  if (taken.empty() || !stored.control) return;
  check_warning(at.report, at.file, line,
                "takes %s from the rejected line %d, which a run carries over: %s; complete or "
                "remove line %d",
                taken.c_str(), at.rejected_line, asked_when(stored).c_str(), at.rejected_line);
}

void take_line(section_check& at, int line, char* text) {
  if (at.count == at.slots.size()) at.slots.resize(at.count + kGrowth);
  question own;
  {
    check_quiet_log quiet;
    question_parse_line(&own, text);
  }
  question& slot = at.slots[at.count];
  const int complete = question_parse_line(&slot, text);
  if (own.type == 0) {
    check_error(at.report, at.file, line,
                "unknown question type '%s': a run asks the line as a plain question and stores "
                "the answer as typed; write one of %s",
                words_of(text)[0].c_str(), type_words().c_str());
  }
  if (!complete) {
    report_rejected(at, line, text, slot.type);
    at.rejected_line = line;
    return;
  }
  report_taken_over(at, line, slot, own);
  at.lines.push_back(line);
  ++at.count;
  at.rejected_line = 0;
}

bool writes(const question& q, const std::string& label) {
  return (q.type == kQuestionExist || q.type == kQuestionCopy) && q.label && *q.label == label;
}

// A Loop at index goes back to the question its text names when its setting
// reads false.
void check_loop(const section_check& at, unsigned index) {
  const question& loop = at.slots[index];
  const int line = at.lines[index];
  const char* text = text_of(loop.text);
  const char* label = text_of(loop.label);
  const char* end = text + strlen(text);
  unsigned target = 0;
  const auto [stop, failed] = std::from_chars(text, end, target);
  if (failed != std::errc() || stop != end || target >= at.count) {
    check_error(at.report, at.file, line,
                "Loop index '%s' is not a question of [%s] (it has %u, numbered from 0): when %s "
                "reads false, a run ends the action with \"Loop index '%s' is not a question "
                "number\"; write the number of the question to go back to",
                text, at.section.c_str(), at.count, label, text);
  } else if (target == index) {
    check_error(at.report, at.file, line,
                "the Loop goes back to itself (question %u): when %s reads false, a run ends the "
                "action with \"Loop to %u would repeat forever\"; write the number of an earlier "
                "question",
                target, label, target);
  } else if (target == index + 1) {
    check_warning(at.report, at.file, line,
                  "the Loop goes on to the next question (line %d), which a run asks anyway: it "
                  "changes nothing; a Loop goes back to an earlier question",
                  at.lines[target]);
  } else if (target > index) {
    check_warning(at.report, at.file, line,
                  "the Loop goes forward, to question %u (line %d): when %s reads false, the "
                  "questions between are skipped; a Loop goes back to an earlier question",
                  target, at.lines[target], label);
  } else {
    for (unsigned i = target; i < index; ++i) {
      if (writes(at.slots[i], label)) return;
    }
    check_warning(at.report, at.file, line,
                  "with -automate nothing from question %u (line %d) to here changes %s (only an "
                  "Exist or Copy question could): when it reads false, a run ends the action with "
                  "\"Loop to %u would repeat forever in unattended mode\"; set %s with an Exist "
                  "or Copy question in that range",
                  target, at.lines[target], label, target, label);
  }
}

void add_use(const section_check& at, int line, const char* name, setting_use_kind kind,
             const char* effect = "") {
  at.report->uses.push_back({at.file, line, name, kind, effect, check_severity::warning});
}

void add_references(const section_check& at, int line, const char* text) {
  for (const std::string& name : ini_reference_names(text)) {
    add_use(at, line, name.c_str(), setting_use_kind::reference, "it expands to nothing");
  }
}

void check_error_text(const section_check& at, int line, const question& q) {
  if (section_file_same(at.section, "upgrade")) {
    add_references(at, line, text_of(q.text));
    return;
  }
  const std::vector<std::string> names = ini_reference_names(text_of(q.text));
  if (names.empty()) return;
  check_warning(at.report, at.file, line,
                "the message is printed as written in [%s], '$(%s)' and all: only [upgrade] "
                "fills in settings in an Error question's text; write it without references",
                at.section.c_str(), names[0].c_str());
}

// What each accepted question writes, refers to and reads.
void record_uses(const section_check& at, unsigned index) {
  const question& q = at.slots[index];
  const int line = at.lines[index];
  const char* label = text_of(q.label);
  switch (q.type) {
    case kQuestionCopy:
      add_use(at, line, label, setting_use_kind::written);
      add_use(at, line, text_of(q.text), setting_use_kind::read, "nothing is copied");
      break;
    case kQuestionExist:
      add_use(at, line, label, setting_use_kind::written);
      add_references(at, line, text_of(q.text));
      break;
    case kQuestionError:
      add_use(at, line, label, setting_use_kind::read, "the Error question never fires");
      check_error_text(at, line, q);
      break;
    case kQuestionLoop:
      add_use(at, line, label, setting_use_kind::read, "the Loop never goes back");
      check_loop(at, index);
      break;
    default:
      add_use(at, line, label, setting_use_kind::written);
      if (q.control) {
        add_use(at, line, q.control->c_str(), setting_use_kind::read,
                "the question is always asked");
      }
      add_references(at, line, text_of(q.text));
      break;
  }
}

struct section_text {
  std::string name;
  std::vector<std::pair<int, std::string>> lines;
};

}  // namespace

bool question_check_file(const char* path, const std::string& file, check_report* report) {
  if (path == nullptr || report == nullptr) return false;
  const unique_file stream =
      check_open(path, file, report,
                 "every action fails before its first question (\"Error "
                 "loading questions\" in the log) and does nothing; put the question file in the "
                 "directory the installer is started from");
  if (!stream) return false;
  std::vector<section_text> sections;
  check_sectioned_file(stream.get(), file, report,
                       [&](const std::string& section, int line, char* text) {
                         if (sections.empty() || sections.back().name != section) {
                           sections.push_back({section, {}});
                         }
                         sections.back().lines.emplace_back(line, text);
                       });
  for (section_text& section : sections) {
    section_check at{file, section.name, report, {}, 0, {}, 0};
    for (auto& [line, text] : section.lines) take_line(at, line, text.data());
    for (unsigned index = 0; index < at.count; ++index) record_uses(at, index);
  }
  return true;
}
