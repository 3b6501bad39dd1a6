#include "driver/known_settings.h"

#include <vector>

#include "foundation/file_guard.h"
#include "foundation/handles.h"
#include "foundation/str_text.h"

namespace {

// The fields of every line of a sectioned file, headers, comments and
// blank lines left out, whatever section they stand in.
std::vector<std::vector<std::string>> field_lines(const char* path) {
  std::vector<std::vector<std::string>> lines;
  const unique_file stream(file_open(path, "r"));
  if (!stream) return lines;
  char buffer[kLineSize];
  while (fgets(buffer, sizeof buffer, stream.get()) != nullptr) {
    char* line = str_trim(buffer);
    if (line[0] == '\0' || line[0] == '#' || line[0] == '[') continue;
    std::vector<std::string>& fields = lines.emplace_back();
    char* rest = nullptr;
    for (char* field = str_token(line, " \t", &rest); field != nullptr;
         field = str_token(nullptr, " \t", &rest)) {
      fields.emplace_back(field);
    }
  }
  return lines;
}

// The field a line sets, by its first word; nullptr for none. Fields count
// from the word: a question sets its label (1), an Exist question the field
// after its path (2); Error and Loop questions set nothing. Exist and RFile
// copy lines set their destination (2); other copy lines set nothing.
const std::string* set_by_question(const std::vector<std::string>& fields) {
  const char* word = fields[0].c_str();
  size_t field = 1;
  if (str_icmp(word, "Exist") == 0) field = 2;
  if (str_icmp(word, "Error") == 0 || str_icmp(word, "Loop") == 0) return nullptr;
  return field < fields.size() ? &fields[field] : nullptr;
}

const std::string* set_by_copy_line(const std::vector<std::string>& fields) {
  const char* word = fields[0].c_str();
  if (str_icmp(word, "Exist") != 0 && str_icmp(word, "RFile") != 0) return nullptr;
  return fields.size() > 2 ? &fields[2] : nullptr;
}

// Copy writes its first argument; the web-server look-ups both (result and
// failure flag); Exist, TimeDate and RFile their second; WFile none.
void add_init_names(init_list* commands, std::set<std::string>& names) {
  for (init_command* command = init_first(commands, 0); command != nullptr;
       command = init_next(commands)) {
    if (command->type == kInitCopy || (command->type & kInitHttp) != 0) {
      names.insert(command->name);
    }
    if (command->type == kInitExist || command->type == kInitTimeDate ||
        command->type == kInitRFile || (command->type & kInitHttp) != 0) {
      names.insert(command->value);
    }
  }
}

}  // namespace

std::set<std::string> known_settings(const ini_store* store, init_list* commands,
                                     const char* questions_path, const char* script_path) {
  std::set<std::string> names;
  for (int i = 0; i < ini_count(store); ++i) names.insert(str_or_empty(ini_name_at(store, i)));
  add_init_names(commands, names);
  for (const auto& fields : field_lines(questions_path)) {
    if (const std::string* name = set_by_question(fields)) names.insert(*name);
  }
  for (const auto& fields : field_lines(script_path)) {
    if (const std::string* name = set_by_copy_line(fields)) names.insert(*name);
  }
  return names;
}
