// Opening files by name as root, in directories that less trusted accounts
// may write (a document root handed to the web server's account, say).
//
// A file opened by name is never reached through a symbolic link that
// another account could have placed or changed (one it owns, or one in a
// directory that is not private), never opened in a way that
// can block (O_NONBLOCK), and must be a regular file before a byte moves: a
// FIFO, a device, a socket or a directory is refused. A file that has a
// second name (a hard link) in a directory that is not private is not
// truncated or written, since that name may stand for a file outside
// the tree. Refusals are logged at error level with the reason and leave
// errno set (ELOOP for a link, EINVAL for a file of another kind, EISDIR
// for a directory, EMLINK for a second name).
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cstdio>

// Root and the running user: the accounts whose links and directories the
// program trusts.
bool file_owner_trusted(uid_t uid);
// True when no account but root and the running user can rename or remove
// the entries of a directory with this status: it is owned by one of them
// and either writable by nobody else or sticky (then only an entry's owner,
// or the directory's, may rename or remove it). A link there that root or
// the running user owns was put there by them and is still theirs; a file
// there has no second name that another account made.
bool file_dir_private(const struct stat& dir);

// 1 when the program runs as root, else 0.
int file_running_as_root();
// Why root should not take path as its own, or null when nothing speaks
// against it (also when path cannot be read): "every account may write to
// it", or for a directory with the sticky bit "it is a shared temporary
// directory". A static text.
const char* file_shared_reason(const char* path);

// fopen / fclose, null-safe, with the guards above. A reading mode ("r")
// follows a link at path's name only while the link is trusted: owned by
// root or the running user, in a private directory. A
// writing mode ("w", "a", with "+" or "b") refuses any link at path's name,
// and truncates ("w") only after the checks. file_close clears the
// caller's handle.
FILE* file_open(const char* path, const char* mode);
void file_close(FILE** stream);

// The parts of file_open, for callers that reach the file relative to a
// directory they hold (fileops' file_open_named). The open(2) flags for
// mode: O_NOFOLLOW, O_NONBLOCK and O_CLOEXEC included, O_TRUNC never.
int file_open_flags(const char* mode);
// After an open with those flags failed: a FIFO or socket at path says
// ENXIO; this logs that it is no regular file and leaves errno at EINVAL.
void file_explain_open_failure(const char* path);
// Takes fd, opened with file_open_flags(mode), through file_open's checks
// (a regular file; for writing, no second name when another account can
// change its directory: the one dir_fd holds, or path's for -1), truncates
// for "w" and returns a stream on it. Null with errno set, fd closed,
// otherwise. path names the file in messages.
FILE* file_stream_on(int fd, const char* path, const char* mode, int dir_fd);
// Closes a stream that was written to and clears the caller's handle: 1 when
// everything written reached the file, 0 when a write, the last flush or the
// close failed (a full disk may show only there; errno tells why). 0 for null.
int file_finish(FILE** stream);
