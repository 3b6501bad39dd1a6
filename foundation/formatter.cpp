// The bounded formatter. The format is walked here; each single conversion is
// rendered by the C library's sprintf into a temporary block large enough
// for it, then copied into the caller's buffer with the bounded copy.
#include "foundation/formatter.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <string>

#include "foundation/str_text.h"

namespace {

constexpr int kFlagsMax = 30;      // flag characters kept of one conversion
constexpr int kFieldMax = 100000;  // widest width or precision rendered
constexpr const char* kNullText = "(NULL)";

// One conversion as collected from the format.
struct conversion {
  std::string directive = "%";  // flags, width and precision with "*" resolved
  int width = 0;
  int precision = -1;  // -1: none given
  char length = 0;     // 0, 'h', 'H' (hh), 'l', 'q' (ll), 'L', 'j', 'z', 't'
  char letter = 0;
};

bool is_spec_char(char c) { return std::strchr("-+0 #.*", c) != nullptr || (c >= '0' && c <= '9'); }

std::string decimal(int value) {
  char digits[16];
  int n = 0;
  unsigned magnitude = value < 0 ? 0u - static_cast<unsigned>(value) : static_cast<unsigned>(value);
  do {
    digits[n++] = static_cast<char>('0' + magnitude % 10);
    magnitude /= 10;
  } while (magnitude != 0);
  std::string text = value < 0 ? "-" : "";
  while (n > 0) text += digits[--n];
  return text;
}

int add_digit(int field, char digit) { return std::min(field * 10 + (digit - '0'), kFieldMax); }

// Reads flags, width and precision ("*" takes the next integer argument, a
// negative width meaning "-", a negative precision none) and any length
// modifier; returns the position of the conversion letter. The directive
// handed to sprintf is rebuilt from what was read, so its numbers are the
// bounded ones the temporary block was sized for.
const char* collect_directive(const char* p, conversion& conv, va_list* args) {
  std::string flags;
  bool after_dot = false;
  for (; *p != '\0' && is_spec_char(*p); ++p) {
    char c = *p;
    if (c == '*') {
      int value = va_arg(*args, int);
      if (after_dot) {
        conv.precision = value < 0 ? -1 : std::min(value, kFieldMax);
      } else {
        if (value < 0) flags += '-';
        conv.width = value < 0 ? (value == INT_MIN ? kFieldMax : std::min(-value, kFieldMax))
                               : std::min(value, kFieldMax);
      }
    } else if (c == '.') {
      after_dot = true;
      conv.precision = 0;
    } else if (after_dot && c >= '0' && c <= '9') {
      conv.precision = add_digit(conv.precision, c);
    } else if (c >= '1' && c <= '9') {
      conv.width = add_digit(conv.width, c);
    } else if (c == '0' && conv.width > 0) {
      conv.width = add_digit(conv.width, c);
    } else if (static_cast<int>(flags.size()) < kFlagsMax) {
      flags += c;
    }
  }
  // Length modifiers are consumed so that the right argument type is read.
  for (; *p != '\0' && std::strchr("hlLqjzt", *p) != nullptr; ++p) {
    char m = *p;
    if (m == 'h' && conv.length == 'h') m = 'H';
    if (m == 'l' && conv.length == 'l') m = 'q';
    conv.length = m;
  }
  conv.directive = "%" + flags;
  if (conv.width > 0) conv.directive += decimal(conv.width);
  if (conv.precision >= 0) {
    conv.directive += '.';
    conv.directive += decimal(conv.precision);
  }
  conv.letter = *p;
  return p;
}

std::string render_integer(const conversion& conv, va_list* args) {
  std::string directive = conv.directive;
  std::string modifier;
  long long value = 0;
  bool is_unsigned = std::strchr("ouxX", conv.letter) != nullptr;
  switch (conv.length) {
    case 'l':
      value =
          is_unsigned ? static_cast<long long>(va_arg(*args, unsigned long)) : va_arg(*args, long);
      break;
    case 'q': value = va_arg(*args, long long); break;
    case 'j': value = va_arg(*args, intmax_t); break;
    case 'z': value = static_cast<long long>(va_arg(*args, size_t)); break;
    case 't': value = va_arg(*args, ptrdiff_t); break;
    default:
      value = is_unsigned ? static_cast<long long>(va_arg(*args, unsigned)) : va_arg(*args, int);
      if (conv.length == 'h')
        value = is_unsigned ? static_cast<unsigned short>(value) : static_cast<short>(value);
      if (conv.length == 'H')
        value = is_unsigned ? static_cast<unsigned char>(value) : static_cast<signed char>(value);
      break;
  }
  char letter = conv.letter == 'C' ? 'c' : conv.letter;
  bool wide = conv.length != 0 && conv.length != 'h' && conv.length != 'H' && letter != 'c';
  directive += wide ? "ll" : "";
  directive += letter;
  std::string block(static_cast<size_t>(std::max({conv.width, conv.precision, 24})) + 2, '\0');
  int written = wide ? sprintf(block.data(), directive.c_str(), value)
                     : sprintf(block.data(), directive.c_str(), static_cast<int>(value));
  block.resize(written < 0 ? 0 : static_cast<size_t>(written));
  return block;
}

std::string render_double(const conversion& conv, va_list* args) {
  std::string directive = conv.directive;
  size_t room = static_cast<size_t>(std::max(conv.width, 0) + std::max(conv.precision, 0)) + 330;
  if (conv.length == 'L') {
    long double value = va_arg(*args, long double);
    directive += 'L';
    directive += conv.letter;
    room += 4640;  // the widest long double written out in full
    std::string block(room, '\0');
    int written = sprintf(block.data(), directive.c_str(), value);
    block.resize(written < 0 ? 0 : static_cast<size_t>(written));
    return block;
  }
  double value = va_arg(*args, double);
  directive += conv.letter;
  std::string block(room, '\0');
  int written = sprintf(block.data(), directive.c_str(), value);
  block.resize(written < 0 ? 0 : static_cast<size_t>(written));
  return block;
}

std::string render_text(const conversion& conv, va_list* args) {
  const char* text = va_arg(*args, const char*);
  if (text == nullptr) return kNullText;
  size_t length =
      conv.precision >= 0 ? strnlen(text, static_cast<size_t>(conv.precision)) : std::strlen(text);
  std::string block(std::max(length, static_cast<size_t>(conv.width)) + 1, '\0');
  int written = sprintf(block.data(), (conv.directive + 's').c_str(), text);
  block.resize(written < 0 ? 0 : static_cast<size_t>(written));
  return block;
}

std::string render_pointer(const conversion& conv, va_list* args) {
  void* pointer = va_arg(*args, void*);
  std::string block(static_cast<size_t>(std::max(conv.width, 0)) + 32, '\0');
  int written = sprintf(block.data(), (conv.directive + 'p').c_str(), pointer);
  block.resize(written < 0 ? 0 : static_cast<size_t>(written));
  return block;
}

// Renders one conversion; letters outside the known groups store the length
// written so far through the next argument, as "%n" does.
std::string render(const conversion& conv, va_list* args, size_t length_so_far) {
  char letter = conv.letter;
  if (std::strchr("diouxXcC", letter) != nullptr) return render_integer(conv, args);
  if (std::strchr("eEfFgGaA", letter) != nullptr) return render_double(conv, args);
  if (letter == 's' || letter == 'S') return render_text(conv, args);
  if (letter == 'p') return render_pointer(conv, args);
  int* target = va_arg(*args, int*);
  if (target != nullptr) *target = static_cast<int>(length_so_far);
  return {};
}

}  // namespace

