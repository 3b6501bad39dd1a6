// The answers file: whatever it holds, the parser either refuses it with a
// message or gives answers that stand on their lines, and the file it
// writes back from them reads again.
#include <string>

#include "driver/answers.h"
#include "fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz_open_log();
  answers_file file;
  file.path = "answers";
  std::string error;
  if (!answers_parse(std::string(fuzz_text(data, size)), &file, &error)) {
    fuzz_require(error.rfind("answers:", 0) == 0, "a refusal names the file and line");
    return 0;
  }
  for (const answer& line : file.answers) {
    fuzz_require(line.line >= 1 && static_cast<size_t>(line.line) <= file.lines.size(),
                 "an answer stands on a line of the file");
    fuzz_require(!line.name.empty() && line.name.find_first_of(" \t") == std::string::npos,
                 "a name is one word");
  }
  answers_file again;
  again.path = "answers";
  fuzz_require(answers_parse(answers_merge(file, file.answers), &again, &error) == 1,
               "what is written back reads again");
  fuzz_require(again.answers.size() >= file.answers.size(), "no answer is lost on the way back");
  return 0;
}
