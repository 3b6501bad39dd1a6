#include "copyscript/copy_check.h"

#include <cerrno>
#include <cstring>
#include <string_view>

#include "copyscript/copy_script.h"
#include "fileops/file_ops.h"
#include "fileops/file_trust.h"
#include "foundation/file_guard.h"
#include "foundation/handles.h"
#include "foundation/str_text.h"
#include "settings/ini_expand.h"

namespace {

// The Ini operation reads template lines with this bound.
constexpr int kTemplateLineSize = 3000;
// Modes keep their low 16 bits.
constexpr unsigned kModeMask = 0xFFFF;

constexpr const char* kStaysAsWritten = "it stays as written";

struct line_at {
  const std::string& file;
  int line;
  const std::string& word;  // the operation word as written
  check_report* report;
};

const char* text_of(const std::optional<std::string>& field) { return field ? field->c_str() : ""; }

bool has_reference(std::string_view text) { return text.find("$(") != std::string_view::npos; }
bool has_wildcard(std::string_view text) {
  return text.find_first_of("*?") != std::string_view::npos;
}
bool ends_in_separator(std::string_view text) {
  return !text.empty() && (text.back() == '/' || text.back() == '\\');
}

std::string operation_words() {
  std::string words;
  for (const copy_operation_word& op : k_copy_operation_words) {
    if (!words.empty()) words += ", ";
    words += op.word;
  }
  return words;
}

// The names of an operation's required fields, as the messages give them.
std::vector<const char*> field_names(uint32_t code, unsigned fields) {
  std::vector<const char*> names;
  if (fields & k_field_source) names.push_back(code == k_copy_error ? "setting" : "source");
  if (fields & k_field_not) names.push_back("not wildcard");
  if (fields & k_field_destination) {
    names.push_back(code == k_copy_chown ? "owner" : code == k_copy_chmod ? "mode" : "destination");
  }
  return names;
}

void report_dropped(const line_at& at, const copy_line& line) {
  const copy_operation_word* op = copy_operation_of(line.type);
  if (op == nullptr) return;
  const std::vector<const char*> names = field_names(line.type, op->fields);
  const bool given[] = {line.source.has_value(), line.not_list.has_value(),
                        line.destination.has_value()};
  const unsigned bits[] = {k_field_source, k_field_not, k_field_destination};
  size_t missing = 0;
  for (size_t i = 0; i < 3; ++i) {
    if ((op->fields & bits[i]) == 0) continue;
    if (!given[i]) break;
    ++missing;
  }
  std::string all;
  for (size_t i = 0; i < names.size(); ++i) {
    if (i > 0) all += i + 1 == names.size() ? " and " : ", ";
    all += names[i];
  }
  check_error(at.report, at.file, at.line,
              "the %s is missing (%s takes %s): a run drops the line and does nothing for it; "
              "complete it%s",
              names[missing], at.word.c_str(), all.c_str(),
              (op->fields & k_field_not) ? " ('-' for no exclusion)" : "");
}

void check_mode(const line_at& at, const std::string& mode) {
  if (has_reference(mode) || mode.find_first_not_of("01234567") == std::string::npos) return;
  unsigned value = 0;
  for (char c : mode) value = value * 8 + static_cast<unsigned>(c - '0');
  check_error(at.report, at.file, at.line,
              "mode '%s' is not octal: a run takes each character as a digit and sets the mode "
              "%o (octal); write the mode in octal digits, 755 say",
              mode.c_str(), value & kModeMask);
}

void check_owner(const line_at& at, const std::string& owner) {
  if (has_reference(owner)) return;
  const size_t colon = owner.find(':');
  const std::string user = owner.substr(0, colon);
  const std::string group = colon == std::string::npos ? owner : owner.substr(colon + 1);
  const int uid = file_user_id(user.c_str());
  if (uid == -1) {
    check_warning(at.report, at.file, at.line,
                  "user '%s' is not known on this host: a run finds no id for it, changes no "
                  "owner and fails the line (an install or upgrade stops there); name an account "
                  "that exists, or create it first",
                  user.c_str());
  } else if (file_group_id(group.c_str()) == -1) {
    check_warning(at.report, at.file, at.line,
                  "group '%s' is not known on this host: a run gives the files the group whose "
                  "id is the user's (%d); name a group that exists, as user:group",
                  group.c_str(), uid);
  }
}

// "\" as "/", runs of separators as one, no separator at the end.
std::string normal_path(std::string_view path) {
  std::string out;
  for (char c : path) {
    if (c == '\\') c = '/';
    if (c == '/' && !out.empty() && out.back() == '/') continue;
    out += c;
  }
  while (out.size() > 1 && out.back() == '/') out.pop_back();
  return out;
}

// Whether the destination is the directory its sources are listed in.
bool copies_into_itself(const copy_line& line) {
  const std::string source = text_of(line.source);
  const size_t sep = source.find_last_of("/\\");
  if (sep == std::string::npos) return false;
  return normal_path(std::string_view(source).substr(0, sep + 1)) ==
         normal_path(text_of(line.destination));
}

void check_destination(const line_at& at, const copy_line& line) {
  const std::string destination = text_of(line.destination);
  if (ends_in_separator(destination)) {
    check_error(at.report, at.file, at.line,
                "destination '%s' ends in a separator: a run finds no directory to copy into "
                "and the line fails (\"No destination directories found\"); leave the final "
                "separator off",
                destination.c_str());
  } else if (destination.find_first_of("/\\") == std::string::npos && !has_reference(destination)) {
    check_error(at.report, at.file, at.line,
                "destination '%s' has no directory part: a run finds no directory to copy into "
                "and the line fails (\"No destination directories found\"); write the "
                "directory's full path",
                destination.c_str());
  } else if (copies_into_itself(line)) {
    check_error(at.report, at.file, at.line,
                "copies into the directory its source lies in ('%s'): each entry would be "
                "copied onto itself, so every copy fails and so does the line; copy into "
                "another directory",
                destination.c_str());
  }
}

// What each operation's run does that its line does not show.
void check_operation(const line_at& at, const copy_line& line) {
  const std::string source = text_of(line.source);
  switch (line.type) {
    case k_copy_file:
    case k_copy_dir: check_destination(at, line); break;
    case k_copy_chmod: check_mode(at, text_of(line.destination)); break;
    case k_copy_chown: check_owner(at, text_of(line.destination)); break;
    case k_copy_rfile:
      check_error(at.report, at.file, at.line,
                  "RFile in a copy script opens its file for writing: a run empties '%s', reads "
                  "nothing and leaves %s as it was; read files with RFile in the init file",
                  source.c_str(), text_of(line.destination));
      break;
    case k_copy_rename:
    case k_copy_mkdir:
      if (!has_wildcard(source)) break;
      check_warning(at.report, at.file, at.line,
                    "%s takes no wildcards: a run takes '%s' as one name%s; name one path a line",
                    at.word.c_str(), source.c_str(),
                    line.type == k_copy_mkdir
                        ? " and makes a directory called so"
                        : ", the rename fails and the line falls back to copying what the path "
                          "matches into the directories the destination matches, leaving the "
                          "sources where they are");
      break;
    case k_copy_rm_file:
    case k_copy_rm_dir:
      if (!ends_in_separator(source)) break;
      check_warning(at.report, at.file, at.line,
                    "source '%s' ends in a separator: a run removes everything inside that "
                    "directory and keeps the directory itself; leave the final separator off to "
                    "remove it, or write '*' after it to say so",
                    source.c_str());
      break;
    case k_copy_error:
      if (line.destination) break;
      check_warning(at.report, at.file, at.line,
                    "Error line without a message: when %s reads false, a run stops with an "
                    "empty reason (\"Failed, \"); write the message after the setting",
                    source.c_str());
      break;
    default: break;
  }
}

void add_use(const line_at& at, const std::string& name, setting_use_kind kind,
             const char* effect = "") {
  at.report->uses.push_back({at.file, at.line, name, kind, effect, check_severity::warning});
}

void record_uses(const line_at& at, ini_store* store, const copy_line& line) {
  for (const std::string& name : ini_reference_names(text_of(line.source))) {
    add_use(at, name, setting_use_kind::reference, kStaysAsWritten);
  }
  const bool owner = line.type == k_copy_chown;
  for (const std::string& name : ini_reference_names(text_of(line.destination))) {
    add_use(at, name, setting_use_kind::reference,
            owner ? "it expands to nothing" : kStaysAsWritten);
  }
  if (line.control && *line.control != "-") {
    add_use(at, *line.control, setting_use_kind::read, "the line always runs");
  }
  if (line.type == k_copy_exist) add_use(at, text_of(line.destination), setting_use_kind::written);
  if (line.type == k_copy_error) {
    add_use(at, text_of(line.source), setting_use_kind::read, "the Error line never stops the run");
  }
  if (line.type == k_copy_ini) {
    char path[kPathSize] = "";
    ini_expand_refs(store, text_of(line.source), path, kPathSize, ini_unknown_refs::keep);
    if (!has_reference(path)) at.report->templates.push_back({at.file, at.line, path});
  }
}

void take_line(ini_store* store, const std::string& file, int line_number, const char* text,
               check_report* report) {
  copy_line line;
  const int kept = copy_line_parse(text, &line);
  std::string word(text, strcspn(text, " \t"));
  const line_at at{file, line_number, word, report};
  if (line.type == 0) {
    check_error(report, file, line_number,
                "unknown copy operation '%s': a run keeps the line and fails it (an install or "
                "upgrade stops there); write one of %s",
                word.c_str(), operation_words().c_str());
    return;
  }
  if (!kept) {
    report_dropped(at, line);
    return;
  }
  check_operation(at, line);
  record_uses(at, store, line);
}

}  // namespace

