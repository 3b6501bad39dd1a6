#include "foundation/logger.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdlib>
#include <ctime>
#include <new>
#include <string>
#include <vector>

#include "foundation/formatter.h"
#include "foundation/str_path.h"
#include "foundation/str_text.h"

namespace {

constexpr const char* kLevelWords[] = {"None", "Error", "Info", "Debug"};
constexpr unsigned kLevelCount = 4;
constexpr unsigned kRawRotateSize = 1048576;  // log_raw rotates here, whatever max_size says
constexpr int kNameSize = 1000;
constexpr int kCopyNameSize = 999;
constexpr mode_t kLogMode = 0600;  // the log holds every answer given

// The process-wide current logger and the errors held until one can take them.
logger* g_current_log = nullptr;
std::vector<std::string> g_pending_errors;
// Every error line issued, written or not: how many, and the last one.
unsigned g_error_count = 0;
std::string g_last_error;

std::string bounded(const char* text, int size) {
  std::string result = str_or_empty(text);
  if (static_cast<int>(result.size()) > size - 1) result.resize(static_cast<size_t>(size - 1));
  return result;
}

// Opens path for appending. The log records every answer given, so it is
// never reached through a link, never a FIFO or device that could block or
// swallow it, and always private to its owner, also when an earlier file
// had a wider mode.
FILE* open_for_append(const char* path) {
  int fd =
      open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, kLogMode);
  if (fd < 0) return nullptr;
  struct stat status {};
  bool usable = fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
  if (usable && (status.st_mode & 077) != 0) usable = fchmod(fd, status.st_mode & 0700) == 0;
  FILE* stream = usable ? fdopen(fd, "a") : nullptr;
  if (stream == nullptr) close(fd);
  return stream;
}

// A number for the rotation's temporary name that no other account can
// foresee (rand() without a seed gives the same name on every run).
int unpredictable_number() {
  unsigned value = 0;
  if (getrandom(&value, sizeof value, 0) != static_cast<ssize_t>(sizeof value)) {
    value = static_cast<unsigned>(rand()) ^ static_cast<unsigned>(getpid());
  }
  return static_cast<int>(value % (static_cast<unsigned>(RAND_MAX) + 1U));
}

// The message as one line: control characters (a line end in a name read
// from a hostile tree, say) are written as escapes, so no text can forge a
// line of its own.
bool has_control(const char* message) {
  for (const char* at = message; *at != '\0'; ++at) {
    auto c = static_cast<unsigned char>(*at);
    if ((c < 0x20 && c != '\t') || c == 0x7f) return true;
  }
  return false;
}

std::string one_line(const char* message) {
  static constexpr char kHex[] = "0123456789abcdef";
  std::string line;
  for (const char* at = message; *at != '\0'; ++at) {
    auto c = static_cast<unsigned char>(*at);
    if (c == '\n') {
      line += "\\n";
    } else if (c == '\r') {
      line += "\\r";
    } else if ((c < 0x20 && c != '\t') || c == 0x7f) {
      line += "\\x";
      line += kHex[c >> 4];
      line += kHex[c & 15];
    } else {
      line += static_cast<char>(c);
    }
  }
  return line;
}

void write_out_pending() {
  if (g_current_log == nullptr) return;
  for (const std::string& message : g_pending_errors) {
    log_write(g_current_log, message.c_str(), static_cast<unsigned>(log_level::error));
  }
  g_pending_errors.clear();
  g_pending_errors.shrink_to_fit();
}

void become_current_if_none(logger* log) {
  if (g_current_log != nullptr) return;
  g_current_log = log;
  write_out_pending();
}

// Reopens the chosen file when the stream is gone; false when that fails.
bool ensure_stream(logger* log) {
  if (log->stream != nullptr) return true;
  if (log->name.empty()) return false;
  std::string name = log->name;
  return log_open(log, name.c_str()) != 0;
}

std::string numbered_copy(const std::string& name, int number) {
  char copy[kCopyNameSize];
  str_format(copy, sizeof copy, "%s%d", name.c_str(), number);
  return copy;
}

// Moves the full file aside under a temporary name, reopens a fresh file
// under the live name, shifts the numbered copies up and makes the moved
// file copy 0. Failures of remove and rename are ignored.
int rotate(logger* log) {
  int first = unpredictable_number();
  int second = unpredictable_number();
  char temporary[kNameSize];
  str_format(temporary, sizeof temporary, "%s.%05d%05d", log->name.c_str(), second, first);
  log_close(log);
  rename(log->name.c_str(), temporary);
  std::string name = log->name;
  int reopened = log_open(log, name.c_str());
  std::string target = numbered_copy(name, log->keep);
  for (int i = log->keep - 1; i >= 0; --i) {
    std::string older = numbered_copy(name, i);
    remove(target.c_str());
    rename(older.c_str(), target.c_str());
    target = older;
  }
  rename(temporary, target.c_str());
  return reopened;
}

// Formats into a message of at most 999 characters.
void format_message(char (&message)[kLineSize], const char* format, va_list args) {
  int result = vsnprintf(message, sizeof message, format, args);
  if (result == -1 || result == kLineSize) message[kLineSize - 1] = '\0';
}

