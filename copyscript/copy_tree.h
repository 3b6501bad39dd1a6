// The directory-listing operations of a copy line: copying into the
// destination directories, removing, and owner and mode changes over a
// tree. Used by copy_run; each walk keeps one listing open per directory
// level, so memory follows the tree's depth, not its size.
#pragma once

#include "copyscript/copy_script.h"

// Whether the directories a line names may be worked in: 1 when the
// directory part of its source (a path for every operation but Exist and
// Error) and, for CopyFile, CopyDir, Ini and Rename, of its destination pass
// the owner test of fileops/file_trust.h: no link on the way that someone
// other than root or the running user owns. Otherwise 0, the link logged
// and reported to the failed step callback with errno ELOOP. Below those
// directories the walks here follow no link: a listed link is removed
// itself, re-owned itself, left alone by a mode change, and never a
// destination directory.
int copy_tree_paths_trusted(const copy_line& line);

// Copies the entries matching the line's source into every existing
// directory matching its destination (whole trees for directory entries when
// whole_trees is set, else directory entries are skipped). Returns the files
// copied, 0 when nothing was ("No destination directories found" logged when
// no destination matched).
int copy_tree_copy(const copy_line& line, int whole_trees, unsigned* bytes);

// Removes the entries matching the line's source whose names match no
// pattern of its `not`; directories (with everything below them) only when
// with_dirs is set. Returns the entries removed.
int copy_tree_remove(const copy_line& line, int with_dirs);

// Changes the owner (resp. mode) of every entry of dir matching pattern and,
// below directories, of every entry, skipping those whose full path matches
// not_list (may be null). Stops a directory's loop at the first failure.
// Returns the entries changed.
int copy_tree_chown(const char* dir, const char* pattern, const char* not_list, int uid, int gid);
int copy_tree_chmod(const char* dir, const char* pattern, const char* not_list, int mode);
