// A view of the tree as it would stand after changes that are only planned:
// the real tree, read and never changed, with the planned changes laid over
// it. "-plan" walks a copy script through a view, so that a directory an
// earlier line would make, or a file it would copy, is there for the lines
// after it, and a removed one is gone.
//
// The real tree is read the way the walks read it (file_trust.h, file_dir.h):
// no link another account controls is followed, and a name listed from a
// directory is one name ("\" included). Paths are compared with runs of "/"
// as one and no "/" at the end; "." and ".." are names like any other.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

// What stands at a name, its own status (a link is not followed).
struct file_view_status {
  bool exists = false;
  bool is_dir = false;
  bool is_link = false;
  bool is_regular = false;
  uid_t uid = 0;
  gid_t gid = 0;
  mode_t mode = 0;  // permission bits with setuid, setgid and sticky
  off_t size = 0;
};

// One listed name and its status.
struct file_view_entry {
  std::string name;
  std::string path;  // the directory's path joined with the name
  file_view_status status;
};

struct file_view;

// A new view with no change planned. Release with file_view_free.
file_view* file_view_create();
// Frees the view and clears *view; null-safe.
void file_view_free(file_view** view);

// The path in the form the view compares: no repeated or final "/" ("/"
// stays "/"). A "\" is left as it is: in a name listed from a directory it
// is part of the name, and a caller turns the "\" separators of a path
// text it was given into "/" first.
std::string file_view_key(const std::string& path);

// The status of path's own name in the view.
file_view_status file_view_stat(file_view* view, const std::string& path);
// Exist's test, following a link: 0 nothing there (or a dangling link), 1
// something that is not a directory, 2 a directory.
int file_view_type(file_view* view, const std::string& path);
// The names of directory dir matching pattern (case-sensitive, fileops/
// wild_match.h), those on disk in the system's order, then those only
// planned in name order. Empty when dir is no directory in the view.
std::vector<file_view_entry> file_view_list(file_view* view, const std::string& dir,
                                            const char* pattern);

// The disk's path whose contents stand at path in the view (path itself
// unless a planned rename moved them), or none when the plan made or wrote
// what stands there, or removed it.
std::optional<std::string> file_view_disk_path(file_view* view, const std::string& path);

// The status a file or directory made now would get: the running user's
// ids (the group of a set-group-id parent, whose bit a directory inherits),
// mode 0666 (a file) or 0775 (a directory) less the creation mask.
file_view_status file_view_new_status(file_view* view, const std::string& path, bool dir);

// Planned changes. Each takes the path as the view stands now.
void file_view_make_dir(file_view* view, const std::string& path);
// A file written at path with size bytes: a new file gets
// file_view_new_status, an existing one keeps its owner and mode.
void file_view_write(file_view* view, const std::string& path, off_t size);
// Removes path's name (a directory with everything below it).
void file_view_remove(file_view* view, const std::string& path);
// Moves what stands at from (a directory with everything below it) to to.
void file_view_rename(file_view* view, const std::string& from, const std::string& to);
void file_view_chown(file_view* view, const std::string& path, uid_t uid, gid_t gid);
void file_view_chmod(file_view* view, const std::string& path, mode_t mode);

// One name whose planned state differs from the disk's: after is what would
// stand there (exists false: removed).
struct file_view_change {
  std::string path;
  file_view_status before;
  file_view_status after;
};
// The names the plan changed, in path order; a name changed back to what
// the disk holds is left out.
std::vector<file_view_change> file_view_changes(file_view* view);
