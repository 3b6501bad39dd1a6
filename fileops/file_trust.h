// Opening the paths the program is given, and which symbolic links it
// follows on the way.
//
// The directories it works in (a document root, an installed tree) may be
// writable by a less trusted account, such as the web server's user. A path
// text is therefore walked one component at a time from "/" (or the working
// directory), each directory held open and the next name opened relative to
// it without following a link, so nothing swapped in behind the walk can
// redirect it. A link met on the way is followed only when it is trusted:
// owned by root or the running user, and sitting in a directory that no
// other account can change (file_dir_private, foundation/file_guard.h). Such a link was made by the
// operator or the packager and cannot have been replaced since; a link that
// another account planted, or could have renamed into place, is not. At most
// 40 links are followed in one walk, as the kernel does. Below the paths
// named, tree walks follow no link at all (file_ops.h).
//
// "/" and "\" both separate the components of a path text; in a link's own
// target only "/" does.
#pragma once

#include <sys/stat.h>

#include <cstdio>
#include <string>

#include "foundation/file_guard.h"
#include "foundation/handles.h"

// True when another account can change the entries of the directory dir_fd
// holds (or its status cannot be read).
bool file_dir_shared(int dir_fd);
// A regular file with more than one name, in a directory another account
// can change: its other name may stand anywhere, for a root-only file
// outside the tree. Then logs "Not <doing> '<path>': it has other names and
// other accounts can change its directory" with the reason for EMLINK, leaves
// errno at EMLINK and returns true.
bool file_refuse_second_name(const struct stat& file, bool dir_shared, const char* doing,
                             const char* path);

// Opens what path names with flags (O_NOFOLLOW and O_CLOEXEC added), walking
// it as above. An invalid descriptor on failure with errno set; an untrusted
// link is logged ("Not following symbolic link '%s'" with the path up to it
// and the reason for ELOOP) and leaves errno at ELOOP.
unique_fd file_open_path(const char* path, int flags);
// Opens name in the directory dir_fd the same way (a trusted link there is
// followed); shown is name's full path for the messages.
unique_fd file_open_beside(int dir_fd, const char* name, const char* shown, int flags);
// Opens the directory holding path's last component (trailing separators
// ignored) and puts that component into *name ("." for "/" or ""). The
// component itself is left to the caller, who acts on it relative to the
// descriptor without following it.
unique_fd file_open_parent(const char* path, std::string* name);

// foundation/file_guard's file_open for a file that a copy line or an init
// command names: its directories walked as above, so no link another account
// controls is followed and nothing swapped in behind the walk redirects it;
// the file itself opened relative to the directory held (for reading, a
// trusted link at its name is followed the same way) and checked as
// file_open checks it. Null with errno set on failure.
FILE* file_open_named(const char* path, const char* mode);

// 1 when walking path meets no untrusted link; components that do not exist
// or are no directories end the walk there. Otherwise 0, logged as for
// file_open_path, errno ELOOP. 0 for a null path.
int file_path_trusted(const char* path);

// 1 when path itself is a symbolic link (its own status, not followed),
// else 0 (also for a null path or one that does not exist).
int file_is_link(const char* path);
