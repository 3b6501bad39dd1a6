#include "environment/httpd_conf.h"

#include <array>
#include <cstdio>

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

// Positions of the four values, in the order of the lookup's arguments.
enum value_index { kUser, kGroup, kDocumentRoot, kScriptDir, kValueCount };
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

std::array<cached_value, kValueCount> cache;
std::vector<std::string> candidates = fixed_candidates();

bool requested_found(const value_buffers& outs) {
  for (int i = 0; i < kValueCount; ++i) {
    if (outs[i] != nullptr && !cache[i].found) return false;
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

// Opens the first candidate that opens, logging each probe.
FILE* open_first_candidate() {
  for (const std::string& path : candidates) {
    log_debug("Is Httpd conf?[%s]", path.c_str());
    FILE* stream = file_open(path.c_str(), "r");
    if (stream != nullptr) {
      log_debug("Httpd conf is [%s]", path.c_str());
      return stream;
    }
  }
  return nullptr;
}

// User and Group must name accounts the system knows. Returns 0 with the
// message in error_out for an unknown one.
int take_account(value_index index, const char* name, char* error_out) {
  bool is_user = index == kUser;
  int id = is_user ? file_user_id(name) : file_group_id(name);
  if (id < 0) {
    str_format(error_out, kLineSize, "%s '%s' has bad uid '%d'", is_user ? "User" : "Group",
               name, id);
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

// Reads until the end, a failed read, a bad id (0) or all four values known.
int scan(FILE* stream, char* error_out) {
  char line[kLineSize];
  while (fgets(line, kLineSize, stream) != nullptr) {
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

}  // namespace

int httpd_conf_lookup(char* user_out, char* group_out, char* docroot_out,
                      char* scriptdir_out, char* error_out) {
  const value_buffers outs{user_out, group_out, docroot_out, scriptdir_out};
  if (!requested_found(outs)) {
    unique_file conf(open_first_candidate());
    if (!conf) {
      str_copy(error_out, "Cannot find httpd.conf file", kLineSize);
      return k_fail;
    }
    if (!scan(conf.get(), error_out)) return k_fail;
    conf.reset();
    if (!requested_found(outs)) {
      report_missing(error_out);
      return k_fail;
    }
  }
  copy_out(outs);
  return k_ok;
}

void httpd_conf_set_candidates(const std::vector<std::string>* paths) {
  candidates = paths != nullptr ? *paths : fixed_candidates();
}

void httpd_conf_reset_cache() { cache = {}; }
