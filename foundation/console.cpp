#include "foundation/console.h"

#include <cstdarg>
#include <cstring>

#include "foundation/formatter.h"
#include "foundation/results.h"
#include "foundation/str_text.h"

namespace {

FILE* g_input = nullptr;
FILE* g_output = nullptr;
// Whether the next text starts a line: nothing written yet, or the last
// text ended with a line end.
bool g_line_start = true;

FILE* in_stream() { return g_input != nullptr ? g_input : stdin; }
FILE* out_stream() { return g_output != nullptr ? g_output : stdout; }

// Reads and drops what is left of the current line.
void drop_rest_of_line(FILE* stream) {
  int c = 0;
  do {
    c = fgetc(stream);
  } while (c != EOF && c != '\n');
}

}  // namespace

void console_set_streams(FILE* in, FILE* out) {
  g_input = in;
  g_output = out;
}

void console_print(const char* text) {
  if (text == nullptr || text[0] == '\0') return;
  fputs(text, out_stream());
  g_line_start = text[strlen(text) - 1] == '\n';
}

void console_end_line() {
  if (!g_line_start) console_print("\n");
}

void console_printf(const char* format, ...) {
  if (format == nullptr) return;
  char line[kLineSize];
  va_list args;
  va_start(args, format);
  vsnprintf(line, sizeof line, format, args);
  va_end(args);
  line[kLineMax] = '\0';  // a full buffer is left unterminated
  console_print(line);
}

void console_flush() { fflush(out_stream()); }

int console_read_line(char* buffer, int size) {
  if (buffer == nullptr || size < 2) return k_fail;
  console_flush();
  FILE* stream = in_stream();
  if (fgets(buffer, size, stream) == nullptr) {
    buffer[0] = '\0';
    return k_fail;
  }
  const size_t length = strlen(buffer);
  if (length == static_cast<size_t>(size - 1) && buffer[length - 1] != '\n') {
    drop_rest_of_line(stream);
  }
  return k_ok;
}
