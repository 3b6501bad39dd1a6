#include "environment/httpd_conf.h"

#include <array>
#include <cstdio>

#include "environment/httpd_server_conf.h"
#include "fileops/file_ops.h"
#include "foundation/file_guard.h"
#include "foundation/formatter.h"
#include "foundation/handles.h"
#include "foundation/logger.h"
#include "foundation/results.h"
#include "foundation/str_path.h"
#include "foundation/str_text.h"

namespace {

constexpr const char* kFixedCandidates[] = {
    "/etc/apache/httpd.conf",
    "/etc/httpd/conf/httpd.conf",
    "/etc/httpd/httpd.conf",
    "/usr/local/apache/conf/httpd.conf",
    "/usr/local/httpd/conf/httpd.conf",
    "/usr/local/apache/etc/httpd.conf",
    "/usr/internet/httpd/public/conf/httpd.conf",
    "/opt/apache/conf/httpd.conf",
};

// Main configuration files of the layouts hosts ship today, probed in this
// order when none of the eight opens.
constexpr const char* kMorePlaces[] = {
    "/etc/apache2/apache2.conf",           // Debian, Ubuntu
    "/etc/apache2/httpd.conf",             // openSUSE, SLES, Alpine
    "/usr/local/apache2/conf/httpd.conf",  // default source build, official container image
    "/usr/local/etc/apache24/httpd.conf",  // FreeBSD ports
    "/opt/homebrew/etc/httpd/httpd.conf",  // Homebrew on Apple silicon
    "/usr/local/etc/httpd/httpd.conf",     // Homebrew on Intel
};

// Positions of the four values, in the order of the lookup's arguments.
using value_index = httpd_value_index;
constexpr value_index kUser = kHttpdUser;
constexpr value_index kGroup = kHttpdGroup;
constexpr value_index kDocumentRoot = kHttpdDocumentRoot;
constexpr value_index kScriptDir = kHttpdScriptDir;
constexpr int kValueCount = kHttpdValueCount;
constexpr const char* kValueNames[] = {"User", "Group", "DocumentRoot", "ScriptAlias"};
using value_buffers = std::array<char*, kValueCount>;

struct cached_value {
  std::string text;
  bool found = false;
};

// Suffixes of "Could not find", in their fixed order (Group before User).
struct missing_suffix {
  value_index index;
  const char* text;
};
constexpr missing_suffix kMissingSuffixes[] = {
    {kGroup, ", Group"},
    {kUser, ", User"},
    {kDocumentRoot, ", DocumentRoot"},
    {kScriptDir, ", ScriptAlias"},
};

constexpr const char* kBlanks = " \t";

std::vector<std::string> fixed_candidates() {
  return {std::begin(kFixedCandidates), std::end(kFixedCandidates)};
}

std::vector<std::string> fixed_more_places() {
  return {std::begin(kMorePlaces), std::end(kMorePlaces)};
}

std::array<cached_value, kValueCount> cache;
std::vector<std::string> candidates = fixed_candidates();
std::vector<std::string> more_places = fixed_more_places();
std::string given_main;   // -httpd-conf; empty when not given
std::string bad_account;  // the name of the last bad-id failure of the line scan

// Names are checked against the account databases before they are cached;
// a path must be absolute and hold no ${NAME} left unexpanded.
bool usable(int index, const std::string& text) {
  if (index == kUser || index == kGroup) return true;
  return !text.empty() && text[0] == '/' && text.find("${") == std::string::npos;
}

bool requested_found(const value_buffers& outs) {
  for (int i = 0; i < kValueCount; ++i) {
    if (outs[i] != nullptr && !cache[i].found) return false;
  }
  return true;
}

bool requested_usable(const value_buffers& outs) {
  for (int i = 0; i < kValueCount; ++i) {
    if (outs[i] != nullptr && !(cache[i].found && usable(i, cache[i].text))) return false;
  }
  return true;
}

bool all_found() {
  for (const cached_value& value : cache) {
    if (!value.found) return false;
  }
  return true;
}

void copy_out(const value_buffers& outs) {
  for (int i = 0; i < kValueCount; ++i) {
    if (outs[i] != nullptr) str_copy(outs[i], cache[i].text.c_str(), kLineSize);
  }
}

void remember(value_index index, const std::string& text) {
  cache[index].text = text.substr(0, kLineMax);
  cache[index].found = true;
}

// A value beginning with a double quote loses its first and its last
// character, whatever that last character is.
std::string unquote(const std::string& token) {
  if (token.empty() || token[0] != '"') return token;
  if (token.size() < 2) return "";
  return token.substr(1, token.size() - 2);
}

// The first of paths that opens as a regular file, each probe logged;
// its path goes to *chosen.
unique_fd open_first(const std::vector<std::string>& paths, std::string* chosen) {
  for (const std::string& path : paths) {
    log_debug("Is Httpd conf?[%s]", path.c_str());
    unique_fd fd = httpd_conf_open(path.c_str(), true);
    if (fd) {
      log_debug("Httpd conf is [%s]", path.c_str());
      *chosen = path;
      return fd;
    }
  }
  return unique_fd();
}

// User and Group must name accounts the system knows. Returns 0 with the
// message in error_out for an unknown one.
int take_account(value_index index, const char* name, char* error_out) {
  bool is_user = index == kUser;
  int id = is_user ? file_user_id(name) : file_group_id(name);
  if (id < 0) {
    bad_account = name;
    str_format(error_out, kLineSize, "%s '%s' has bad uid '%d'", is_user ? "User" : "Group", name,
               id);
    return k_fail;
  }
  log_debug(is_user ? "Found user [%s]" : "Found group [%s]", name);
  remember(index, name);
  return k_ok;
}

// One configuration line. Returns 0 when the scan must stop on a bad id.
int scan_line(char* raw, char* error_out) {
  char* cont = nullptr;
  const char* directive = str_token(str_trim(raw), kBlanks, &cont);
  if (directive == nullptr || directive[0] == '#') return k_ok;
  const char* arg = str_token(nullptr, kBlanks, &cont);
  if (arg == nullptr) return k_ok;

  if (str_icmp(directive, "User") == 0) return take_account(kUser, arg, error_out);
  if (str_icmp(directive, "Group") == 0) return take_account(kGroup, arg, error_out);
  if (str_icmp(directive, "ScriptAlias") == 0) {
    if (str_str(arg, "cgi-bin") == nullptr) return k_ok;
    const char* dir = str_token(nullptr, kBlanks, &cont);
    if (dir != nullptr) remember(kScriptDir, unquote(dir));
  } else if (str_icmp(directive, "DocumentRoot") == 0) {
    remember(kDocumentRoot, unquote(arg));
  }
  return k_ok;
}

// Reads until the end, a failed read, a bad id (0), all four values known
// or kHttpdConfMaxBytes read.
int scan(FILE* stream, char* error_out) {
  char line[kLineSize];
  long bytes = 0;
  while (bytes < kHttpdConfMaxBytes && fgets(line, kLineSize, stream) != nullptr) {
    bytes += str_len(line);
    if (!scan_line(line, error_out)) return k_fail;
    if (all_found()) break;
  }
  return k_ok;
}

void report_missing(char* error_out) {
  if (error_out == nullptr) return;
  str_copy(error_out, "Could not find", kLineSize);
  for (const missing_suffix& suffix : kMissingSuffixes) {
    if (!cache[suffix.index].found) str_append(error_out, suffix.text, kLineSize);
  }
}

// The line scan of the first of the eight places that opens. Returns 1 when
// every requested value has its flag, else 0 with the message in error;
// *read_path names the file scanned ("" when none opened).
int read_by_letter(const value_buffers& outs, std::string* read_path, char* error) {
  bad_account.clear();
  unique_fd fd = open_first(candidates, read_path);
  unique_file conf(fd ? fdopen(fd.get(), "r") : nullptr);
  if (!conf) {
    str_copy(error, "Cannot find httpd.conf file", kLineSize);
    return k_fail;
  }
  fd.release();
  if (!scan(conf.get(), error)) return k_fail;
  if (requested_found(outs)) return k_ok;
  report_missing(error);
  return k_fail;
}

// Takes what the reading as the server does found, where the cache holds
// nothing usable: names the account databases know, usable paths. An
// unknown account that was asked for gives the bad-id message in error.
void take_server_values(const httpd_values& found, const value_buffers& outs, char* error,
                        bool* bad_id) {
  for (int i = 0; i < kValueCount; ++i) {
    const httpd_found_value& value = found[i];
    if (!value.found || (cache[i].found && usable(i, cache[i].text))) continue;
    if (i == kUser || i == kGroup) {
      int id = i == kUser ? file_user_id(value.text.c_str()) : file_group_id(value.text.c_str());
      if (id < 0) {
        if (outs[i] != nullptr && !*bad_id) {
          str_format(error, kLineSize, "%s '%s' has bad uid '%d'", i == kUser ? "User" : "Group",
                     value.text.c_str(), id);
          *bad_id = true;
        }
        continue;
      }
    }
    if (!usable(i, value.text)) continue;
    remember(static_cast<value_index>(i), value.text);
    log_info("%s [%s] found in %s", kValueNames[i], cache[i].text.c_str(), value.where.c_str());
  }
}

// Reads main as the server does. 1 when every requested value is then
// usable; 0 with the message in error, untouched when main does not open.
int read_as_server(const std::string& main, const value_buffers& outs, char* error) {
  httpd_values found;
  if (!httpd_server_conf_read(main.c_str(), &found)) {
    log_error("Cannot read httpd conf [%s]", main.c_str());
    return k_fail;
  }
  bool bad_id = false;
  take_server_values(found, outs, error, &bad_id);
  if (requested_usable(outs)) return k_ok;
  if (!bad_id) report_missing(error);
  return k_fail;
}

// The main file for the reading as the server does: the operator's, the
// one the line scan read, or the first of the more places that opens.
std::string main_file(const std::string& scanned) {
  if (!given_main.empty()) return given_main;
  if (!scanned.empty()) return scanned;
  std::string chosen;
  open_first(more_places, &chosen);
  return chosen;
}

int fail(char* error_out, const char* error) {
  str_copy(error_out, error, kLineSize);
  return k_fail;
}

int answer(const value_buffers& outs) {
  copy_out(outs);
  return k_ok;
}

}  // namespace

