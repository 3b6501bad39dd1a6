// Copy scripts: the file work of an action, one operation per line, in
// sections named after the actions. This module holds the records, the
// loader and parser, the `$(name)` expansion of paths and the accessors;
// copy_run.h runs a loaded script.
//
// File format: lines of at most 999 characters (longer ones are read in
// pieces), trimmed; empty lines and lines starting with "#" are skipped; a
// line starting with "[" names a section (a final "]" dropped, compared
// ignoring case). Within the wanted section each line is an operation word
// (any case) followed by fields split on runs of blanks and tabs:
//   CopyFile, CopyDir, Chown, Chmod   source not destination [control [cmp]]
//   RmFile, RmDir                     source not [control [cmp]]
//   MkDir                             source [control [cmp]]
//   Ini, Rename, Exist, WFile, RFile  source destination [control [cmp]]
//   Error                             source error-text (rest of the line)
// A "-" in `not` means no exclusion; "-" in the control fields stays as it is.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fileops/file_ops.h"

struct ini_store;

// Operation codes. The copy and remove groups share a group bit.
inline constexpr uint32_t k_copy_group = 0x100;
inline constexpr uint32_t k_remove_group = 0x200;
inline constexpr uint32_t k_copy_file = 0x101;
inline constexpr uint32_t k_copy_dir = 0x102;
inline constexpr uint32_t k_copy_mkdir = 0x104;
inline constexpr uint32_t k_copy_rm_file = 0x201;
inline constexpr uint32_t k_copy_rm_dir = 0x202;
inline constexpr uint32_t k_copy_ini = 0x108;
inline constexpr uint32_t k_copy_rename = 0x110;
inline constexpr uint32_t k_copy_exist = 0x400;
inline constexpr uint32_t k_copy_chown = 0x800;
inline constexpr uint32_t k_copy_chmod = 0x801;
inline constexpr uint32_t k_copy_error = 0x1000;
inline constexpr uint32_t k_copy_wfile = 0x2000;
inline constexpr uint32_t k_copy_rfile = 0x4000;

// The required fields that follow an operation word.
inline constexpr unsigned k_field_source = 1;
inline constexpr unsigned k_field_not = 2;
inline constexpr unsigned k_field_destination = 4;

struct copy_operation_word {
  const char* word;
  uint32_t code;
  unsigned fields;  // k_field_* bits
};

// The operation words, searched in this order, ignoring case.
inline constexpr copy_operation_word k_copy_operation_words[] = {
    {"CopyFile", k_copy_file, k_field_source | k_field_not | k_field_destination},
    {"CopyDir", k_copy_dir, k_field_source | k_field_not | k_field_destination},
    {"MkDir", k_copy_mkdir, k_field_source},
    {"RmFile", k_copy_rm_file, k_field_source | k_field_not},
    {"RmDir", k_copy_rm_dir, k_field_source | k_field_not},
    {"Ini", k_copy_ini, k_field_source | k_field_destination},
    {"Rename", k_copy_rename, k_field_source | k_field_destination},
    {"Exist", k_copy_exist, k_field_source | k_field_destination},
    {"Chown", k_copy_chown, k_field_source | k_field_not | k_field_destination},
    {"Chmod", k_copy_chmod, k_field_source | k_field_not | k_field_destination},
    {"Error", k_copy_error, k_field_source},
    {"WFile", k_copy_wfile, k_field_source | k_field_destination},
    {"RFile", k_copy_rfile, k_field_source | k_field_destination},
};

// The operation of a code, or null for a code that is none.
const copy_operation_word* copy_operation_of(uint32_t code);

// One operation line; absent fields are empty optionals.
struct copy_line {
  std::optional<std::string> source;       // path acted on, settings expanded
  std::optional<std::string> destination;  // target; owner, mode or error text
  std::optional<std::string> not_list;     // exclusion wildcards (`not`)
  std::optional<std::string> control;      // controlling setting name
  std::optional<std::string> control_cmp;  // comparison: setting name or literal
  uint32_t type = 0;                       // operation code, 0 when unknown
};

struct copy_script {
  std::vector<copy_line> lines;  // accepted lines, in file order
  ini_store* store = nullptr;    // not owned; may be null
};

// A new empty script bound to store (may be null: then nothing is expanded
// and a "-" `not` stays "-"). Release with copy_script_free.
copy_script* copy_script_create(ini_store* store);
// Frees the script and clears *script_ref; null-safe.
void copy_script_free(copy_script** script_ref);

// Hands the two step callbacks to the file operations (the script keeps
// nothing). Nothing for a null script.
void copy_script_set_callbacks(copy_script* script, file_step_callback progress,
                               file_step_callback failure);

// Appends the lines of `section` of the file at path. 1 when the section was
// found (even empty), 0 when it was not or the file cannot be opened
// ("Error opening '%s'" logged) or an argument is null. Bad lines are logged
// and skipped; a missing section is left to the caller to report.
[[nodiscard]] int copy_script_load(copy_script* script, const char* path, const char* section);
// Parses one trimmed line of a section (no comment, no header) and appends it
// when its required fields are all there: 1 appended, 0 dropped or null.
int copy_script_parse_line(copy_script* script, const char* text);
// The parsing part of copy_script_parse_line: fills line with the fields as
// written (nothing expanded, a "-" `not` kept) and logs as the loader does.
// 1 when the line is kept (an unknown word too, with type 0), 0 when a
// required field is missing (line then holds the type and the fields before
// it) or the line has no word or an argument is null.
int copy_line_parse(const char* text, copy_line* line);

// Each `$(name)` of text replaced by the setting's value; unknown names stay
// as written and a "$(" without ")" is copied literally. A new malloc'd text
// (free with str_free), or null when text holds no "$(" or an argument is
// null. The result keeps at most 9,999 characters.
char* copy_expand(copy_script* script, const char* text);

// The line at index, or null for a null script or an index out of range; it
// stays the script's until the script is freed.
const copy_line* copy_line_at(const copy_script* script, int index);

// The parts of a path field that the runner and the walks work with.
// Directory part: up to and including the last "/" or "\"; the current
// working directory when there is none.
std::string copy_path_dir(std::string_view path);
// Source pattern: after the last separator; "*" when the path ends with one;
// the whole path when it has none.
std::string copy_path_source_pattern(std::string_view path);
// Destination pattern: after the last separator; none when the path ends
// with one or has none (so no destination directory can be found).
std::optional<std::string> copy_path_destination_pattern(std::string_view path);

// Accessors by line index; null or 0 for a null script or an index out of
// range. Texts stay the script's until it is freed.
int copy_count(const copy_script* script);
uint32_t copy_type(const copy_script* script, int index);
const char* copy_source(const copy_script* script, int index);
const char* copy_destination(const copy_script* script, int index);
const char* copy_not(const copy_script* script, int index);
const char* copy_control(const copy_script* script, int index);
const char* copy_control_cmp(const copy_script* script, int index);

// The path splitters above by line index, into buffer (at most size-1
// characters); each returns buffer, or null for a null argument, an index
// out of range or a line without that path (or, for the destination pattern,
// without a pattern).
char* copy_source_dir(const copy_script* script, int index, char* buffer, int size);
char* copy_destination_dir(const copy_script* script, int index, char* buffer, int size);
char* copy_source_pattern(const copy_script* script, int index, char* buffer, int size);
char* copy_destination_pattern(const copy_script* script, int index, char* buffer, int size);
