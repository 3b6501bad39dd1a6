// The init file: start-up commands, one a line, that fill the settings store
// with facts about the host before the banner. This module only parses and
// holds the lines; driver/init_commands carries them out.
//
// Line shape: COMMAND FIRST SECOND COND_NAME COND_VALUE, words split on blanks
// and tabs, "-" meaning none for the two condition words, later words ignored.
// Blank lines and lines whose first word begins with "#" are skipped.
#pragma once

#include <optional>
#include <string>

#include "foundation/dyn_list.h"

// Type codes carried by each record; the four web-server commands share
// kInitHttp.
inline constexpr int kInitUnknown = 0x0;
inline constexpr int kInitExist = 0x1;
inline constexpr int kInitCopy = 0x2;
inline constexpr int kInitHttp = 0x10;
inline constexpr int kInitHttpUser = 0x14;
inline constexpr int kInitHttpGroup = 0x18;
inline constexpr int kInitHttpRoot = 0x110;
inline constexpr int kInitHttpScripts = 0x210;
inline constexpr int kInitTimeDate = 0x400;
inline constexpr int kInitWFile = 0x800;
inline constexpr int kInitRFile = 0x1000;

struct init_command_word {
  const char* word;
  int type;
};

// The command words, searched in this order and compared with case.
inline constexpr init_command_word kInitCommandWords[] = {
    {"Exist", kInitExist},        {"Copy", kInitCopy},
    {"HTTP_User", kInitHttpUser}, {"HTTP_Group", kInitHttpGroup},
    {"HTTP_Root", kInitHttpRoot}, {"HTTP_Scripts", kInitHttpScripts},
    {"TimeDate", kInitTimeDate},  {"WFile", kInitWFile},
    {"RFile", kInitRFile},
};

// The words of a complete line.
inline constexpr int kInitLineWords = 5;

// One stored line. A stored record always has name and value; the condition
// words are absent where the line had "-".
struct init_command {
  std::string name;                       // first argument
  std::string value;                      // second argument
  std::optional<std::string> cond_value;  // expected value (fifth word)
  std::optional<std::string> cond_name;   // condition setting or literal (fourth word)
  int type = kInitUnknown;                // one of the codes above, 0 when unknown
};

// The records of a file, in file order, with a cursor (that of the list).
struct init_list {
  dyn_list* commands = nullptr;  // of init_command*, owned
};

// A new, empty list; release it with init_list_free.
init_list* init_list_create();
// Frees every record, the list and the holder, and clears *list. Nothing for
// a null address or a null *list.
void init_list_free(init_list** list);
// Frees one record and clears *command; nothing for null.
void init_command_free(init_command** command);

// Appends the complete lines of the file at path to list (nothing is emptied
// first). 1 on success, also for an empty file or one of comments only;
// 0 when list or path is null (error text untouched) or the file cannot be
// opened ("Failed to read '%s', %s", see init_last_error). An unknown command
// word is logged and its line is still stored with type 0. A line of fewer
// than five words is not stored; what it gave is carried into the next line.
[[nodiscard]] int init_load(init_list* list, const char* path);

// Parses one line as read from the file (split in place) into pending, as
// the loader does: the command word sets type (an unknown one is logged and
// leaves type as it was), the next words replace name and value, and the
// condition words replace theirs unless they are "-". Returns the number of
// words taken, kInitLineWords for a complete line; 0 for a blank or comment
// line, or a null argument.
int init_parse_line(char* line, init_command* pending);

// Cursor operations. Records stay owned by the list. init_first returns the
// record at index and leaves the cursor behind it; init_next returns the
// record at the cursor and moves on; both give nullptr when out of range or
// for a null list.
init_command* init_first(init_list* list, int index);
init_command* init_next(init_list* list);
// To index when it is below the count; to 0; one on (at-end after the last);
// one back when above 0. Nothing for a null list.
void init_seek(init_list* list, int index);
void init_rewind(init_list* list);
void init_skip(init_list* list);
void init_back(init_list* list);

// Replaces the loader's last error text with the formatted message (at most
// 999 characters).
void init_set_error(const char* format, ...) __attribute__((format(printf, 1, 2)));
// The last error text, "" when there has been none. Valid until the next error.
const char* init_last_error();
