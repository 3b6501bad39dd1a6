#include "foundation/str_text.h"

#include <array>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

namespace {

// A-Z to a-z, every other byte to itself: folding must not depend on locale.
constexpr std::array<unsigned char, 256> make_fold_table() {
  std::array<unsigned char, 256> table{};
  for (int i = 0; i < 256; ++i) table[i] = static_cast<unsigned char>(i);
  for (int c = 'A'; c <= 'Z'; ++c) table[c] = static_cast<unsigned char>(c - 'A' + 'a');
  return table;
}
constexpr std::array<unsigned char, 256> kFold = make_fold_table();

int fold(char c) { return kFold[static_cast<unsigned char>(c)]; }

bool is_space(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }
bool is_digit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }

// Length of text, looking at most limit characters far.
int bounded_len(const char* text, int limit) {
  return limit > 0 ? static_cast<int>(strnlen(text, static_cast<size_t>(limit))) : 0;
}

// Appends src after the first len characters of dest while the length stays
// below limit; terminates and returns the new length.
int append_until(char* dest, int len, const char* src, int limit) {
  while (*src != '\0' && len < limit) dest[len++] = *src++;
  dest[len] = '\0';
  return len;
}

}  // namespace

// ---- copies and appends -------------------------------------------------

int str_copy(char* dest, const char* src, int size) {
  if (dest == nullptr || size < 1) return 0;
  if (src == nullptr) {
    dest[0] = '\0';
    return 0;
  }
  int len = bounded_len(src, size - 1);
  memmove(dest, src, static_cast<size_t>(len));  // src may be dest itself
  dest[len] = '\0';
  return len;
}

char* str_append(char* dest, const char* src, int size) {
  if (dest == nullptr || size < 1) return nullptr;
  if (src == nullptr) return dest;
  append_until(dest, bounded_len(dest, size - 1), src, size - 1);
  return dest;
}

int str_append_short(char* dest, const char* src, int size) {
  if (dest == nullptr || src == nullptr || size < 1) return 0;
  return append_until(dest, bounded_len(dest, size - 1), src, size - 2);
}

char* str_prepend(char* dest, const char* prefix, int size) {
  if (dest == nullptr || prefix == nullptr || size < 1) return nullptr;
  int len = bounded_len(dest, size);
  int plen = str_len(prefix);
  if (len + plen >= size) return nullptr;
  memmove(dest + plen, dest, static_cast<size_t>(len) + 1);
  memcpy(dest, prefix, static_cast<size_t>(plen));
  return dest;
}

char* str_append_heap(char* text, const char* src) {
  if (src == nullptr) return text;
  size_t len = text != nullptr ? strlen(text) : 0;
  size_t add = strlen(src);
  // src may lie inside text, which realloc is about to move.
  bool inside = text != nullptr && src >= text && src <= text + len;
  size_t offset = inside ? static_cast<size_t>(src - text) : 0;
  char* grown = static_cast<char*>(realloc(text, len + add + 1));
  if (grown == nullptr) return text;
  memmove(grown + len, inside ? grown + offset : src, add);
  grown[len + add] = '\0';
  return grown;
}

char* str_dup_n(const char* src, int n) {
  if (src == nullptr || n < 0) return nullptr;
  char* copy = static_cast<char*>(malloc(static_cast<size_t>(n) + 1));
  if (copy == nullptr) return nullptr;
  copy[0] = '\0';
  str_copy(copy, src, n);  // size n: at most n - 1 characters
  return copy;
}

int str_copy_until(const char* src, const char* delims, char* dest, int size) {
  if (src == nullptr || dest == nullptr || size < 1) return 0;
  const char* stops = str_or_empty(delims);
  int len = 0;
  while (src[len] != '\0' && len < size - 1 && strchr(stops, src[len]) == nullptr) {
    dest[len] = src[len];
    ++len;
  }
  dest[len] = '\0';
  return len;
}

char* str_replace_all(const char* text, const char* pattern, const char* replacement, char* out,
                      int size) {
  if (text == nullptr || pattern == nullptr || out == nullptr) return nullptr;
  size_t plen = strlen(pattern);
  const char* hit = plen > 0 ? strstr(text, pattern) : nullptr;
  if (hit == nullptr) {
    str_copy(out, text, size);
    return out;
  }
  // Built aside first, so out may be the text itself.
  std::string result;
  const char* rest = text;
  for (; hit != nullptr; hit = strstr(rest, pattern)) {
    result.append(rest, static_cast<size_t>(hit - rest));
    result.append(str_or_empty(replacement));
    rest = hit + plen;
  }
  result.append(rest);
  str_copy(out, result.c_str(), size);
  return out;
}

// ---- compares and searches ----------------------------------------------

char str_fold(char c) { return static_cast<char>(fold(c)); }

