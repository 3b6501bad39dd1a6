// Files that the program keeps for the operator and rewrites whole (the
// answers file, driver/answers.h), reached relative to a directory the
// caller holds (fileops/file_trust.h's file_open_parent walks to it).
//
// Such a file decides what root does on the next run, so it is read only
// when nothing but root and the running user could have put it there: no
// symbolic link at its name (trusted or not), a regular file, owned by root
// or the running user, writable by no other account, in a directory no
// other account can change. It is never rewritten in place: the new text
// goes to a fresh temporary file beside it, which replaces it by a rename
// only once every byte is on the disk; the old file stays on any failure.
#pragma once

#include <string>

// Opens name, in the directory dir_fd holds, for reading under the rules
// above. Null with errno set on failure: ENOENT when there is no such file,
// ELOOP for a link, EINVAL for a file of another kind, EACCES when another
// account owns it, may write it or may change its directory; *why (may be
// null) then says so in words ("it is a symbolic link").
FILE* file_open_kept(int dir_fd, const char* name, const char** why);

// Replaces name in dir_fd by a file holding text, mode 0600: written to a
// temporary file created beside it (O_CREAT | O_EXCL | O_NOFOLLOW), flushed
// to the disk, renamed over name. 1 when done; 0 with errno set (ELOOP when
// name is a symbolic link) and *why as for file_open_kept, the temporary
// file removed and name as it was.
int file_replace_kept(int dir_fd, const char* name, const std::string& text, const char** why);