bool copy_check_file(ini_store* store, const char* path, const std::string& file,
                     check_report* report) {
  if (path == nullptr || report == nullptr) return false;
  const unique_file stream =
      check_open(path, file, report,
                 "every action asks its questions and then does nothing, "
                 "without a word; put the copy script in the directory the installer is started "
                 "from");
  if (!stream) return false;
  check_sectioned_file(stream.get(), file, report, [&](const std::string&, int line, char* text) {
    take_line(store, file, line, text, report);
  });
  return true;
}

void copy_check_template(const check_place& place, const std::string& label, check_report* report) {
  if (report == nullptr) return;
  errno = 0;
  const unique_file stream(file_open_named(place.name.c_str(), "r"));
  if (!stream) {
    char reason[kLineSize];
    check_warning(report, place.file, place.line,
                  "template '%s' cannot be read (%s): if it cannot when the line runs either, the "
                  "destination is left empty and the line falls back to a copy, which fails; "
                  "ship the template with the product",
                  label.c_str(), str_last_error(reason, sizeof reason));
    return;
  }
  check_read_lines(stream.get(), kTemplateLineSize, [&](int line, char* text) {
    for (const std::string& name : ini_reference_names(str_trim(text))) {
      report->uses.push_back({label, line, name, setting_use_kind::reference,
                              "it stays as written in the file written", check_severity::warning});
    }
  });
}
