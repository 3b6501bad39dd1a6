#include "foundation/section_file.h"

#include <string_view>

#include "foundation/str_text.h"

bool section_file_header(const char* line, std::string_view* name) {
  if (line == nullptr || name == nullptr || line[0] != '[') return false;
  *name = std::string_view(line + 1);
  if (!name->empty() && name->back() == ']') name->remove_suffix(1);
  return true;
}

bool section_file_same(std::string_view name, std::string_view wanted) {
  if (name.size() != wanted.size()) return false;
  for (size_t i = 0; i < name.size(); ++i) {
    if (str_fold(name[i]) != str_fold(wanted[i])) return false;
  }
  return true;
}

int section_file_read(FILE* stream, const char* section,
                      const std::function<void(char* line)>& on_line) {
  if (stream == nullptr || section == nullptr) return 0;
  char buffer[kLineSize];
  bool found = false;
  while (fgets(buffer, sizeof buffer, stream) != nullptr) {
    char* line = str_trim(buffer);
    if (line[0] == '\0' || line[0] == '#') continue;
    std::string_view name;
    if (section_file_header(line, &name)) {
      if (found) break;
      found = section_file_same(name, section);
      continue;
    }
    if (found && on_line) on_line(line);
  }
  return found ? 1 : 0;
}
