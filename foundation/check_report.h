// What "install -check" finds in a product's files: messages tied to a file
// and a line, and the facts each file's checker gathers for the checks that
// span files (settings declared, written, read and referred to; sections;
// templates). Each subsystem checks its own format beside its reader and
// fills one report; driver/package_check runs the checks across files and
// prints it. Also the line readers the checkers share, numbering lines as
// the data-file readers read them.
#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "foundation/handles.h"
#include "foundation/logger.h"

enum class check_severity { error, warning };

struct check_message {
  std::string file;  // as the program names it ("install.q"), or a template's path
  int line = 0;      // 1-based; 0 for a problem of the file as a whole
  check_severity severity = check_severity::error;
  std::string text;
};

// How a line uses a setting.
enum class setting_use_kind {
  written,       // set by an init command, a question or a copy line
  failure_flag,  // set to "true" when a web-server look-up fails
  reference,     // $(name) in a text that is expanded
  read,          // named where a value is read (a control, an Error or Loop setting...)
};

struct setting_use {
  std::string file;
  int line = 0;
  std::string name;
  setting_use_kind kind = setting_use_kind::written;
  // reference and read: what a run does when no setting bears the name
  const char* effect = "";
  // read: how bad that is
  check_severity severity = check_severity::warning;
};

// A section header of a sectioned file, or a template that an Ini line
// renders (name: the template's path as the line gives it, settings filled in).
struct check_place {
  std::string file;
  int line = 0;
  std::string name;
};

struct check_report {
  std::vector<check_message> messages;
  std::vector<setting_use> uses;
  std::vector<check_place> sections;
  std::vector<check_place> templates;
};

// Adds a message, formatted (at most 1,999 characters). Nothing for null.
void check_error(check_report* report, const std::string& file, int line, const char* format, ...)
    __attribute__((format(printf, 4, 5)));
void check_warning(check_report* report, const std::string& file, int line, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

// Opens the product file at path for reading as a run does. When it cannot
// be, reports "cannot be read (<reason>): <then>" as an error of file (no
// line) and returns no stream.
unique_file check_open(const char* path, const std::string& file, check_report* report,
                       const char* then);

// Hands each piece that fgets reads with a bound of size (at most size-1
// characters, as every reader of the data files reads them) to on_line, with
// the number of the physical line it begins on. Nothing for null.
void check_read_lines(FILE* stream, int size, const std::function<void(int, char*)>& on_line);

// Reads a sectioned file as foundation/section_file reads it, and hands every
// line of the first section of each name to on_line (section name as
// written, line number, trimmed text). Records each header in
// report->sections; warns of the first line outside any section and of a
// section that appears again, since a run reads neither.
void check_sectioned_file(
    FILE* stream, const std::string& file, check_report* report,
    const std::function<void(const std::string& section, int line, char* text)>& on_line);

// Prints every message in file order (the files in `files` first, in that
// order, then the others in order of appearance), then by line, as
// "<file>:<line>: error: <text>" ("<file>: ..." for the file as a whole;
// a message given twice for one line, for two fields of it, once), and the
// summary "N errors, M warnings", on the console. Returns 1 when
// there is an error, else 0.
int check_report_print(const check_report& report, const std::vector<std::string>& files);

// Silences the current log for its lifetime: the checkers parse a line a
// second time, on its own, to see what it would be without the lines before
// it, and the log keeps each line's messages once.
class check_quiet_log {
 public:
  check_quiet_log();
  ~check_quiet_log();
  check_quiet_log(const check_quiet_log&) = delete;
  check_quiet_log& operator=(const check_quiet_log&) = delete;

 private:
  logger* saved_;
  logger sink_;
};