int str_icmp(const char* a, const char* b) {
  if (a == nullptr || b == nullptr) return -1;
  while (*a != '\0' && fold(*a) == fold(*b)) ++a, ++b;
  return fold(*a) - fold(*b);
}

int str_nicmp(const char* a, const char* b, int n) {
  if (a == nullptr || b == nullptr) return -1;
  for (int i = 0; i < n; ++i) {
    int diff = fold(a[i]) - fold(b[i]);
    if (diff != 0 || a[i] == '\0') return diff;
  }
  return 0;
}

int str_cmp(const char* a, const char* b) {
  if (a == nullptr || b == nullptr) return -1;
  return strcmp(a, b);
}

int str_ncmp(const char* a, const char* b, int n) {
  if (a == nullptr || b == nullptr) return -1;
  return n > 0 ? strncmp(a, b, static_cast<size_t>(n)) : 0;
}

const char* str_chr(const char* text, int c) {
  if (text == nullptr || static_cast<char>(c) == '\0') return nullptr;
  return strchr(text, c);
}

const char* str_str(const char* text, const char* pattern) {
  if (text == nullptr || pattern == nullptr) return nullptr;
  return strstr(text, pattern);
}

const char* str_istr(const char* text, const char* pattern) {
  if (text == nullptr || pattern == nullptr) return nullptr;
  int plen = str_len(pattern);
  for (const char* at = text;; ++at) {
    if (str_nicmp(at, pattern, plen) == 0) return at;
    if (*at == '\0') return nullptr;
  }
}

const char* str_irstr(const char* text, const char* pattern) {
  if (text == nullptr || pattern == nullptr) return nullptr;
  int plen = str_len(pattern);
  for (int at = str_len(text) - plen; at >= 0; --at) {
    if (str_nicmp(text + at, pattern, plen) == 0) return text + at;
  }
  return nullptr;
}

const char* str_skip_prefix(const char* text, const char* prefix) {
  if (text == nullptr || prefix == nullptr) return text;
  if (*text == '\0' || *text != *prefix) return text;
  while (*prefix != '\0' && *text == *prefix) ++text, ++prefix;
  return text;
}

// ---- in-place edits ---------------------------------------------------------

char* str_trim(char* text) {
  if (text == nullptr) return nullptr;
  while (is_space(*text)) ++text;
  size_t len = strlen(text);
  while (len > 0 && is_space(text[len - 1])) text[--len] = '\0';
  return text;
}

char* str_token(char* text, const char* delims, char** cont) {
  if (cont == nullptr) return nullptr;
  char* at = text != nullptr ? text : *cont;
  if (at == nullptr) return nullptr;
  const char* stops = str_or_empty(delims);
  at += strspn(at, stops);
  if (*at == '\0') {
    *cont = nullptr;
    return nullptr;
  }
  char* end = at + strcspn(at, stops);
  if (*end == '\0') {
    *cont = nullptr;
  } else {
    *end = '\0';
    *cont = end + 1;
  }
  return at;
}

char* str_lower(char* text) {
  if (text == nullptr) return nullptr;
  for (char* at = text; *at != '\0'; ++at) {
    *at = static_cast<char>(std::tolower(static_cast<unsigned char>(*at)));
  }
  return text;
}

char* str_upper(char* text) {
  if (text == nullptr) return nullptr;
  for (char* at = text; *at != '\0'; ++at) {
    *at = static_cast<char>(std::toupper(static_cast<unsigned char>(*at)));
  }
  return text;
}

char* str_replace_char(char* text, char from, char to) {
  if (text == nullptr) return nullptr;
  for (char* at = text; *at != '\0'; ++at) {
    if (*at == from) *at = to;
  }
  return text;
}

char* str_separators_to(char* text, char sep) {
  if (text == nullptr) return nullptr;
  for (char* at = text; *at != '\0'; ++at) {
    if (*at == '/' || *at == '\\') *at = sep;
  }
  return text;
}

// ---- small wrappers ---------------------------------------------------------

void str_free(char** text) {
  if (text == nullptr) return;
  free(*text);
  *text = nullptr;
}

int str_len(const char* text) {
  return text != nullptr ? static_cast<int>(strnlen(text, INT_MAX)) : 0;
}

int str_cspn(const char* text, const char* reject) {
  if (text == nullptr || reject == nullptr) return 0;
  return static_cast<int>(strcspn(text, reject));
}

// atoi without its undefined overflow: the value is clamped to int.
int str_atoi(const char* text) {
  long value = str_atol(text);
  if (value > INT_MAX) return INT_MAX;
  if (value < INT_MIN) return INT_MIN;
  return static_cast<int>(value);
}

// The conversions report nothing, so they leave errno as they found it.
long str_atol(const char* text) {
  if (text == nullptr) return 0;
  int saved = errno;
  long value = strtol(text, nullptr, 10);
  errno = saved;
  return value;
}

