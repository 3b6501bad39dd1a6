#include "foundation/str_path.h"

#include <fcntl.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include "foundation/str_text.h"

namespace {

// The separator str_path_join writes; the program is single-threaded.
char g_separator = '/';

bool is_sep(char c) { return c == '/' || c == '\\'; }

// "X:" at the start of a path.
bool has_drive(const char* path) {
  return std::isalpha(static_cast<unsigned char>(path[0])) != 0 && path[1] == ':';
}

// The last "/" or "\" of path, or nullptr.
const char* last_sep(const char* path) {
  const char* found = nullptr;
  for (const char* at = path; *at != '\0'; ++at) {
    if (is_sep(*at)) found = at;
  }
  return found;
}

// What follows the last separator of path (the whole path without one).
const char* last_component(const char* path) {
  const char* sep = last_sep(path);
  return sep != nullptr ? sep + 1 : path;
}

// Drops "." components and lets ".." remove itself and the one before it,
// never climbing above the root part (a drive, "/", or both).
std::string normalize(const std::string& dir) {
  size_t root_len = has_drive(dir.c_str()) ? 2 : 0;
  if (root_len < dir.size() && dir[root_len] == '/') ++root_len;
  std::vector<std::string> parts;
  size_t at = root_len;
  while (at <= dir.size()) {
    size_t end = dir.find('/', at);
    if (end == std::string::npos) end = dir.size();
    std::string part = dir.substr(at, end - at);
    if (part == "..") {
      if (!parts.empty()) parts.pop_back();
    } else if (!part.empty() && part != ".") {
      parts.push_back(part);
    }
    at = end + 1;
  }
  std::string result = dir.substr(0, root_len);
  for (size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) result += '/';
    result += parts[i];
  }
  return result;
}

}  // namespace

void str_set_separator(char sep) {
  if (sep != '\0') g_separator = sep;
}

char* str_path_join(char* dest, const char* name, int size) {
  if (dest == nullptr || size < 1) return nullptr;
  int len = static_cast<int>(strnlen(dest, static_cast<size_t>(size - 1)));
  dest[len] = '\0';
  str_separators_to(dest, g_separator);
  if (name != nullptr) {
    bool dest_ends = len > 0 && (is_sep(dest[len - 1]) || dest[len - 1] == g_separator);
    if (is_sep(name[0])) {
      if (dest_ends) ++name;
    } else if (len > 0 && !dest_ends && len < size - 1) {
      dest[len++] = g_separator;
    }
    for (; *name != '\0' && len < size - 1; ++name) {
      dest[len++] = is_sep(*name) ? g_separator : *name;
    }
    dest[len] = '\0';
  }
  return len > 0 ? dest : nullptr;
}

char* str_base_name(char* dest, const char* path, int size) {
  if (dest == nullptr) return nullptr;
  str_copy_until(last_component(str_or_empty(path)), ".", dest, size);
  return dest;
}

char* str_split_path(char* path, char* name, int size) {
  if (path == nullptr || name == nullptr) return path;
  char* sep = const_cast<char*>(last_sep(path));
  str_copy(name, sep != nullptr ? sep + 1 : path, size);
  if (sep != nullptr) {
    *sep = '\0';
  } else {
    path[0] = '\0';
  }
  return path;
}

char* str_strip_dir(char* path) {
  if (path == nullptr) return nullptr;
  const char* name = last_component(path);
  memmove(path, name, strlen(name) + 1);
  return path;
}

char* str_strip_ext(char* path) {
  if (path == nullptr) return nullptr;
  char* name = const_cast<char*>(last_component(path));
  char* dot = strrchr(name, '.');
  if (dot != nullptr && dot != name) *dot = '\0';
  return path;
}

int str_get_ext(char* out, const char* path, int size) {
  if (out == nullptr) return 0;
  const char* dot = strchr(last_component(str_or_empty(path)), '.');
  return str_copy(out, dot != nullptr ? dot + 1 : "", size);
}

char* str_abs_dir(char* dest, const char* path, int size) {
  if (dest == nullptr || size < 1) return nullptr;
  if (path == nullptr) return dest;
  std::string full;
  if (!is_sep(path[0]) && !has_drive(path)) {
    std::vector<char> cwd(PATH_MAX + 1);
    if (getcwd(cwd.data(), cwd.size()) == nullptr) {
      dest[0] = '\0';
      return nullptr;
    }
    full = std::string(cwd.data()) + "/";
  }
  full += path;
  for (char& c : full) {
    if (c == '\\') c = '/';
  }
  size_t cut = full.rfind('/');
  full.resize(cut != std::string::npos ? cut + 1 : 2);  // "X:name" keeps "X:"
  std::string dir = normalize(full);
  if (!dir.empty() && dir.back() == ':') dir += '/';
  str_copy(dest, dir.c_str(), size);
  return dest;
}

char* str_getcwd(char* buffer, int size) {
  if (buffer == nullptr || size < 1) return nullptr;
  return getcwd(buffer, static_cast<size_t>(size));
}

char* str_etc_dir(char* buffer, int size) {
  if (buffer == nullptr) return nullptr;
  str_copy(buffer, "/etc", size);
  return buffer;
}