// The one body of the three levels. A line is formatted only when it will
// be written, or, for an error, held until a logger can take it.
void log_at(log_level level, const char* format, va_list args) {
  if (format == nullptr) return;
  auto number = static_cast<unsigned>(level);
  bool held = level == log_level::error && (g_current_log == nullptr || g_current_log->level == 0);
  if (!held && (g_current_log == nullptr || g_current_log->level < number)) return;
  char message[kLineSize];
  format_message(message, format, args);
  if (level == log_level::error) {
    ++g_error_count;
    g_last_error = message;
  }
  if (held) {
    g_pending_errors.emplace_back(message);
  } else {
    log_write(g_current_log, message, number);
  }
}

}  // namespace

logger* log_create(unsigned level) {
  logger* log = new (std::nothrow) logger();
  if (log != nullptr) log->level = level;
  return log;
}

void log_free(logger** log) {
  if (log == nullptr || *log == nullptr) return;
  log_close(*log);
  if (g_current_log == *log) g_current_log = nullptr;  // nothing logs after its log is gone
  delete *log;
  *log = nullptr;
}

int log_open(logger* log, const char* path) {
  if (log == nullptr || path == nullptr) return 0;
  log_close(log);
  log->stream = open_for_append(path);
  if (log->stream == nullptr) return 0;
  struct stat info {};
  log->size = fstat(fileno(log->stream), &info) == 0 ? static_cast<unsigned>(info.st_size) : 0;
  log->name = bounded(path, kNameSize);
  become_current_if_none(log);
  return 1;
}

int log_set_file(logger* log, const char* dir, const char* file) {
  if (log == nullptr) return 0;
  if (dir != nullptr && access(dir, W_OK) != 0) return 0;
  log_close(log);
  char name[kNameSize];
  str_copy(name, dir, sizeof name);
  str_path_join(name, file, sizeof name);
  log->name = name;
  become_current_if_none(log);
  return 1;
}

void log_close(logger* log) {
  if (log == nullptr || log->stream == nullptr) return;
  fclose(log->stream);
  log->stream = nullptr;
}

void log_set_current(logger* log) { g_current_log = log; }

logger* log_current() { return g_current_log; }

unsigned log_error_count() { return g_error_count; }

const char* log_last_error() { return g_last_error.c_str(); }

void log_set_level(logger* log, unsigned level) {
  if (log != nullptr) log->level = level;
}

void log_set_level_name(logger* log, const char* word) {
  if (log == nullptr || word == nullptr) return;
  for (unsigned level = 0; level < kLevelCount; ++level) {
    if (str_icmp(word, kLevelWords[level]) == 0) {
      log->level = level;
      return;
    }
  }
}

unsigned log_get_level(const logger* log) { return log == nullptr ? 0 : log->level; }

const char* log_get_level_name(const logger* log) {
  if (log == nullptr || log->level >= kLevelCount) return nullptr;
  return kLevelWords[log->level];
}

void log_set_rotation(logger* log, int keep, unsigned max_size) {
  if (log == nullptr) return;
  log->keep = keep;
  log->max_size = max_size;
}

void log_flush_every(logger* log, int n) {
  if (log != nullptr) log->flush_every = n;
}

void log_flush(logger* log) {
  logger* target = log != nullptr ? log : g_current_log;
  if (target != nullptr && target->stream != nullptr) fflush(target->stream);
}

void log_write(logger* log, const char* message, unsigned level) {
  if (log == nullptr || log->level < level || level >= kLevelCount) return;
  if (!ensure_stream(log)) return;
  time_t now = time(nullptr);
  struct tm local {};
  char stamp[64] = "";
  if (localtime_r(&now, &local) != nullptr) asctime_r(&local, stamp);
  const char* text = str_or_empty(message);
  std::string escaped = has_control(text) ? one_line(text) : std::string();
  int written = fprintf(log->stream, "%.20s [%d] %s: %s\n", stamp, static_cast<int>(getpid()),
                        kLevelWords[level], escaped.empty() ? text : escaped.c_str());
  log->size += static_cast<unsigned>(written);
  if (log->size >= log->max_size) {
    rotate(log);
  } else if (log->flush_every != 0 && log->lines % log->flush_every == 0) {
    fflush(log->stream);
  }
  ++log->lines;
}

void log_error(const char* format, ...) {
  va_list args;
  va_start(args, format);
  log_at(log_level::error, format, args);
  va_end(args);
}

void log_info(const char* format, ...) {
  va_list args;
  va_start(args, format);
  log_at(log_level::info, format, args);
  va_end(args);
}

void log_debug(const char* format, ...) {
  va_list args;
  va_start(args, format);
  log_at(log_level::debug, format, args);
  va_end(args);
}

void log_raw(const char* format, ...) {
  logger* log = g_current_log;
  if (log == nullptr || format == nullptr || !ensure_stream(log)) return;
  char message[kLineSize];
  va_list args;
  va_start(args, format);
  format_message(message, format, args);
  va_end(args);
  int written = fprintf(log->stream, "%s", message);
  log->size += static_cast<unsigned>(written);
  if (log->size >= kRawRotateSize) {
    rotate(log);
  } else if (log->flush_every != 0 && (log->lines & log->flush_every) == 0) {
    fflush(log->stream);
  }
  ++log->lines;
}
