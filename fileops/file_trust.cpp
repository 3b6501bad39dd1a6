// Path walks that hold each directory open and follow only trusted links.
#include "fileops/file_trust.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "fileops/file_base.h"
#include "foundation/str_text.h"

namespace {

// The kernel's own bound on the links one lookup follows.
constexpr int kLinkLimit = 40;
constexpr int kStepFlags = O_PATH | O_DIRECTORY;

// One component still to walk, with the path text up to and including it
// for the messages.
struct component {
  std::string name;
  std::string shown;
};

bool is_separator(char c, bool backslash) { return c == '/' || (backslash && c == '\\'); }

// Pushes the components of text onto todo so that its first is walked next;
// each one's shown text is base followed by text up to its end.
void push_components(std::vector<component>* todo, const std::string& text, const std::string& base,
                     bool backslash) {
  std::vector<component> parts;
  size_t start = 0;
  for (size_t at = 0; at <= text.size(); ++at) {
    if (at < text.size() && !is_separator(text[at], backslash)) continue;
    if (at > start) parts.push_back({text.substr(start, at - start), base + text.substr(0, at)});
    start = at + 1;
  }
  todo->insert(todo->end(), parts.rbegin(), parts.rend());
}

unique_fd open_start(bool absolute) {
  return unique_fd(open(absolute ? "/" : ".", kStepFlags | O_CLOEXEC));
}

void refuse(const std::string& shown) {
  errno = ELOOP;
  file_error("Not following symbolic link '%s'", shown.c_str());
  errno = ELOOP;
}

std::string read_link(int dir_fd, const std::string& name) {
  char target[kPathSize * 4];
  ssize_t length = readlinkat(dir_fd, name.c_str(), target, sizeof target);
  if (length <= 0 || static_cast<size_t>(length) >= sizeof target) {
    if (length >= 0) errno = length == 0 ? ENOENT : ENAMETOOLONG;
    return {};
  }
  return std::string(target, static_cast<size_t>(length));
}

// A walk over components from a start directory; walk() opens the last one
// with the caller's flags and every other as a directory to step through.
class path_walk {
 public:
  path_walk(int start_fd, std::vector<component> todo) : at_(start_fd), todo_(std::move(todo)) {}

  unique_fd walk(int final_flags) {
    if (todo_.empty()) todo_.push_back({".", "."});
    while (!todo_.empty()) {
      component part = std::move(todo_.back());
      todo_.pop_back();
      int flags = (todo_.empty() ? final_flags : kStepFlags) | O_NOFOLLOW | O_CLOEXEC;
      unique_fd next(openat(at_, part.name.c_str(), flags));
      if (!next && !follow(part)) return {};
      if (next) hold(std::move(next));
    }
    return std::move(held_);
  }
  bool refused() const { return refused_; }

 private:
  void hold(unique_fd fd) {
    held_ = std::move(fd);
    at_ = held_.get();
  }

  // The open of part failed: when part is a trusted link, queue its target
  // in its place (true); otherwise false with errno set.
  bool follow(const component& part) {
    int err = errno;
    struct stat link {};
    if ((err != ELOOP && err != ENOTDIR) ||
        fstatat(at_, part.name.c_str(), &link, AT_SYMLINK_NOFOLLOW) != 0 ||
        !S_ISLNK(link.st_mode)) {
      errno = err;
      return false;
    }
    struct stat dir {};
    if (!file_owner_trusted(link.st_uid) || fstat(at_, &dir) != 0 || !file_dir_private(dir)) {
      refused_ = true;
      refuse(part.shown);
      return false;
    }
    if (++links_ > kLinkLimit) {
      errno = ELOOP;
      return false;
    }
    std::string target = read_link(at_, part.name);
    if (target.empty()) return false;
    std::string base = part.shown.substr(0, part.shown.size() - part.name.size());
    if (target[0] == '/') {
      unique_fd root = open_start(true);
      if (!root) return false;
      hold(std::move(root));
      base.clear();
    }
    push_components(&todo_, target, base, false);
    if (todo_.empty()) todo_.push_back({".", part.shown});
    return true;
  }

