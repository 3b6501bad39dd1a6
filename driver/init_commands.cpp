#include "driver/init_commands.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>

#include "driver/options.h"
#include "environment/httpd_conf.h"
#include "fileops/file_ops.h"
#include "fileops/file_trust.h"
#include "foundation/console.h"
#include "foundation/file_guard.h"
#include "foundation/handles.h"
#include "foundation/logger.h"
#include "foundation/str_path.h"
#include "foundation/str_text.h"
#include "settings/ini_expand.h"

namespace {

// RFile reads at most this many characters at a time, and fails a file
// larger than a setting could sensibly hold rather than grow without end.
constexpr int kReadPiece = 998;
constexpr size_t kReadMax = 1U << 20;

bool condition_holds(ini_store* store, const init_command& command) {
  if (!command.cond_value) return true;
  // An expected value with no condition word has nothing to compare against.
  if (!command.cond_name) return false;
  const char* actual = ini_get(store, command.cond_name->c_str());
  if (actual == nullptr) actual = command.cond_name->c_str();
  return str_cmp(command.cond_value->c_str(), actual) == 0;
}

// The setting's value when there is one, else the word itself.
const char* setting_or_literal(ini_store* store, const std::string& word) {
  const char* value = ini_get(store, word.c_str());
  return value != nullptr ? value : word.c_str();
}

std::string expanded_path(ini_store* store, const std::string& text) {
  char path[kPathSize] = "";
  ini_expand(store, text.c_str(), path, kPathSize);
  return path;
}

std::string system_reason() {
  char reason[kLineSize];
  return str_last_error(reason, kLineSize);
}

void run_exist(ini_store* store, const init_command& command) {
  std::string path = expanded_path(store, command.name);
  ini_set(store, command.value.c_str(), file_path_type(path.c_str()) != 0 ? "true" : "false");
}

void run_copy(ini_store* store, const init_command& command) {
  ini_set(store, command.name.c_str(), setting_or_literal(store, command.value));
}

// Asks the discovery for the one value the command names.
void run_http(ini_store* store, const init_command& command) {
  char result[kLineSize] = "";
  char error[kLineSize] = "";
  int type = command.type;
  int found = httpd_conf_lookup(
      type == kInitHttpUser ? result : nullptr, type == kInitHttpGroup ? result : nullptr,
      type == kInitHttpRoot ? result : nullptr, type == kInitHttpScripts ? result : nullptr, error);
  if (found) {
    ini_set(store, command.name.c_str(), result);
    return;
  }
  console_print("ERROR: ");
  console_print(error);
  console_print("\n");
  ini_set(store, command.value.c_str(), "true");
}

void run_time_date(ini_store* store, const init_command& command) {
  std::time_t now = std::time(nullptr);
  const char* format = ini_get(store, command.name.c_str());
  if (format == nullptr) {
    log_error("TimeDate '%s' is NULL", command.name.c_str());
    return;
  }
  std::tm local{};
  localtime_r(&now, &local);
  char text[kLineSize] = "";
  if (std::strftime(text, kLineSize, format, &local) == 0) text[0] = '\0';
  ini_set(store, command.value.c_str(), text);
}

void run_write_file(ini_store* store, const init_command& command) {
  std::string path = expanded_path(store, command.name);
  if (plan_mode()) {
    const char* text = setting_or_literal(store, command.value);
    console_printf("Plan: the start-up would write \"%s\" (%zu bytes) to %s\n", text,
                   std::strlen(text), path.c_str());
    return;
  }
  errno = 0;
  unique_file out(file_open_named(path.c_str(), "w"));
  if (!out) {
    log_error("Failed to write (%s), %s", path.c_str(), system_reason().c_str());
    return;
  }
  std::fputs(setting_or_literal(store, command.value), out.get());
  FILE* written = out.release();
  if (!file_finish(&written)) {
    log_error("Failed to write (%s), %s", path.c_str(), system_reason().c_str());
  }
}

// An empty file gives no text, and the setting is left as it was.
void run_read_file(ini_store* store, const init_command& command) {
  std::string path = expanded_path(store, command.name);
  errno = 0;
  unique_file in(file_open_named(path.c_str(), "r"));
  if (!in) {
    log_error("Failed to read (%s), %s", path.c_str(), system_reason().c_str());
    return;
  }
  std::string text;
  char piece[kReadPiece + 1];
  while (text.size() <= kReadMax && std::fgets(piece, sizeof piece, in.get()) != nullptr) {
    text += piece;
  }
  in.reset();
  if (text.size() > kReadMax) {
    errno = EFBIG;
    log_error("Failed to read (%s), %s", path.c_str(), system_reason().c_str());
    return;
  }
  if (!text.empty()) ini_set(store, command.value.c_str(), text.c_str());
}

void run_command(ini_store* store, const init_command& command) {
  switch (command.type) {
    case kInitExist: run_exist(store, command); break;
    case kInitCopy: run_copy(store, command); break;
    case kInitHttpUser:
    case kInitHttpGroup:
    case kInitHttpRoot:
    case kInitHttpScripts: run_http(store, command); break;
    case kInitTimeDate: run_time_date(store, command); break;
    case kInitWFile: run_write_file(store, command); break;
    case kInitRFile: run_read_file(store, command); break;
    default: break;  // unknown word: the loader has reported it
  }
}

}  // namespace

void run_init_commands(ini_store* store, init_list* list) {
  if (store == nullptr || list == nullptr) return;
  for (init_command* command = init_first(list, 0); command != nullptr; command = init_next(list)) {
    if (condition_holds(store, *command)) run_command(store, *command);
  }
}