int httpd_conf_lookup(char* user_out, char* group_out, char* docroot_out, char* scriptdir_out,
                      char* error_out) {
  const value_buffers outs{user_out, group_out, docroot_out, scriptdir_out};
  if (requested_usable(outs)) return answer(outs);
  char error[kLineSize] = "Cannot find httpd.conf file";
  std::string scanned;
  int letter = k_fail;
  if (given_main.empty()) {
    letter = read_by_letter(outs, &scanned, error);
    if (letter && requested_usable(outs)) return answer(outs);
    // An unknown account named plainly is the truth; only ${NAME} is read on.
    if (!bad_account.empty() && bad_account.find("${") == std::string::npos) {
      return fail(error_out, error);
    }
  }
  std::string main = main_file(scanned);
  if (!main.empty() && read_as_server(main, outs, error)) return answer(outs);
  return letter ? answer(outs) : fail(error_out, error);
}

void httpd_conf_set_main(const char* path) { given_main = str_or_empty(path); }

void httpd_conf_set_more_places(const std::vector<std::string>* paths) {
  more_places = paths != nullptr ? *paths : fixed_more_places();
}

void httpd_conf_set_candidates(const std::vector<std::string>* paths) {
  candidates = paths != nullptr ? *paths : fixed_candidates();
}

void httpd_conf_reset_cache() { cache = {}; }
