#include "foundation/check_report.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "foundation/console.h"
#include "foundation/handles.h"

namespace {

// A long line comes in pieces of the reader's bound, all numbered as the
// line they belong to; a last line without line end is a line too.
TEST(CheckReport, LinesAreNumberedAsWrittenNotAsRead) {
  const unique_file stream(tmpfile());
  const std::string long_line(1200, 'x');
  fprintf(stream.get(), "%s\nshort\nlast", long_line.c_str());
  rewind(stream.get());
  std::vector<std::pair<int, size_t>> pieces;
  check_read_lines(stream.get(), 1000, [&](int line, char* text) {
    pieces.emplace_back(line, std::string(text).size());
  });
  const std::vector<std::pair<int, size_t>> expected{{1, 999}, {1, 202}, {2, 6}, {3, 4}};
  EXPECT_EQ(pieces, expected);
}

// Files in the order given, the others after them as they first appear;
// lines in order within a file; a message given twice for one line, once.
TEST(CheckReport, PrintsInFileAndLineOrderOnceEachWithTheSummary) {
  check_report report;
  check_warning(&report, "conf.in", 2, "in a template");
  check_error(&report, "b.q", 9, "late");
  check_error(&report, "b.q", 3, "early %s", "twice");
  check_error(&report, "b.q", 3, "early %s", "twice");
  check_warning(&report, "a.dat", 1, "first");
  check_error(&report, "b.q", 0, "whole file");
  const unique_file out(tmpfile());
  console_set_streams(nullptr, out.get());
  const int status = check_report_print(report, {"a.dat", "b.q"});
  console_set_streams(nullptr, nullptr);
  EXPECT_EQ(status, 1);
  rewind(out.get());
  std::string printed;
  for (int c = fgetc(out.get()); c != EOF; c = fgetc(out.get())) printed += static_cast<char>(c);
  EXPECT_EQ(printed,
            "a.dat:1: warning: first\n"
            "b.q: error: whole file\n"
            "b.q:3: error: early twice\n"
            "b.q:9: error: late\n"
            "conf.in:2: warning: in a template\n"
            "3 errors, 2 warnings\n");

  check_report warnings_only;
  check_warning(&warnings_only, "a.dat", 1, "only this");
  const unique_file quiet(tmpfile());
  console_set_streams(nullptr, quiet.get());
  EXPECT_EQ(check_report_print(warnings_only, {}), 0);
  console_set_streams(nullptr, nullptr);
}

}  // namespace
