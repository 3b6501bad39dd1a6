// The file-system layer: path tests, copying and moving files and trees,
// making and removing directories, modes and owners, user and group ids.
//
// File operations never print. Each completed or failed step is reported to
// two process-wide callbacks (source, destination or null, is-file flag: 1
// for copied files and made directories, 0 for removed entries); a null
// callback is skipped (file_base.h). Errors are logged at error level through
// file_error, with the system's reason appended.
//
// Paths given as texts are opened as file_trust.h says: each directory held
// open on the way, links followed only when no other account could have
// placed or changed them. Below such a path nothing is followed: tree walks
// hold each directory they list and act on each listed name relative to it
// (file_dir.h), a directory is descended into only when it is still the one
// listed, and a swap in between fails that step and the walk goes on.
// file_chown changes a link itself, never its target (but never hands a link
// that another account made to root or the running user, so it cannot pass
// for theirs later); file_chmod leaves a link alone. A regular file with
// more than one name, in a directory another account can change, is neither
// re-owned, re-moded nor written (EMLINK): its other name may be anywhere.
//
// Paths never exceed 255 characters: one that would fails its step with a
// message, it is never cut. "/" and "\" are both separators in path texts;
// a listed name is one name. Every operation accepts null arguments and then
// does nothing.
#pragma once

#include <sys/stat.h>

#include "fileops/file_base.h"
#include "foundation/str_text.h"

struct file_entry;

// ---- path tests ------------------------------------------------------------

// Follows links. 0 does not exist (or null), 1 exists and is not a
// directory, 2 is a directory. Logs the outcome at debug level.
int file_path_type(const char* path);
// Quiet tests, following links: 1 yes, 0 no (also for null).
int file_exists(const char* path);
int file_is_dir(const char* path);

// ---- files -------------------------------------------------------------------

// Copies source to destination in 8,192-byte chunks moved through a stream
// buffer of 128 KiB, adding what is written to *bytes when bytes is given. 1 copied; -1 destination
// exists and overwrite is 0 (nothing done, nothing reported); 0 failed, also when both name the
// same file. When the source cannot be read, an empty destination is left behind. The new file
// takes its mode from the creation mask. A symbolic link at the destination's name fails the copy
// (ELOOP) and is left as it was; what it points to is never written.
int file_copy(const char* source, const char* destination, int overwrite, unsigned* bytes);
// A name in a directory held open, and its full path for the messages.
struct file_place {
  int dir_fd;
  const char* name;
  const char* path;
};
// file_copy between names in open directories: the source is opened without
// following a link another account controls and without blocking, and must
// be a regular file; the destination is never written through a link, must
// be a regular file when it exists, and is not truncated when it has other
// names and other accounts can change its directory.
int file_copy_at(const file_place& source, const file_place& destination, int overwrite,
                 unsigned* bytes);
// file_copy, then removes the source after any non-zero result (so with
// overwrite 0 onto an existing destination the source is just deleted).
// 1 moved, 0 failed.
int file_move(const char* source, const char* destination, int overwrite, unsigned* bytes);
// Removes one file, link or empty directory (a link's target is untouched).
// 1 / 0, errno set on failure; logs nothing and calls no callback.
int file_remove(const char* path);
// rename(2): 1 / 0, errno set on failure; logs nothing.
int file_rename(const char* source, const char* destination);

// ---- trees -------------------------------------------------------------------

// Copies the entries of source_dir whose names match pattern (null means
// "*"; top level only) and match no pattern of exclude (a list, at every
// level) into destination_dir, made with its parents when missing. Files
// are always overwritten. With recursive, sub-directories are copied whole;
// without, only made empty; the destination itself is never walked when it
// lies inside the source. Returns the number of steps done (files copied,
// directories made); failures do not stop the walk. A symbolic link standing
// at a destination directory's name (the top one too) is never written
// through: that directory fails ("Not following symbolic link '%s'", ELOOP,
// reported to the failed callback) and the walk goes on with the others.
int file_copy_dir(const char* source_dir, const char* pattern, const char* exclude,
                  const char* destination_dir, int recursive, unsigned* bytes);
// The same walk moving files (file_move with overwrite = recursive) and,
// with recursive, moving each sub-directory and then removing it. The source
// directory itself stays. Returns the number of steps done.
int file_move_dir(const char* source_dir, const char* pattern, const char* exclude,
                  const char* destination_dir, int recursive, unsigned* bytes);
// file_copy_dir of a listed directory, recursive, with the pattern "*": into
// the directory named by source's name in into_fd (made when missing), whose
// full path is target.
int file_copy_tree_at(const file_entry* source, int into_fd, const char* target,
                      const char* exclude, unsigned* bytes);
// file_remove_tree of a listed entry, recursive.
int file_remove_tree_at(const file_entry* entry, const char* exclude);
// Makes path (mode 0775), with parents its missing parents first, logging
// "Directory created '%s'" at debug level for each. 1 made or already there,
// 0 failed, also when a component of path is a link that fails the owner
// test of file_trust.h.
int file_mkdir(const char* path, int parents);
// With recursive, removes everything below path whose name matches no
// pattern of exclude; then path itself. Returns the number of entries
// removed; reports each through the callbacks, logs nothing. When path is a
// symbolic link, the link alone is removed, never what it points to; when a
// directory above path fails the owner test of file_trust.h (logged),
// nothing is removed.
int file_remove_tree(const char* path, const char* exclude, int recursive);

// ---- modes, owners, ids ------------------------------------------------------

// chmod: 1 done, 0 failed (null path). A symbolic link is left alone and
// counts as done.
int file_chmod(const char* path, int mode);
// Changes owner and group without following a final symbolic link. A gid
// of -1 takes the uid's value. 1 done, 0 failed or not tried (null path,
// uid -1).
int file_chown(const char* path, int uid, int gid);
// The same for a listed entry; held is a descriptor the caller opened on
// the entry itself (a directory it walked), or -1 to act on the name.
int file_entry_chmod(const file_entry* entry, int held, int mode);
int file_entry_chown(const file_entry* entry, int held, int uid, int gid);
// Removes a listed entry (a link itself, a directory only when empty):
// 1 / 0 with errno; logs nothing and calls no callback.
int file_entry_remove(const file_entry* entry);
// The id of a user or group, the user's primary group id; -1 if unknown.
int file_user_id(const char* user);
int file_group_id(const char* group);
int file_user_group_id(const char* user);

// ---- names ------------------------------------------------------------------

// What follows the last "/" or "\" of path (the whole path without one), at
// most size-1 characters, into buffer. Returns buffer; null when path or
// buffer is null or size < 1.
char* file_base_name(const char* path, char* buffer, int size);
// path cut at its last "/" or "\" (separator dropped); a path without one is
// copied whole. Returns buffer; null when path or buffer is null or size < 1.
char* file_dir_name(const char* path, char* buffer, int size);
