// The log: one text file, stamped lines, size rotation into numbered copies.
// Every module writes through log_error / log_info / log_debug, which go to
// the one process-wide current logger. The log never writes to the console.
//
// Line shape: "%.20s [%d] %s: %s\n" -- the first 20 characters of asctime()
// (so two blanks before "["), the process id, the level word, the message.
// Messages keep at most 999 characters. Error lines issued while no logger
// can take them are held and written out when log_open / log_set_file make
// their logger current.
#pragma once

#include <cstdio>
#include <string>

enum class log_level : unsigned { none = 0, error = 1, info = 2, debug = 3 };

inline constexpr unsigned kLogDefaultMaxSize = 1048576;
inline constexpr int kLogDefaultKeep = 4;

struct logger {
  std::string name;                        // log file path; empty: no file chosen
  unsigned level = 0;                      // lines above this level are dropped
  int flush_every = 0;                     // flush every this many lines; 0 never
  int lines = 0;                           // lines written so far
  int keep = kLogDefaultKeep;              // number of the oldest rotated copy
  unsigned size = 0;                       // bytes in the current file as far as we know
  unsigned max_size = kLogDefaultMaxSize;  // rotation threshold
  FILE* stream = nullptr;                  // open log file, owned
};

logger* log_create(unsigned level);
// Closes the stream, frees the record and clears *log; when it was the
// current logger, there is no current logger afterwards, so nothing can log
// through it. Null-safe.
void log_free(logger** log);
// Opens path for appending (size taken from the file); 1 / 0. Makes the
// logger current, writing out held errors, when none is current yet.
int log_open(logger* log, const char* path);
// Chooses dir/file without opening it (opened by the first line); 0 when dir
// is given and not writable.
int log_set_file(logger* log, const char* dir, const char* file);
void log_close(logger* log);
void log_set_current(logger* log);
logger* log_current();
// How many error lines were issued so far, and the text of the last one (""
// before the first; valid until the next): the reason a caller can show for
// a failure it learns only as a result code.
unsigned log_error_count();
const char* log_last_error();
void log_set_level(logger* log, unsigned level);
// "None", "Error", "Info", "Debug", any case; anything else changes nothing.
void log_set_level_name(logger* log, const char* word);
unsigned log_get_level(const logger* log);
const char* log_get_level_name(const logger* log);
void log_set_rotation(logger* log, int keep, unsigned max_size);
void log_flush_every(logger* log, int n);
// Flushes log's stream, or the current logger's when log is null.
void log_flush(logger* log);
// One stamped line at `level`, when log's level admits it.
void log_write(logger* log, const char* message, unsigned level);

void log_error(const char* format, ...) __attribute__((format(printf, 1, 2)));
void log_info(const char* format, ...) __attribute__((format(printf, 1, 2)));
void log_debug(const char* format, ...) __attribute__((format(printf, 1, 2)));
// The formatted text as it is: no stamp, newline or level test; rotates at
// the fixed 1 MiB.
void log_raw(const char* format, ...) __attribute__((format(printf, 1, 2)));
