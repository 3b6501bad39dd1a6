// Directory listing: the entries of one directory whose names match a
// wildcard pattern (case-sensitive, see wild_match.h), in the order the system
// gives them, each with its link status (links are not followed) and, for a
// symbolic link, its target. "." and ".." are never listed.
//
// A listing holds its directory open, and each entry keeps that directory and
// its own name: whatever acts on an entry acts relative to the directory,
// never through the entry's full path, which is there for messages, the log
// and the step callbacks. A listed name is one name, whatever bytes it holds
// ("\" included).
//
// Walking a listing:
//   file_listing* listing = nullptr;
//   file_entry* entry = file_dir_open(&listing, dir, "*");
//   if (entry != nullptr) {
//     do { ...use entry... } while (file_dir_next(entry, listing));
//     file_entry_free(&entry);
//     file_dir_close(&listing);
//   }
// One entry is refilled in place, so a walk allocates nothing per name, and
// memory stays bounded by the number of listings open at once.
#pragma once

#include <sys/stat.h>

#include <string>

#include "foundation/handles.h"
#include "foundation/str_text.h"

// One listed entry. Owned by whoever opened or created it; release with
// file_entry_free.
struct file_entry {
  char path[kPathSize] = {};  // directory joined with the name, <= 255 chars
  std::string link_target;    // meaningful only for a symbolic link
  struct stat status = {};    // the name's own status, links not followed
  std::string name;           // the name as listed
  int dir_fd = -1;            // the directory holding it (the listing's)
  bool dir_shared = false;    // another account can change that directory
  unique_fd own_dir;          // dir_fd when the entry holds it itself
};

// An open listing (directory path, pattern, directory stream). Opaque.
struct file_listing;

// Opens dir (file_trust.h: only trusted links are followed) and returns a new entry holding its
// first name matching pattern; *listing then holds the open listing. Null (and *listing cleared)
// when an argument is null, the directory cannot be opened (logged as "Error opening dir '%s'" with
// the system's reason) or nothing matches.
file_entry* file_dir_open(file_listing** listing, const char* dir, const char* pattern);
// What a listing reads of each entry's status: all of it, or, for entries
// that are neither directories nor links, only the type the directory
// itself gives (no system call per name; all that a walk needs, since it
// acts on the name relative to its directory or through a descriptor it
// checks itself).
enum class file_status_need { full, type };

// Lists the directory held by dir (taken over) as path: the listing (closed
// with file_dir_close), or null with "Error opening dir '%s'" logged when
// dir is not valid or cannot be read. Nothing is read yet.
file_listing* file_listing_open(unique_fd dir, const char* path, const char* pattern,
                                file_status_need need);
// The descriptor of the directory a listing holds (the listing's own), or -1.
int file_listing_fd(const file_listing* listing);
// Refills entry with the next matching name: 1, or 0 at the end (entry then
// unchanged). Names whose link status cannot be read are skipped; a name
// whose full path would exceed 255 characters is logged and reported to the
// failed step callback (ENAMETOOLONG), never cut. 0 for null arguments.
int file_dir_next(file_entry* entry, file_listing* listing);
// Closes and frees the listing and clears *listing; null-safe.
void file_dir_close(file_listing** listing);

// Opens a listed directory relative to its listing, never through a link,
// and only when it is still the directory that was listed. Failures are
// logged ("Not following symbolic link '%s'" for a link, "Error opening dir
// '%s'" otherwise, ESTALE for another directory swapped in) with errno set;
// when something else stands at the name now, that is also reported to the
// failed step callback.
unique_fd file_entry_open_dir(const file_entry* entry);

// A new entry for path, holding the directory above it (found as
// file_open_parent does), or null when path is null, longer than 255
// characters or its link status cannot be read.
file_entry* file_entry_new(const char* path);
// A new entry with the same path, status and link target; null for null.
file_entry* file_entry_clone(const file_entry* entry);
// Re-reads status and link target of the entry's name: 1 done, 0 failed.
int file_entry_stat(file_entry* entry);
// Frees the entry and clears *entry; null-safe.
void file_entry_free(file_entry** entry);

// Accessors; texts stay the entry's until it is refilled or freed.
// The full path, or null for a null entry.
const char* file_entry_path(const file_entry* entry);
// The name as listed (for a lone entry, what follows its path's last "/" or
// "\"); null for a null entry.
const char* file_entry_name(const file_entry* entry);
// The link's target ("READLINK FAILED" when it could not be read, cut at 255
// characters), or null when the entry is not a symbolic link.
const char* file_entry_link_target(const file_entry* entry);
// The entry's lstat() status, or null for a null entry.
const struct stat* file_entry_status(const file_entry* entry);
// 1 for a real directory (a link to one is not), else 0.
int file_entry_is_dir(const file_entry* entry);
// 1 for a symbolic link, else 0.
int file_entry_is_link(const file_entry* entry);
