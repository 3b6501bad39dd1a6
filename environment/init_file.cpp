#include "environment/init_file.h"

#include <cerrno>
#include <cstdarg>
#include <memory>

#include "foundation/file_guard.h"
#include "foundation/formatter.h"
#include "foundation/handles.h"
#include "foundation/logger.h"
#include "foundation/results.h"
#include "foundation/str_path.h"
#include "foundation/str_text.h"

namespace {

std::string g_last_error;

constexpr const char* kBlanks = " \t";

// Sets type from the command word; an unknown word leaves it as it was.
void take_command_word(const char* word, init_command& pending) {
  for (const init_command_word& entry : kInitCommandWords) {
    if (str_cmp(word, entry.word) == 0) {
      pending.type = entry.type;
      return;
    }
  }
  log_error("Unknown init command '%s'", word);
}

// A condition word: "-" leaves the field as it was (it may hold a text
// carried over from an earlier short line).
void take_condition(const char* word, std::optional<std::string>& field) {
  if (str_cmp(word, "-") != 0) field = word;
}

void destroy_command_slot(void** slot) {
  auto* command = static_cast<init_command*>(*slot);
  init_command_free(&command);
  *slot = nullptr;
}

}  // namespace

int init_parse_line(char* line, init_command* pending) {
  if (line == nullptr || pending == nullptr) return 0;
  char* cont = nullptr;
  const char* word = str_token(str_trim(line), kBlanks, &cont);
  if (word == nullptr || word[0] == '#') return 0;
  take_command_word(word, *pending);

  if ((word = str_token(nullptr, kBlanks, &cont)) == nullptr) return 1;
  pending->name = word;
  if ((word = str_token(nullptr, kBlanks, &cont)) == nullptr) return 2;
  pending->value = word;
  if ((word = str_token(nullptr, kBlanks, &cont)) == nullptr) return 3;
  take_condition(word, pending->cond_name);
  if ((word = str_token(nullptr, kBlanks, &cont)) == nullptr) return 4;
  take_condition(word, pending->cond_value);
  return kInitLineWords;
}

init_list* init_list_create() {
  auto* list = new init_list;
  list->commands = list_create();
  return list;
}

void init_list_free(init_list** list) {
  if (list == nullptr || *list == nullptr) return;
  list_free_with(&(*list)->commands, destroy_command_slot);
  delete *list;
  *list = nullptr;
}

void init_command_free(init_command** command) {
  if (command == nullptr || *command == nullptr) return;
  delete *command;
  *command = nullptr;
}

int init_load(init_list* list, const char* path) {
  if (list == nullptr || path == nullptr) return k_fail;
  errno = 0;
  unique_file file(file_open(path, "r"));
  if (!file) {
    char reason[kLineSize];
    init_set_error("Failed to read '%s', %s", path, str_last_error(reason, kLineSize));
    return k_fail;
  }
  std::unique_ptr<init_command> pending;
  char line[kLineSize];
  while (fgets(line, kLineSize, file.get()) != nullptr) {
    if (pending == nullptr) pending = std::make_unique<init_command>();
    if (init_parse_line(line, pending.get()) == kInitLineWords &&
        list_append(list->commands, pending.get())) {
      pending.release();
    }
  }
  return k_ok;
}

init_command* init_first(init_list* list, int index) {
  if (list == nullptr) return nullptr;
  return static_cast<init_command*>(list_get(list->commands, index));
}

init_command* init_next(init_list* list) {
  if (list == nullptr) return nullptr;
  return static_cast<init_command*>(list_next(list->commands));
}

void init_seek(init_list* list, int index) {
  if (list != nullptr) list_seek(list->commands, index);
}

void init_rewind(init_list* list) {
  if (list != nullptr) list_rewind(list->commands);
}

void init_skip(init_list* list) {
  if (list != nullptr) list_skip(list->commands);
}

void init_back(init_list* list) {
  if (list == nullptr) return;
  int cursor = list_cursor(list->commands);
  if (cursor > 0) list_seek(list->commands, cursor - 1);
}

void init_set_error(const char* format, ...) {
  char text[kLineSize] = "";
  va_list args;
  va_start(args, format);
  int written = vsnprintf(text, kLineSize, format, args);
  va_end(args);
  if (written < 0 || written >= kLineSize) text[kLineMax] = '\0';
  g_last_error = text;
}

const char* init_last_error() { return g_last_error.c_str(); }
