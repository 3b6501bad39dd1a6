#include "questions/question_console.h"

#include <cstring>

#include "foundation/results.h"

namespace {

FILE* input = nullptr;
FILE* output = nullptr;

FILE* in_stream() { return input != nullptr ? input : stdin; }
FILE* out_stream() { return output != nullptr ? output : stdout; }

// Reads and drops what is left of the current line.
void drop_rest_of_line(FILE* stream) {
  int c = 0;
  do {
    c = fgetc(stream);
  } while (c != EOF && c != '\n');
}

}  // namespace

void question_set_streams(FILE* in, FILE* out) {
  input = in;
  output = out;
}

void question_print(const char* text) {
  if (text != nullptr) fputs(text, out_stream());
}

int question_read_line(char* buffer, int size) {
  if (buffer == nullptr || size < 2) return k_fail;
  fflush(out_stream());
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
