#include "copyscript/copy_script.h"

#include <cerrno>
#include <cstdarg>
#include <string_view>

#include "foundation/file_guard.h"
#include "foundation/formatter.h"
#include "foundation/handles.h"
#include "foundation/logger.h"
#include "foundation/section_file.h"
#include "foundation/str_path.h"
#include "foundation/str_text.h"
#include "settings/ini_expand.h"

namespace {

// The expansion is built in a 10,000-byte buffer.
constexpr unsigned k_expand_size = 10000;

constexpr std::string_view k_separators = " \t";

// Takes the next blank-separated token off the front of rest; empty when
// none is left. rest then starts at the separator after the token.
std::string_view next_token(std::string_view& rest) {
  size_t start = rest.find_first_not_of(k_separators);
  if (start == std::string_view::npos) {
    rest = {};
    return {};
  }
  rest.remove_prefix(start);
  size_t end = rest.find_first_of(k_separators);
  std::string_view token = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end);
  return token;
}

const copy_operation_word* find_operation(std::string_view word) {
  std::string text(word);
  for (const copy_operation_word& op : k_copy_operation_words) {
    if (str_icmp(text.c_str(), op.word) == 0) return &op;
  }
  return nullptr;
}

// Reads one required field, logging it, or the message when it is missing.
std::optional<std::string> required_field(std::string_view& rest, const char* name,
                                          const char* missing) {
  std::string_view token = next_token(rest);
  if (token.empty()) {
    log_error("%s", missing);
    return std::nullopt;
  }
  std::string field(token);
  log_debug("Copy line '%s' is [%s]", name, field.c_str());
  return field;
}

std::optional<std::string> optional_field(std::string_view& rest, const char* name) {
  std::string_view token = next_token(rest);
  if (token.empty()) return std::nullopt;
  std::string field(token);
  log_debug("Copy line '%s' is [%s]", name, field.c_str());
  return field;
}

// Required fields in layout order; false when the last one is missing.
bool read_required(std::string_view& rest, unsigned fields, copy_line& line) {
  bool last_present = true;
  if (fields & k_field_source) {
    line.source = required_field(rest, "source", "Missing copy source path");
    last_present = line.source.has_value();
  }
  if (fields & k_field_not) {
    line.not_list = required_field(rest, "not", "Missing not wildcard");
    last_present = line.not_list.has_value();
  }
  if (fields & k_field_destination) {
    line.destination = required_field(rest, "destination", "Missing copy destination path");
    last_present = line.destination.has_value();
  }
  return last_present;
}

// The error text is everything after the one separator ending the source.
void read_error_text(std::string_view rest, copy_line& line) {
  if (rest.empty()) return;
  rest.remove_prefix(1);
  if (rest.empty()) return;
  line.destination = std::string(rest);
  log_debug("Copy list error string is '%s'", line.destination->c_str());
}

void expand_field(copy_script* script, std::optional<std::string>& field) {
  if (!field) return;
  char* expanded = copy_expand(script, field->c_str());
  if (expanded == nullptr) return;
  field = std::string(expanded);
  str_free(&expanded);
}

const char* text_of(const std::optional<std::string>& field) {
  return field ? field->c_str() : nullptr;
}

const char* source_path(const copy_script* script, int index) {
  const copy_line* line = copy_line_at(script, index);
  return line != nullptr ? text_of(line->source) : nullptr;
}

const char* destination_path(const copy_script* script, int index) {
  const copy_line* line = copy_line_at(script, index);
  return line != nullptr ? text_of(line->destination) : nullptr;
}

// Position of the last "/" or "\", npos when there is none.
size_t last_separator(std::string_view path) { return path.find_last_of("/\\"); }

// A part into buffer, or null when there is none or nowhere to put it.
char* copy_out(const std::optional<std::string>& part, char* buffer, int size) {
  if (!part || buffer == nullptr || size < 1) return nullptr;
  str_copy(buffer, part->c_str(), size);
  return buffer;
}

// The part that split gives of path, none for a null path.
template <typename Split>
std::optional<std::string> part_of(const char* path, Split split) {
  if (path == nullptr) return std::nullopt;
  return split(path);
}

}  // namespace

const copy_operation_word* copy_operation_of(uint32_t code) {
  for (const copy_operation_word& op : k_copy_operation_words) {
    if (op.code == code) return &op;
  }
  return nullptr;
}

copy_script* copy_script_create(ini_store* store) {
  copy_script* script = new copy_script;
  script->store = store;
  return script;
}

void copy_script_free(copy_script** script_ref) {
  if (script_ref == nullptr) return;
  delete *script_ref;
  *script_ref = nullptr;
}

void copy_script_set_callbacks(copy_script* script, file_step_callback progress,
                               file_step_callback failure) {
  if (script == nullptr) return;
  file_set_callbacks(progress, failure);
}