double str_atof(const char* text) {
  if (text == nullptr) return 0.0;
  int saved = errno;
  double value = strtod(text, nullptr);
  errno = saved;
  return value;
}

unsigned long str_strtoul(const char* text, char** end, int base) {
  if (text == nullptr) {
    if (end != nullptr) *end = nullptr;
    return 0;
  }
  return strtoul(text, end, base);
}

char* str_dup(const char* text) { return text != nullptr ? strdup(text) : nullptr; }

char* str_cpy(char* dest, const char* src) {
  if (dest == nullptr || src == nullptr) return dest;
  return strcpy(dest, src);
}

char* str_cat(char* dest, const char* src) {
  if (dest == nullptr || src == nullptr) return dest;
  return strcat(dest, src);
}

const char* str_or_empty(const char* text) { return text != nullptr ? text : ""; }

// ---- true and false words ---------------------------------------------------

namespace {
constexpr std::array<const char*, 6> kTrueWords = {"true", "yes", "y", "on", "checked", "selected"};
constexpr std::array<const char*, 4> kFalseWords = {"false", "no", "n", "off"};

template <size_t N>
bool is_one_of(const char* text, const std::array<const char*, N>& words) {
  for (const char* word : words) {
    if (str_icmp(text, word) == 0) return true;
  }
  return false;
}
}  // namespace

int str_is_true(const char* text) {
  if (text == nullptr) return 0;
  return is_one_of(text, kTrueWords) || str_atoi(text) != 0 ? 1 : 0;
}

int str_is_false(const char* text) {
  if (text == nullptr) return 0;
  if (is_one_of(text, kFalseWords)) return 1;
  bool digit_up_front = is_digit(text[0]) || (text[0] != '\0' && is_digit(text[1]));
  return digit_up_front && str_atoi(text) == 0 ? 1 : 0;
}

// ---- numbers, streams, system -------------------------------------------

char* str_group_thousands(char* text, int max_len) {
  if (text == nullptr || max_len < 0) return text;
  std::string number(text);
  size_t start = 0;
  while (start < number.size() && is_space(number[start])) ++start;
  if (start < number.size() && (number[start] == '-' || number[start] == '+')) ++start;
  size_t end = start;
  while (end < number.size() && is_digit(number[end])) ++end;
  for (size_t at = end; at > start + 3; at -= 3) number.insert(at - 3, 1, ',');
  str_copy(text, number.c_str(), max_len < INT_MAX ? max_len + 1 : INT_MAX);
  return text;
}

char* str_read_counted(FILE* stream) {
  if (stream == nullptr) return nullptr;
  int32_t count = 0;
  if (fread(&count, sizeof count, 1, stream) != 1 || count < 0) return nullptr;
  // Read in chunks so that a corrupt count fails at the end of the stream
  // instead of allocating whatever it claims.
  std::string text;
  char chunk[8192];
  for (size_t left = static_cast<size_t>(count); left > 0;) {
    size_t want = left < sizeof chunk ? left : sizeof chunk;
    if (fread(chunk, 1, want, stream) != want) return nullptr;
    text.append(chunk, want);
    left -= want;
  }
  char* copy = static_cast<char*>(malloc(text.size() + 1));
  if (copy == nullptr) return nullptr;
  memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  return copy;
}

int str_write_counted(FILE* stream, const char* text) {
  if (stream == nullptr || text == nullptr) return 0;
  size_t len = strlen(text);
  if (len > INT32_MAX) return 0;
  int32_t count = static_cast<int32_t>(len);
  if (fwrite(&count, sizeof count, 1, stream) != 1) return 0;
  return len == 0 || fwrite(text, 1, len, stream) == len ? 1 : 0;
}

const char* str_error_text(int err, char* buffer, int size) {
  if (buffer == nullptr) return "";
  str_copy(buffer, strerror(err), size < kLineSize ? size : kLineSize);
  return buffer;
}

const char* str_last_error(char* buffer, int size) { return str_error_text(errno, buffer, size); }

std::string str_error_suffix(int err) {
  if (err == 0) return "";
  return std::string(", ") + strerror(err);
}

std::string str_error_line(int err, const char* format, va_list args) {
  char message[kLineSize] = "";
  if (format != nullptr) vsnprintf(message, sizeof message, format, args);
  message[kLineMax] = '\0';  // a full buffer is left unterminated
  std::string line = std::string(message) + str_error_suffix(err);
  if (line.size() > static_cast<size_t>(kLineMax)) line.resize(kLineMax);
  return line;
}

void sleep_ms(long ms) {
  if (ms <= 0) return;
  timespec wait{};
  wait.tv_sec = static_cast<time_t>(ms / 1000);
  wait.tv_nsec = (ms % 1000) * 1000000L;
  while (nanosleep(&wait, &wait) != 0 && errno == EINTR) {
  }
}
