// The web server's configuration read the way the server reads it: the main
// file and every file it includes, ${NAME} expanded, conditional sections
// honoured, and the server-wide value of a directive preferred to a virtual
// host's. Used by the discovery (httpd_conf.h) where the plain line scan of
// one file cannot give a usable value.
//
// Every file (main, included, envvars) is opened without blocking and read
// only when it is a regular file, at most kHttpdConfMaxBytes of it; a path
// with a symbolic link that another account owns is not followed
// (file_trust.h). Anything else is skipped with a log line.
#pragma once

#include <array>
#include <string>

#include "foundation/handles.h"

// Bounds: bytes read of one file and of all files, include nesting below
// the main file, files read in all, paths that includes look at in all (wildcard steps,
// directory entries), characters of a line after ${NAME} expansion.
inline constexpr long kHttpdConfMaxBytes = 1L << 20;
inline constexpr long kHttpdConfTotalBytesMax = 8L << 20;
inline constexpr int kHttpdIncludeDepthMax = 16;
inline constexpr int kHttpdConfFilesMax = 256;
inline constexpr int kHttpdConfPathsMax = 4096;
inline constexpr size_t kHttpdExpandedLineMax = 65536;

// The four values, in the order of httpd_conf_lookup's arguments.
enum httpd_value_index {
  kHttpdUser,
  kHttpdGroup,
  kHttpdDocumentRoot,
  kHttpdScriptDir,
  kHttpdValueCount
};

struct httpd_found_value {
  std::string text;
  std::string where;  // "<path>:<line>" of the directive
  bool found = false;
};
using httpd_values = std::array<httpd_found_value, kHttpdValueCount>;

// Opens path for reading: the descriptor when it is a regular file, else an
// empty holder (errno set). Never blocks on a FIFO or a device. quiet_missing
// leaves a path that does not exist unlogged; every other refusal is logged
// at debug level.
unique_fd httpd_conf_open(const char* path, bool quiet_missing);

// Reads main_path and what it includes into values (User, Group,
// DocumentRoot, the directory of the cgi-bin ScriptAlias; names are not
// checked against the account databases). A relative DocumentRoot is taken
// from ServerRoot, which defaults to the main file's directory. ${NAME} comes
// from Define lines and from the "export NAME=value" lines of the file
// "envvars" beside the main file (read, never run); an unknown name stays as
// written. 1 when the main file was read, 0 when it does not open (nothing
// is set then) or an argument is null.
int httpd_server_conf_read(const char* main_path, httpd_values* values);
