#include "environment/init_check.h"

#include <cerrno>

#include "environment/init_file.h"
#include "foundation/file_guard.h"
#include "foundation/handles.h"
#include "foundation/str_text.h"
#include "settings/ini_expand.h"

namespace {

constexpr const char* kExpandsToNothing = "it expands to nothing";
constexpr const char* kNoDate = "no date is set (the log says \"TimeDate '...' is NULL\")";

// Where the record's carried-over fields came from: the incomplete lines
// that last set them (0: none).
struct carried {
  int type_line = 0;
  int cond_line = 0;
};

const char* command_word(int type) {
  for (const init_command_word& entry : kInitCommandWords) {
    if (entry.type == type) return entry.word;
  }
  return "";
}

std::string command_words() {
  std::string words;
  for (const init_command_word& entry : kInitCommandWords) {
    if (!words.empty()) words += ", ";
    words += entry.word;
  }
  return words;
}

std::string first_word(const char* text) {
  std::string line(text);
  char* cont = nullptr;
  return str_or_empty(str_token(str_trim(line.data()), " \t", &cont));
}

// What to write instead of an unknown word: the word in its right case, or
// the list.
std::string known_word_for(const std::string& word) {
  for (const init_command_word& entry : kInitCommandWords) {
    if (str_icmp(word.c_str(), entry.word) == 0) {
      return std::string("'") + entry.word + "' (command words are matched with case)";
    }
  }
  return "one of " + command_words();
}

void check_unknown(const std::string& file, int line, const char* text, bool complete,
                   const init_command& stored, const carried& from, check_report* report) {
  const std::string word = first_word(text);
  std::string effect = "the line does nothing";
  if (complete && stored.type != kInitUnknown) {
    effect = std::string("a run gives the line the command ") + command_word(stored.type) +
             " of the incomplete line " + std::to_string(from.type_line) + " and runs it as that";
  }
  check_error(report, file, line, "unknown init command '%s': %s; write %s", word.c_str(),
              effect.c_str(), known_word_for(word).c_str());
}

void check_conditions(const std::string& file, int line, const init_command& stored,
                      const init_command& own, const carried& from, check_report* report) {
  if (!own.cond_name && stored.cond_name && stored.cond_value) {
    check_warning(report, file, line,
                  "takes the condition setting '%s' from the incomplete line %d, as a run "
                  "carries it over: the command runs only when %s is '%s'; complete or remove "
                  "line %d",
                  stored.cond_name->c_str(), from.cond_line, stored.cond_name->c_str(),
                  stored.cond_value->c_str(), from.cond_line);
  }
  if (stored.cond_value && !stored.cond_name) {
    check_error(report, file, line,
                "an expected value ('%s') without a condition setting: the command never runs; "
                "name the setting to compare in the fourth word, or write '-' for both",
                stored.cond_value->c_str());
  }
  if (own.cond_name && !stored.cond_value) {
    check_warning(report, file, line,
                  "condition setting '%s' without an expected value: the condition is ignored "
                  "and the command always runs; give the value to compare with as the fifth "
                  "word, or write '-' for both",
                  own.cond_name->c_str());
  }
}

void add_use(check_report* report, const std::string& file, int line, const std::string& name,
             setting_use_kind kind, const char* effect = "",
             check_severity severity = check_severity::warning) {
  report->uses.push_back({file, line, name, kind, effect, severity});
}

void add_references(check_report* report, const std::string& file, int line,
                    const std::string& path) {
  for (const std::string& name : ini_reference_names(path.c_str())) {
    add_use(report, file, line, name, setting_use_kind::reference, kExpandsToNothing);
  }
}

// What a stored line writes, refers to and reads.
void record_uses(const std::string& file, int line, const init_command& stored,
                 check_report* report) {
  switch (stored.type) {
    case kInitExist:
      add_references(report, file, line, stored.name);
      add_use(report, file, line, stored.value, setting_use_kind::written);
      break;
    case kInitCopy:
      add_use(report, file, line, stored.name, setting_use_kind::written);
      if (stored.value.find("$(") != std::string::npos) {
        check_warning(report, file, line,
                      "'%s' is taken as a setting's name or as a literal, never filled in: a run "
                      "sets %s to '%s' as written; name the setting whose value to copy",
                      stored.value.c_str(), stored.name.c_str(), stored.value.c_str());
      }
      break;
    case kInitHttpUser:
    case kInitHttpGroup:
    case kInitHttpRoot:
    case kInitHttpScripts:
      add_use(report, file, line, stored.name, setting_use_kind::written);
      add_use(report, file, line, stored.value, setting_use_kind::failure_flag);
      break;
    case kInitTimeDate:
      add_use(report, file, line, stored.name, setting_use_kind::read, kNoDate,
              check_severity::error);
      add_use(report, file, line, stored.value, setting_use_kind::written);
      break;
    case kInitWFile: add_references(report, file, line, stored.name); break;
    case kInitRFile:
      add_references(report, file, line, stored.name);
      add_use(report, file, line, stored.value, setting_use_kind::written);
      break;
    default: break;
  }
}

}  // namespace

void init_check_file(const char* path, const std::string& file, check_report* report) {
  if (path == nullptr || report == nullptr) return;
  const unique_file stream =
      check_open(path, file, report,
                 "a run prints \"Error: Failed to load init file\" and ends "
                 "before the menu; put the init file in the directory the installer is started "
                 "from (comments alone will do)");
  if (!stream) return;
  init_command pending;
  carried from;
  check_read_lines(stream.get(), kLineSize, [&](int line, char* text) {
    init_command own;
    std::string copy(text);
    {
      check_quiet_log quiet;
      init_parse_line(copy.data(), &own);
    }
    std::string shown(text);
    const int words = init_parse_line(text, &pending);
    if (words == 0) return;
    if (own.type == kInitUnknown) {
      check_unknown(file, line, shown.c_str(), words == kInitLineWords, pending, from, report);
    }
    if (words < kInitLineWords) {
      check_error(report, file, line,
                  "has %d of the five words (command, first argument, second argument, "
                  "condition setting, expected value): a run leaves the line out and carries "
                  "what it gave into the next line; write all five, '-' for no condition",
                  words);
      if (own.type != kInitUnknown) from.type_line = line;
      if (words == 4 && own.cond_name) from.cond_line = line;
      return;
    }
    check_conditions(file, line, pending, own, from, report);
    record_uses(file, line, pending, report);
    pending = init_command();
    from = carried();
  });
}
