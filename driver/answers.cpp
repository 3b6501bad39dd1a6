#include "driver/answers.h"

#include <cerrno>
#include <cstdio>
#include <string_view>

#include "fileops/file_trust.h"
#include "foundation/file_replace.h"
#include "foundation/handles.h"
#include "foundation/logger.h"
#include "foundation/str_text.h"
#include "settings/ini_file.h"

namespace {

// An answers file larger than this is refused rather than read.
constexpr size_t kAnswersMaxSize = 1048576;

// "<what> '<path>', <reason>": why in words when given, else the system's
// text for err.
std::string file_failure(const char* what, const std::string& path, const char* why, int err) {
  char reason[kLineSize];
  return std::string(what) + " '" + path + "', " +
         (why != nullptr ? why : str_error_text(err, reason, kLineSize));
}

std::string line_failure(const answers_file& file, int line, const std::string& what) {
  return file.path + ":" + std::to_string(line) + ": " + what;
}

// Reads the whole stream, up to kAnswersMaxSize; false beyond that or on a
// read error.
bool read_all(FILE* stream, std::string* text) {
  char chunk[8192];
  size_t got = 0;
  while ((got = fread(chunk, 1, sizeof chunk, stream)) > 0) {
    text->append(chunk, got);
    if (text->size() > kAnswersMaxSize) {
      errno = EFBIG;
      return false;
    }
  }
  return ferror(stream) == 0;
}

// raw, a line whose setting is name, with its value replaced by value: the
// text up to the value (indentation, name, blanks) kept as it stands.
std::string with_value(const std::string& raw, const std::string& name, const std::string& value) {
  const size_t name_end = raw.find(name) + name.size();
  const size_t value_start = raw.find_first_not_of(" \t", name_end);
  const bool separated = value_start != std::string::npos && value_start > name_end;
  const std::string gap = separated ? raw.substr(name_end, value_start - name_end) : " ";
  return raw.substr(0, name_end) + gap + value;
}

// Whether value can be written as "name value" and read back the same.
bool fits_one_line(const std::string& name, const char* value) {
  const std::string_view text(value);
  return text.find_first_of("\r\n") == std::string_view::npos &&
         name.size() + 1 + text.size() <= static_cast<size_t>(kLineMax);
}

// The values of names to keep, in order: masked settings, settings without
// value and values that do not fit one line left out.
std::vector<answer> values_to_keep(ini_store* store, const std::vector<std::string>& names) {
  std::vector<answer> values;
  for (const std::string& name : names) {
    const char* value = ini_get(store, name.c_str());
    if ((ini_flags_of(store, name.c_str()) & INI_MASKED) != 0) {
      log_info("Answer for '%s' not kept, the setting is masked", name.c_str());
    } else if (value != nullptr && !fits_one_line(name, value)) {
      log_error("Answer for '%s' not kept, its value does not fit on one line", name.c_str());
    } else if (value != nullptr) {
      values.push_back({name, value, 0});
    }
  }
  return values;
}

}  // namespace

int answers_parse(const std::string& text, answers_file* out, std::string* error) {
  if (out == nullptr || error == nullptr) return 0;
  out->lines.clear();
  out->answers.clear();
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    const std::string line = text.substr(start, end - start);
    start = end + 1;
    const int number = static_cast<int>(out->lines.size()) + 1;
    if (line.size() > static_cast<size_t>(kLineMax)) {
      *error = line_failure(*out, number, "line longer than 999 characters");
      return 0;
    }
    if (line.find('\0') != std::string::npos) {
      *error = line_failure(*out, number, "line holds a NUL byte");
      return 0;
    }
    ini_line parsed;
    if (ini_parse_line(line.c_str(), &parsed) != 0) {
      out->answers.push_back({parsed.name, parsed.value, number});
    }
    out->lines.push_back(line);
  }
  return 1;
}

int answers_read(const char* path, answers_file* out, std::string* error) {
  if (path == nullptr || out == nullptr || error == nullptr) return 0;
  out->path = path;
  out->lines.clear();
  out->answers.clear();
  std::string name;
  const char* why = nullptr;
  errno = 0;
  unique_fd dir = file_open_parent(path, &name);
  unique_file stream(dir ? file_open_kept(dir.get(), name.c_str(), &why) : nullptr);
  if (!stream && errno == ENOENT) return 1;
  std::string text;
  if (!stream || !read_all(stream.get(), &text)) {
    *error = file_failure("Cannot read answers from", out->path, why, errno);
    return 0;
  }
  return answers_parse(text, out, error);
}

int answers_check(ini_store* store, const std::set<std::string>& known, answers_file* file,
                  std::string* error) {
  if (file == nullptr || error == nullptr) return 0;
  std::vector<answer> kept;
  for (const answer& given : file->answers) {
    if (known.count(given.name) == 0) {
      *error = line_failure(*file, given.line, "unknown setting '" + given.name + "'");
      return 0;
    }
    if ((ini_flags_of(store, given.name.c_str()) & INI_FIXED) != 0) {
      log_error("%s:%d: setting '%s' is fixed, its answer is ignored", file->path.c_str(),
                given.line, given.name.c_str());
    } else {
      kept.push_back(given);
    }
  }
  file->answers = std::move(kept);
  return 1;
}

void answers_apply(ini_store* store, const answers_file& file) {
  if (store == nullptr || file.answers.empty()) return;
  const bool multi = (store->options & INI_OPT_NEW_MULTI) != 0;
  ini_clear_options(store, INI_OPT_NEW_MULTI);
  for (const answer& given : file.answers) ini_set(store, given.name.c_str(), given.value.c_str());
  if (multi) ini_add_options(store, INI_OPT_NEW_MULTI);
  log_info("Answers from '%s' applied", file.path.c_str());
}

std::string answers_merge(const answers_file& file, const std::vector<answer>& values) {
  std::vector<std::string> lines = file.lines;
  for (const answer& value : values) {
    bool replaced = false;
    for (size_t i = lines.size(); i-- > 0 && !replaced;) {
      ini_line parsed;
      if (ini_parse_line(lines[i].c_str(), &parsed) != 0 && parsed.name == value.name) {
        lines[i] = with_value(lines[i], value.name, value.value);
        replaced = true;
      }
    }
    if (!replaced) lines.push_back(value.name + " " + value.value);
  }
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

int answers_keep(ini_store* store, const char* path, const std::vector<std::string>& names,
                 std::string* error) {
  answers_file file;
  if (!answers_read(path, &file, error)) return 0;
  const std::string text = answers_merge(file, values_to_keep(store, names));
  std::string name;
  const char* why = nullptr;
  errno = 0;
  unique_fd dir = file_open_parent(path, &name);
  if (!dir || !file_replace_kept(dir.get(), name.c_str(), text, &why)) {
    *error = file_failure("Cannot keep the answers in", file.path, why, errno);
    log_error("%s", error->c_str());
    return 0;
  }
  log_info("Answers kept in '%s'", file.path.c_str());
  return 1;
}