extern "C" int vsnprintf(char* __restrict buffer, size_t size, const char* __restrict format,
                         va_list args) noexcept {
  if (buffer == nullptr || format == nullptr) return 0;
  if (size == 0) return -1;
  va_list ap;
  va_copy(ap, args);
  size_t length = 0;
  const char* p = format;
  while (*p != '\0') {
    if (*p != '%') {
      buffer[length++] = *p++;
    } else if (p[1] == '%') {
      buffer[length++] = '%';
      p += 2;
    } else {
      conversion conv;
      p = collect_directive(p + 1, conv, &ap);
      if (*p == '\0') break;  // a lone "%" at the end prints nothing
      ++p;
      std::string text = render(conv, &ap, length);
      length +=
          static_cast<size_t>(str_copy(buffer + length, text.c_str(),
                                       static_cast<int>(std::min<size_t>(size - length, INT_MAX))));
    }
    if (*p != '\0' && length >= size) {
      va_end(ap);
      return -1;
    }
  }
  va_end(ap);
  if (length >= size) return -1;
  buffer[length] = '\0';
  return static_cast<int>(length);
}

extern "C" int snprintf(char* __restrict buffer, size_t size, const char* __restrict format,
                        ...) noexcept {
  if (buffer == nullptr || format == nullptr) return 0;
  va_list args;
  va_start(args, format);
  int result = vsnprintf(buffer, size, format, args);
  va_end(args);
  return result;
}

int str_format(char* buffer, int size, const char* format, ...) {
  if (buffer == nullptr || format == nullptr || size < 1) return 0;
  va_list args;
  va_start(args, format);
  int result = vsnprintf(buffer, static_cast<size_t>(size), format, args);
  va_end(args);
  if (result == -1 || result == size) buffer[size - 1] = '\0';
  return result;
}

int str_format_append(char* buffer, int size, const char* format, ...) {
  if (buffer == nullptr || format == nullptr || size < 1) return 0;
  int used = static_cast<int>(strnlen(buffer, static_cast<size_t>(size)));
  int space = size - 1 - used;
  if (space < 1) return 0;
  va_list args;
  va_start(args, format);
  int result = vsnprintf(buffer + used, static_cast<size_t>(space), format, args);
  va_end(args);
  if (result == -1 || result == space) {
    buffer[used + space - 1] = '\0';
    return space - 1;
  }
  return result;
}
