#include "foundation/check_report.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <string_view>

#include "foundation/console.h"
#include "foundation/file_guard.h"
#include "foundation/formatter.h"
#include "foundation/logger.h"
#include "foundation/section_file.h"
#include "foundation/str_text.h"

namespace {

constexpr int kMessageSize = 2 * kLineSize;

void add_message(check_report* report, const std::string& file, int line, check_severity severity,
                 const char* format, va_list args) {
  if (report == nullptr || format == nullptr) return;
  char text[kMessageSize];
  if (vsnprintf(text, sizeof text, format, args) < 0) text[kMessageSize - 1] = '\0';
  report->messages.push_back({file, line, severity, text});
}

const check_place* first_section(const check_report& report, const std::string& file,
                                 std::string_view name) {
  for (const check_place& place : report.sections) {
    if (place.file == file && section_file_same(place.name, name)) return &place;
  }
  return nullptr;
}

// The position of file in the printing order.
size_t file_rank(std::vector<std::string>& order, const std::string& file) {
  auto found = std::find(order.begin(), order.end(), file);
  if (found != order.end()) return static_cast<size_t>(found - order.begin());
  order.push_back(file);
  return order.size() - 1;
}

bool same_message(const check_message& a, const check_message& b) {
  return a.file == b.file && a.line == b.line && a.severity == b.severity && a.text == b.text;
}

}  // namespace

void check_error(check_report* report, const std::string& file, int line, const char* format, ...) {
  va_list args;
  va_start(args, format);
  add_message(report, file, line, check_severity::error, format, args);
  va_end(args);
}

unique_file check_open(const char* path, const std::string& file, check_report* report,
                       const char* then) {
  errno = 0;
  unique_file stream(file_open(path, "r"));
  if (!stream) {
    char reason[kLineSize];
    check_error(report, file, 0, "cannot be read (%s): %s", str_last_error(reason, sizeof reason),
                then);
  }
  return stream;
}

void check_warning(check_report* report, const std::string& file, int line, const char* format,
                   ...) {
  va_list args;
  va_start(args, format);
  add_message(report, file, line, check_severity::warning, format, args);
  va_end(args);
}

void check_read_lines(FILE* stream, int size, const std::function<void(int, char*)>& on_line) {
  if (stream == nullptr || size < 2 || !on_line) return;
  std::string buffer(static_cast<size_t>(size), '\0');
  int line = 1;
  while (fgets(buffer.data(), size, stream) != nullptr) {
    const size_t length = strlen(buffer.data());
    const bool whole = length > 0 && buffer[length - 1] == '\n';
    on_line(line, buffer.data());
    if (whole) ++line;
  }
}

void check_sectioned_file(
    FILE* stream, const std::string& file, check_report* report,
    const std::function<void(const std::string& section, int line, char* text)>& on_line) {
  if (stream == nullptr || report == nullptr) return;
  std::string section;
  bool seen_header = false;
  bool inside = false;  // in the first section of its name
  bool outside_told = false;
  check_read_lines(stream, kLineSize, [&](int line, char* raw) {
    char* text = str_trim(raw);
    if (text[0] == '\0' || text[0] == '#') return;
    std::string_view name;
    if (section_file_header(text, &name)) {
      section = std::string(name);
      seen_header = true;
      const check_place* first = first_section(*report, file, name);
      inside = first == nullptr;
      if (inside) {
        report->sections.push_back({file, line, section});
      } else {
        check_warning(report, file, line,
                      "[%s] appears again (first on line %d): a run reads only the first, so the "
                      "lines below are never read; move them into the first [%s]",
                      section.c_str(), first->line, section.c_str());
      }
      return;
    }
    if (inside) {
      if (on_line) on_line(section, line, text);
    } else if (!seen_header && !outside_told) {
      outside_told = true;
      check_warning(report, file, line,
                    "line outside any section: a run reads only the lines under a [section] "
                    "header, so this one and those after it up to the first header are never "
                    "read; put them under the header of their action");
    }
  });
}

int check_report_print(const check_report& report, const std::vector<std::string>& files) {
  std::vector<std::string> order = files;
  std::vector<std::pair<size_t, const check_message*>> sorted;
  for (const check_message& message : report.messages) {
    sorted.emplace_back(file_rank(order, message.file), &message);
  }
  std::stable_sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) {
    return a.first != b.first ? a.first < b.first : a.second->line < b.second->line;
  });
  int errors = 0;
  int warnings = 0;
  const check_message* last = nullptr;
  for (const auto& [rank, message] : sorted) {
    if (last != nullptr && same_message(*last, *message)) continue;  // one line, one field each
    last = message;
    const bool error = message->severity == check_severity::error;
    (error ? errors : warnings) += 1;
    console_print(message->file.c_str());
    if (message->line > 0) console_printf(":%d", message->line);
    console_print(error ? ": error: " : ": warning: ");
    console_print(message->text.c_str());
    console_print("\n");
  }
  console_printf("%d errors, %d warnings\n", errors, warnings);
  return errors > 0 ? 1 : 0;
}

// A logger with no file takes every line and writes none; at the error level
// it also holds no error back for a later file.
check_quiet_log::check_quiet_log() : saved_(log_current()) {
  sink_.level = static_cast<unsigned>(log_level::error);
  log_set_current(&sink_);
}

check_quiet_log::~check_quiet_log() { log_set_current(saved_); }
