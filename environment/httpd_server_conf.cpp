#include "environment/httpd_server_conf.h"

#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <map>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "fileops/file_dir.h"
#include "fileops/file_ops.h"
#include "fileops/file_trust.h"
#include "foundation/logger.h"
#include "foundation/results.h"
#include "foundation/str_path.h"
#include "foundation/str_text.h"

namespace {

// Modules compiled into the stock server builds, by identifier and by source
// file name; every other module counts once a LoadModule line names it.
constexpr const char* kBuiltInModules[] = {
    "core.c",          "http_core.c",   "mod_so.c",          "mod_unixd.c",  "mod_log_config.c",
    "mod_logio.c",     "mod_version.c", "mod_watchdog.c",    "core_module",  "http_module",
    "so_module",       "unixd_module",  "log_config_module", "logio_module", "version_module",
    "watchdog_module",
};

struct value_directive {
  const char* name;
  httpd_value_index index;
};
constexpr value_directive kValueDirectives[] = {
    {"User", kHttpdUser},
    {"Group", kHttpdGroup},
    {"DocumentRoot", kHttpdDocumentRoot},
    {"ScriptAlias", kHttpdScriptDir},
};

// Where a value was set: server-wide (vhost 0) or in the n-th virtual host
// block, and whether in the main file or an included one.
struct origin {
  int vhost = 0;
  bool included = false;
};

// An open section: whether lines inside it count, and the virtual host
// block it lies in (0 for none).
struct section {
  bool active = true;
  int vhost = 0;
};

using file_id = std::pair<dev_t, ino_t>;

// Where a line stands; its text is made only when a value or a log line
// needs it.
struct line_place {
  const std::string& path;
  int number;
  std::string text() const { return path + ":" + std::to_string(number); }
};

struct reader {
  httpd_values* values = nullptr;
  std::array<origin, kHttpdValueCount> origins{};
  std::string server_root;
  std::map<std::string, std::string> variables;  // ${NAME}
  std::set<std::string> defined;                 // <IfDefine NAME>
  std::set<std::string> modules;                 // <IfModule name>
  std::vector<section> sections;
  std::vector<file_id> chain;  // the files being read, main file first
  int files_read = 0;
  long bytes_read = 0;
  int paths_left = kHttpdConfPathsMax;  // paths an include may still look at
  int vhosts_seen = 0;
};

// Counts one path against the reading's budget; false (logged once) when it
// is spent, so that an include of "/" or of "/*/*/*" ends soon.
bool spend_path(reader& r, const std::string& path) {
  if (r.paths_left == 0) return false;
  if (--r.paths_left == 0) {
    log_debug("More than %d paths looked at for includes, stopped at [%s]", kHttpdConfPathsMax,
              path.c_str());
    return false;
  }
  return true;
}

bool is_blank(char c) { return c == ' ' || c == '\t'; }

std::string_view trim(std::string_view text) {
  while (!text.empty() && (is_blank(text.front()) || text.front() == '\r')) text.remove_prefix(1);
  while (!text.empty() && (is_blank(text.back()) || text.back() == '\r')) text.remove_suffix(1);
  return text;
}

bool same_word(std::string_view a, const char* b) {
  return str_icmp(std::string(a).c_str(), b) == 0;
}

std::string directory_of(const std::string& path) {
  size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

// Reads at most kHttpdConfMaxBytes of a regular file; false when it does
// not open.
bool load(const std::string& path, bool quiet_unopened, std::string* text, file_id* id) {
  unique_fd fd = httpd_conf_open(path.c_str(), quiet_unopened);
  if (!fd) return false;
  struct stat status {};
  if (fstat(fd.get(), &status) == 0) *id = {status.st_dev, status.st_ino};
  text->clear();
  char chunk[8192];
  while (text->size() < static_cast<size_t>(kHttpdConfMaxBytes)) {
    size_t want = std::min(sizeof chunk, static_cast<size_t>(kHttpdConfMaxBytes) - text->size());
    ssize_t got = read(fd.get(), chunk, want);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    text->append(chunk, static_cast<size_t>(got));
  }
  if (text->size() == static_cast<size_t>(kHttpdConfMaxBytes)) {
    log_debug("Read only the first %ld bytes of [%s]", kHttpdConfMaxBytes, path.c_str());
  }
  return true;
}

// The words of a directive line: runs of non-blanks, or texts in double or
// single quotes (a backslash keeps a quote inside), quotes removed.
std::vector<std::string> split_words(std::string_view line) {
  std::vector<std::string> words;
  size_t at = 0;
  while (true) {
    while (at < line.size() && is_blank(line[at])) ++at;
    if (at == line.size()) break;
    std::string word;
    char quote = line[at];
    if (quote == '"' || quote == '\'') {
      for (++at; at < line.size() && line[at] != quote; ++at) {
        if (line[at] == '\\' && at + 1 < line.size() && line[at + 1] == quote) ++at;
        word += line[at];
      }
      if (at < line.size()) ++at;
    } else {
      while (at < line.size() && !is_blank(line[at])) word += line[at++];
    }
    words.push_back(std::move(word));
  }
  return words;
}

// ${NAME} replaced where NAME is known; unknown references stay as written.
std::string expand(const reader& r, std::string_view text) {
  if (text.find("${") == std::string_view::npos)
    return std::string(text.substr(0, kHttpdExpandedLineMax));
  std::string out;
  size_t at = 0;
  while (at < text.size() && out.size() < kHttpdExpandedLineMax) {
    if (text.compare(at, 2, "${") == 0) {
      size_t end = text.find('}', at + 2);
      if (end != std::string_view::npos) {
        auto known = r.variables.find(std::string(text.substr(at + 2, end - at - 2)));
        if (known != r.variables.end()) {
          out += known->second;
          at = end + 1;
          continue;
        }
      }
    }
    out += text[at++];
  }
  if (out.size() > kHttpdExpandedLineMax) out.resize(kHttpdExpandedLineMax);
  return out;
}

// The value of "export NAME=value" as a shell would give it, without running
// anything: quotes removed, $NAME and ${NAME} from earlier lines (unknown
// ones empty), cut at an unquoted blank, ";" or "#".
std::string shell_value(const reader& r, std::string_view text) {
  std::string out;
  char quote = 0;
  for (size_t at = 0; at < text.size(); ++at) {
    char c = text[at];
    if (quote == 0 && (is_blank(c) || c == ';' || c == '#')) break;
    if ((c == '"' || c == '\'') && (quote == 0 || quote == c)) {
      quote = quote == 0 ? c : 0;
    } else if (c == '$' && quote != '\'') {
      bool braced = at + 1 < text.size() && text[at + 1] == '{';
      size_t start = at + (braced ? 2 : 1);
      size_t end = start;
      while (end < text.size() &&
             (isalnum(static_cast<unsigned char>(text[end])) || text[end] == '_'))
        ++end;
      auto known = r.variables.find(std::string(text.substr(start, end - start)));
      if (known != r.variables.end()) out += known->second;
      at = braced && end < text.size() && text[end] == '}' ? end : end - 1;
    } else {
      out += c;
    }
  }
  return out;
}

// Debian's layout sets the names the main file uses in an envvars file
// beside it, for the service wrapper to export.
void read_envvars(reader& r, const std::string& dir) {
  std::string text;
  file_id id{};
  if (!load(dir + "/envvars", true, &text, &id)) return;
  std::string_view rest(text);
  while (!rest.empty()) {
    size_t end = rest.find('\n');
    std::string_view line = trim(rest.substr(0, end));
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    if (line.substr(0, 7) != "export ") continue;
    line = trim(line.substr(7));
    size_t equals = line.find('=');
    if (equals == std::string_view::npos || equals == 0) continue;
    r.variables[std::string(line.substr(0, equals))] = shell_value(r, line.substr(equals + 1));
  }
}

bool has_module(const reader& r, const std::string& name) {
  for (const char* built_in : kBuiltInModules) {
    if (name == built_in) return true;
  }
  return r.modules.count(name) != 0;
}

// LoadModule alias_module ... makes both "alias_module" and "mod_alias.c"
// present.
void load_module(reader& r, const std::string& identifier) {
  r.modules.insert(identifier);
  constexpr std::string_view suffix = "_module";
  if (identifier.size() > suffix.size() && identifier.ends_with(suffix)) {
    r.modules.insert("mod_" + identifier.substr(0, identifier.size() - suffix.size()) + ".c");
  }
}

bool condition_holds(const reader& r, std::string_view kind, std::string argument) {
  bool negated = !argument.empty() && argument[0] == '!';
  if (negated) argument.erase(0, 1);
  bool holds = true;
  if (same_word(kind, "IfModule")) {
    holds = has_module(r, argument);
  } else if (same_word(kind, "IfDefine")) {
    holds = r.defined.count(argument) != 0;
  } else {
    return true;
  }
  return holds != negated;
}

// "<Kind argument>" opens a section, "</Kind>" closes the innermost one.
void take_section(reader& r, std::string_view line) {
  section parent = r.sections.empty() ? section{} : r.sections.back();
  if (line.substr(0, 2) == "</") {
    if (!r.sections.empty()) r.sections.pop_back();
    return;
  }
  std::string_view inside = line.substr(1);
  size_t close = inside.rfind('>');
  if (close != std::string_view::npos) inside = inside.substr(0, close);
  std::vector<std::string> words = split_words(inside);
  if (words.empty()) return;
  section opened = parent;
  std::string argument = words.size() > 1 ? words[1] : "";
  opened.active = parent.active && condition_holds(r, words[0], argument);
  if (opened.active && same_word(words[0], "VirtualHost")) opened.vhost = ++r.vhosts_seen;
  r.sections.push_back(opened);
}

// Server-wide beats a virtual host; between server-wide lines the main
// file's beats an included file's, and a later line of the same kind
// replaces an earlier one; between virtual hosts the first block counts.
bool replaces(const origin& now, const httpd_found_value& held, const origin& held_origin) {
  if (!held.found) return true;
  if (now.vhost == 0 || held_origin.vhost == 0) {
    if (now.vhost != held_origin.vhost) return now.vhost == 0;
    return !now.included || held_origin.included;
  }
  return now.vhost <= held_origin.vhost;
}

void take_value(reader& r, httpd_value_index index, std::string text, const line_place& where,
                bool included) {
  origin now{r.sections.empty() ? 0 : r.sections.back().vhost, included};
  httpd_found_value& held = (*r.values)[index];
  if (!replaces(now, held, r.origins[index])) return;
  held = {std::move(text), where.text(), true};
  r.origins[index] = now;
}

std::string from_server_root(const reader& r, const std::string& path) {
  if (path.empty() || path[0] == '/') return path;
  return r.server_root + "/" + path;
}

void include(reader& r, const std::string& pattern, int depth, const line_place& where);

// User, Group, DocumentRoot (relative to ServerRoot) and the directory of a
// ScriptAlias whose URL holds "cgi-bin".
void take_value_directive(reader& r, const std::vector<std::string>& words, const line_place& where,
                          bool included) {
  for (const value_directive& directive : kValueDirectives) {
    if (!same_word(words[0], directive.name)) continue;
    if (directive.index == kHttpdScriptDir) {
      if (words.size() < 3 || words[1].find("cgi-bin") == std::string::npos) return;
      take_value(r, directive.index, words[2], where, included);
    } else if (directive.index == kHttpdDocumentRoot) {
      take_value(r, directive.index, from_server_root(r, words[1]), where, included);
    } else {
      take_value(r, directive.index, words[1], where, included);
    }
  }
}

// A directive line of at least a name and one argument.
void take_directive(reader& r, const std::vector<std::string>& words, const line_place& where,
                    int depth) {
  if (words.size() < 2) return;
  const std::string& name = words[0];
  const std::string& first = words[1];
  if (same_word(name, "ServerRoot")) {
    r.server_root =
        first.size() > 1 && first.back() == '/' ? first.substr(0, first.size() - 1) : first;
  } else if (same_word(name, "Define")) {
    r.defined.insert(first);
    if (words.size() > 2) r.variables[first] = words[2];
  } else if (same_word(name, "UnDefine")) {
    r.defined.erase(first);
    r.variables.erase(first);
  } else if (same_word(name, "LoadModule")) {
    load_module(r, first);
  } else if (same_word(name, "Include") || same_word(name, "IncludeOptional")) {
    include(r, from_server_root(r, first), depth + 1, where);
  } else {
    take_value_directive(r, words, where, depth > 0);
  }
}

void take_line(reader& r, const line_place& where, std::string_view raw, int depth) {
  // A text line ends at a NUL byte, as it does for the server.
  raw = raw.substr(0, raw.find('\0'));
  std::string line = expand(r, trim(raw));
  if (line.empty() || line[0] == '#') return;
  if (line[0] == '<') {
    take_section(r, line);
    return;
  }
  if (!r.sections.empty() && !r.sections.back().active) return;
  std::vector<std::string> words = split_words(line);
  if (!words.empty()) take_directive(r, words, where, depth);
}

// Lines ending in a backslash go on on the next one. A section left open at
// the end of a file ends with it.
void read_text(reader& r, const std::string& path, std::string_view text, int depth) {
  size_t open_sections = r.sections.size();
  std::string logical;
  int number = 0;
  int first = 0;
  while (!text.empty()) {
    size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (logical.empty()) first = number + 1;
    ++number;
    if (!line.empty() && line.back() == '\\') {
      logical.append(line.substr(0, line.size() - 1));
      if (!text.empty()) continue;
    } else {
      logical.append(line);
    }
    take_line(r, line_place{path, first}, logical, depth);
    logical.clear();
  }
  r.sections.resize(std::min(r.sections.size(), open_sections));
}

// 1 when read, 0 when it did not open, -1 when skipped (loop, bound).
int read_file(reader& r, const std::string& path, int depth) {
  if (r.files_read >= kHttpdConfFilesMax || r.bytes_read >= kHttpdConfTotalBytesMax) {
    log_debug("More than %d configuration files or %ld bytes, skipped [%s]", kHttpdConfFilesMax,
              kHttpdConfTotalBytesMax, path.c_str());
    return k_skipped;
  }
  std::string text;
  file_id id{};
  if (!load(path, false, &text, &id)) return k_fail;
  if (std::find(r.chain.begin(), r.chain.end(), id) != r.chain.end()) {
    log_debug("Include loop, skipped [%s]", path.c_str());
    return k_skipped;
  }
  ++r.files_read;
  r.bytes_read += static_cast<long>(text.size());
  r.chain.push_back(id);
  log_debug("Reading httpd conf [%s]", path.c_str());
  read_text(r, path, text, depth);
  r.chain.pop_back();
  return k_ok;
}

// The names in dir matching a wildcard, in the server's order (byte order).
// A leading dot is matched only by a pattern that begins with one.
std::vector<std::string> matching_names(const std::string& dir, const std::string& pattern) {
  std::vector<std::string> names;
  if (!file_is_dir(dir.c_str())) return names;
  file_listing* listing = nullptr;
  file_entry* entry = file_dir_open(&listing, dir.c_str(), "*");
  if (entry == nullptr) return names;
  do {
    const char* name = file_entry_name(entry);
    if (fnmatch(pattern.c_str(), name, FNM_PERIOD) == 0) names.emplace_back(name);
  } while (file_dir_next(entry, listing));
  file_entry_free(&entry);
  file_dir_close(&listing);
  std::sort(names.begin(), names.end());
  return names;
}

std::string join(const std::string& dir, const std::string& name) {
  return dir == "/" ? "/" + name : dir + "/" + name;
}

// Wildcards may stand in any component; a component that has one matches
// names of directories when components follow it.
void expand_path(reader& r, const std::string& prefix, std::string_view rest,
                 std::vector<std::string>* out) {
  if (!spend_path(r, prefix)) return;
  while (!rest.empty() && rest.front() == '/') rest.remove_prefix(1);
  if (rest.empty()) {
    out->push_back(prefix.empty() ? "/" : prefix);
    return;
  }
  size_t slash = rest.find('/');
  std::string component(rest.substr(0, slash));
  std::string_view tail = slash == std::string_view::npos ? std::string_view() : rest.substr(slash);
  std::string dir = prefix.empty() ? "/" : prefix;
  if (component.find_first_of("*?[") == std::string::npos) {
    expand_path(r, join(dir, component), tail, out);
    return;
  }
  for (const std::string& name : matching_names(dir, component)) {
    std::string path = join(dir, name);
    if (tail.empty() || file_is_dir(path.c_str())) expand_path(r, path, tail, out);
  }
}

// A directory is read whole: every file in it and below it, in order.
void read_path(reader& r, const std::string& path, int depth) {
  if (!spend_path(r, path)) return;
  if (depth > kHttpdIncludeDepthMax) {
    log_debug("Includes nested deeper than %d, skipped [%s]", kHttpdIncludeDepthMax, path.c_str());
    return;
  }
  // Files are opened through httpd_conf_open, which refuses untrusted links.
  if (!file_is_dir(path.c_str())) {
    read_file(r, path, depth);
    return;
  }
  for (const std::string& name : matching_names(path, "*"))
    read_path(r, join(path, name), depth + 1);
}

void include(reader& r, const std::string& pattern, int depth, const line_place& where) {
  if (pattern.empty() || pattern[0] != '/') {
    log_debug("Include at %s without an absolute ServerRoot, skipped [%s]", where.text().c_str(),
              pattern.c_str());
    return;
  }
  std::vector<std::string> paths;
  expand_path(r, "", pattern, &paths);
  if (paths.empty())
    log_debug("Include at %s matches nothing [%s]", where.text().c_str(), pattern.c_str());
  for (const std::string& path : paths) read_path(r, path, depth);
}

}  // namespace

unique_fd httpd_conf_open(const char* path, bool quiet_unopened) {
  if (path == nullptr || !file_path_trusted(path)) return unique_fd();
  errno = 0;
  unique_fd fd(open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (!fd) {
    int err = errno;
    if (!quiet_unopened) log_debug("Cannot open [%s]%s", path, str_error_suffix(err).c_str());
    errno = err;
    return fd;
  }
  struct stat status {};
  if (fstat(fd.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
    log_debug("Not a regular file, skipped [%s]", path);
    errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    return unique_fd();
  }
  return fd;
}

int httpd_server_conf_read(const char* main_path, httpd_values* values) {
  if (main_path == nullptr || values == nullptr) return k_fail;
  reader r;
  r.values = values;
  std::string main(main_path);
  char cwd[kPathSize];
  if (main[0] != '/' && str_getcwd(cwd, kPathSize) != nullptr) main = join(cwd, main);
  r.server_root = directory_of(main);
  read_envvars(r, r.server_root);
  *values = {};
  return read_file(r, main, 0) == k_ok ? k_ok : k_fail;
}