  int at_;
  unique_fd held_;
  std::vector<component> todo_;
  int links_ = 0;
  bool refused_ = false;
};

// The components of a given path text, and the directory it starts from.
std::vector<component> split_path(const char* path) {
  std::vector<component> todo;
  push_components(&todo, path, "", true);
  return todo;
}

bool is_absolute(const char* path) { return is_separator(path[0], true); }

// Walks path's components (the last with final_flags); whether a link was
// refused, for the trust tests.
unique_fd walk_text(const char* path, int final_flags, bool* refused) {
  unique_fd start = open_start(is_absolute(path));
  if (!start) return {};
  path_walk walk(start.get(), split_path(path));
  unique_fd fd = walk.walk(final_flags);
  if (refused != nullptr) *refused = walk.refused();
  return fd;
}

}  // namespace

bool file_dir_shared(int dir_fd) {
  struct stat status {};
  return fstat(dir_fd, &status) != 0 || !file_dir_private(status);
}

bool file_refuse_second_name(const struct stat& file, bool dir_shared, const char* doing,
                             const char* path) {
  if (!dir_shared || !S_ISREG(file.st_mode) || file.st_nlink <= 1) return false;
  errno = EMLINK;
  file_error("Not %s '%s': it has other names and other accounts can change its directory", doing,
             path);
  errno = EMLINK;
  return true;
}

unique_fd file_open_path(const char* path, int flags) {
  if (path == nullptr) {
    errno = EINVAL;
    return {};
  }
  return walk_text(path, flags, nullptr);
}

unique_fd file_open_beside(int dir_fd, const char* name, const char* shown, int flags) {
  if (name == nullptr) {
    errno = EINVAL;
    return {};
  }
  // Most names are no links: one open, and the walk only for the others.
  unique_fd fd(openat(dir_fd, name, flags | O_NOFOLLOW | O_CLOEXEC));
  if (fd || (errno != ELOOP && errno != ENOTDIR)) return fd;
  path_walk walk(dir_fd, {{name, shown != nullptr ? shown : name}});
  return walk.walk(flags);
}

unique_fd file_open_parent(const char* path, std::string* name) {
  if (path == nullptr || name == nullptr) {
    errno = EINVAL;
    return {};
  }
  std::vector<component> todo = split_path(path);
  *name = todo.empty() ? "." : todo.front().name;
  if (!todo.empty()) todo.erase(todo.begin());
  unique_fd start = open_start(is_absolute(path));
  if (!start) return {};
  path_walk walk(start.get(), std::move(todo));
  return walk.walk(kStepFlags);
}

FILE* file_open_named(const char* path, const char* mode) {
  if (path == nullptr || mode == nullptr) return nullptr;
  int flags = file_open_flags(mode);
  if ((flags & O_ACCMODE) == O_RDONLY) {
    unique_fd fd = file_open_path(path, flags & ~O_NOFOLLOW);
    if (!fd) file_explain_open_failure(path);
    return fd ? file_stream_on(fd.release(), path, mode, -1) : nullptr;
  }
  std::string name;
  unique_fd dir = file_open_parent(path, &name);
  if (!dir) return nullptr;
  unique_fd fd(openat(dir.get(), name.c_str(), flags, 0666));
  if (!fd) {
    file_explain_open_failure(path);
    return nullptr;
  }
  return file_stream_on(fd.release(), path, mode, dir.get());
}

int file_path_trusted(const char* path) {
  if (path == nullptr) return 0;
  bool refused = false;
  walk_text(path, kStepFlags, &refused);
  if (!refused) return 1;
  errno = ELOOP;
  return 0;
}

int file_is_link(const char* path) {
  struct stat status {};
  return path != nullptr && lstat(path, &status) == 0 && S_ISLNK(status.st_mode) ? 1 : 0;
}
