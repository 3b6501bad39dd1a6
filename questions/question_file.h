// The question file: one section per action, one question per line. A
// question_set holds the questions of one loaded section; the walk
// (question_walk.h) asks them and stores the answers in the set's store.
//
// Line shapes, after the type word (compared ignoring case):
//   Text|YN|Dir|DirExist|DirEmpty|File|FileExist|FileName|Copy
//                  label control comparison help-id question text...
//   Error          label help-id message text...
//   Exist          path label
//   Loop           label index
// A "-" control or comparison means none. The question text is the rest of
// the line with \n, \t and \<c> resolved; a lone backslash at its very end
// stays as it is.
#pragma once

#include <optional>
#include <string>
#include <vector>

struct ini_store;

// Type flags. The must-exist and must-be-empty bits only come with a
// directory or file bit.
inline constexpr unsigned kQuestionText = 0x1;
inline constexpr unsigned kQuestionYesNo = 0x2;
inline constexpr unsigned kQuestionDir = 0x4;
inline constexpr unsigned kQuestionFile = 0x8;
inline constexpr unsigned kQuestionFileName = 0x10;
inline constexpr unsigned kQuestionMustExist = 0x100;
inline constexpr unsigned kQuestionExist = 0x200;
inline constexpr unsigned kQuestionCopy = 0x400;
inline constexpr unsigned kQuestionError = 0x800;
inline constexpr unsigned kQuestionLoop = 0x1000;
inline constexpr unsigned kQuestionMustBeEmpty = 0x2000;
inline constexpr unsigned kQuestionDirExist = kQuestionDir | kQuestionMustExist;
inline constexpr unsigned kQuestionDirEmpty = kQuestionDir | kQuestionMustBeEmpty;
inline constexpr unsigned kQuestionFileExist = kQuestionFile | kQuestionMustExist;
// The types that are not asked.
inline constexpr unsigned kQuestionAutomatic =
    kQuestionCopy | kQuestionExist | kQuestionError | kQuestionLoop;

struct question_type_word {
  const char* word;
  unsigned type;
};

// The type words, searched in this order, ignoring case; the words are
// whole, so the order decides nothing.
inline constexpr question_type_word kQuestionTypeWords[] = {
    {"Text", kQuestionText},           {"YN", kQuestionYesNo},          {"Dir", kQuestionDir},
    {"DirExist", kQuestionDirExist},   {"DirEmpty", kQuestionDirEmpty}, {"File", kQuestionFile},
    {"FileExist", kQuestionFileExist}, {"FileName", kQuestionFileName}, {"Copy", kQuestionCopy},
    {"Exist", kQuestionExist},         {"Error", kQuestionError},       {"Loop", kQuestionLoop},
};

// One question line. Absent texts are empty optionals.
struct question {
  std::optional<std::string> text;     // prompt; Exist: path; Loop: index; Copy: source setting
  std::optional<std::string> label;    // setting that receives the answer or result
  std::optional<std::string> control;  // controlling setting
  std::optional<std::string> compare;  // setting name or literal compared with the control
  std::optional<std::string> help_id;  // kept, never used
  unsigned type = 0;                   // type flags; 0 for an unknown type word
};

struct question_set {
  unsigned count = 0;                  // accepted questions, at the front of `questions`
  std::optional<std::string> section;  // section loaded, none before a successful load
  std::vector<question> questions;     // grown five records at a time
  ini_store* store = nullptr;          // not owned; answers go there
};

// A new empty set bound to store (which may be null); free with
// question_set_free.
question_set* question_set_create(ini_store* store);
// Clears and frees *set_ref and sets it to null; null-safe.
void question_set_free(question_set** set_ref);
// Forgets the section and every question; nothing when no section is loaded.
void question_set_clear(question_set* set);

// Loads the questions of `section` (ignoring case) from the file at path.
// 1 when the section was found, even empty; 0 when any argument is null, the
// file cannot be opened ("Error opening '%s'", kept as the question error)
// or the section is missing ("Section '%s' not found", logged). Loading the
// section already held returns 1 without reading; another section clears the
// set first. Malformed lines are logged at error level and left out.
[[nodiscard]] int question_load(question_set* set, const char* path, const char* section);

// Parses one trimmed question line into q, filling only the fields the line
// gives ("-" leaves a control or comparison as it was). 1 when the line is
// complete; 0 after logging what is missing. An unknown type word is logged
// and the line is read as an asking question of type 0. Null: 0.
int question_parse_line(question* q, const char* line);

// Accessors: null (texts) or 0 (type) for a null set or an index at or
// beyond the count. Texts stay the set's until it is cleared.
unsigned question_count(const question_set* set);
const char* question_text(const question_set* set, unsigned index);
const char* question_label(const question_set* set, unsigned index);
const char* question_control(const question_set* set, unsigned index);
const char* question_compare(const question_set* set, unsigned index);
const char* question_help_id(const question_set* set, unsigned index);
unsigned question_type(const question_set* set, unsigned index);
