// Which symbolic links the program follows in the paths it is given.
//
// The directories it works in (a document root, an installed tree) may be
// writable by a less trusted account, such as the web server's user. A link
// that account plants in a path could point anywhere, so a link in a path is
// followed only when root or the running user owns it: such a link was made
// by the operator or the packager, and nobody else can make one in that name
// (the system makes a link the property of whoever creates it). Below the
// paths named, tree walks follow no link at all (file_ops.h).
#pragma once

// 1 when no component of path (each prefix ending at a "/" or "\", and the
// whole path) is a symbolic link owned by someone other than root or the
// running user. Otherwise logs "Not following symbolic link '%s'" at error
// level with the first such prefix and the system's reason for ELOOP, leaves
// errno at ELOOP and returns 0. Components that do not exist are no links.
// 0 for a null path.
int file_path_trusted(const char* path);
// The same for the directories above path's last component (trailing
// separators ignored); 1 when path has no directory part.
int file_parent_trusted(const char* path);

// 1 when path itself is a symbolic link (its own status, not followed),
// else 0 (also for a null path or one that does not exist).
int file_is_link(const char* path);