int copy_line_parse(const char* text, copy_line* line) {
  if (text == nullptr || line == nullptr) return 0;
  log_debug("Process .cpy file line [%s]", text);
  std::string_view rest(text);
  std::string_view word = next_token(rest);
  if (word.empty()) return 0;
  const copy_operation_word* op = find_operation(word);
  if (op == nullptr)
    log_error("Unknown copy type '%s'", std::string(word).c_str());
  else
    line->type = op->code;
  log_debug("Copy line 'type' is [%d]", static_cast<int>(line->type));
  if (op != nullptr && !read_required(rest, op->fields, *line)) return 0;
  if (line->type == k_copy_error) {
    read_error_text(rest, *line);
  } else if (op != nullptr) {
    line->control = optional_field(rest, "control");
    if (line->control) line->control_cmp = optional_field(rest, "control_cmp");
  }
  return 1;
}

int copy_script_parse_line(copy_script* script, const char* text) {
  if (script == nullptr || text == nullptr) return 0;
  copy_line line;
  if (!copy_line_parse(text, &line)) return 0;
  if (script->store != nullptr) {
    if (line.not_list && *line.not_list == "-") line.not_list.reset();
    expand_field(script, line.source);
    expand_field(script, line.destination);
  }
  script->lines.push_back(std::move(line));
  return 1;
}

int copy_script_load(copy_script* script, const char* path, const char* section) {
  if (script == nullptr || path == nullptr || section == nullptr) return 0;
  errno = 0;
  unique_file file(file_open(path, "r"));
  if (!file) {
    file_error("Error opening '%s'", path);
    return 0;
  }
  return section_file_read(file.get(), section,
                           [script](char* line) { copy_script_parse_line(script, line); });
}

char* copy_expand(copy_script* script, const char* text) {
  if (script == nullptr || text == nullptr || str_str(text, "$(") == nullptr) return nullptr;
  if (script->store == nullptr) return str_dup(text);
  std::string out(k_expand_size, '\0');
  ini_expand_refs(script->store, text, out.data(), k_expand_size, ini_unknown_refs::keep);
  return str_dup(out.c_str());
}

const copy_line* copy_line_at(const copy_script* script, int index) {
  if (script == nullptr || index < 0 || static_cast<size_t>(index) >= script->lines.size()) {
    return nullptr;
  }
  return &script->lines[static_cast<size_t>(index)];
}

std::string copy_path_dir(std::string_view path) {
  size_t sep = last_separator(path);
  if (sep != std::string_view::npos) return std::string(path.substr(0, sep + 1));
  char cwd[kPathSize];
  return str_getcwd(cwd, kPathSize) != nullptr ? cwd : "";
}

std::string copy_path_source_pattern(std::string_view path) {
  size_t sep = last_separator(path);
  if (sep == std::string_view::npos) return std::string(path);
  if (sep + 1 == path.size()) return "*";
  return std::string(path.substr(sep + 1));
}

std::optional<std::string> copy_path_destination_pattern(std::string_view path) {
  size_t sep = last_separator(path);
  if (sep == std::string_view::npos || sep + 1 == path.size()) return std::nullopt;
  return std::string(path.substr(sep + 1));
}

int copy_count(const copy_script* script) {
  return script != nullptr ? static_cast<int>(script->lines.size()) : 0;
}

uint32_t copy_type(const copy_script* script, int index) {
  const copy_line* line = copy_line_at(script, index);
  return line != nullptr ? line->type : 0;
}

const char* copy_source(const copy_script* script, int index) { return source_path(script, index); }

const char* copy_destination(const copy_script* script, int index) {
  return destination_path(script, index);
}

const char* copy_not(const copy_script* script, int index) {
  const copy_line* line = copy_line_at(script, index);
  return line != nullptr ? text_of(line->not_list) : nullptr;
}

const char* copy_control(const copy_script* script, int index) {
  const copy_line* line = copy_line_at(script, index);
  return line != nullptr ? text_of(line->control) : nullptr;
}

const char* copy_control_cmp(const copy_script* script, int index) {
  const copy_line* line = copy_line_at(script, index);
  return line != nullptr ? text_of(line->control_cmp) : nullptr;
}

char* copy_source_dir(const copy_script* script, int index, char* buffer, int size) {
  return copy_out(part_of(source_path(script, index), copy_path_dir), buffer, size);
}

char* copy_destination_dir(const copy_script* script, int index, char* buffer, int size) {
  return copy_out(part_of(destination_path(script, index), copy_path_dir), buffer, size);
}

char* copy_source_pattern(const copy_script* script, int index, char* buffer, int size) {
  return copy_out(part_of(source_path(script, index), copy_path_source_pattern), buffer, size);
}

char* copy_destination_pattern(const copy_script* script, int index, char* buffer, int size) {
  return copy_out(part_of(destination_path(script, index), copy_path_destination_pattern), buffer,
                  size);
}
