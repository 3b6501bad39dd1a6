// The program's own bounded formatter. snprintf and vsnprintf are exported
// under the C library's names so that every call in the program, whatever
// module it sits in, reaches these:
//   - the result is the number of characters written, never the length the
//     whole output would have had; -1 means the output reached the buffer's
//     size (the buffer may then be left unterminated);
//   - a null "%s" argument prints "(NULL)", whatever its width;
//   - a null buffer or format gives 0 and writes nothing.
// str_format and str_format_append add the termination callers rely on.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>

extern "C" {
int vsnprintf(char* __restrict buffer, size_t size, const char* __restrict format,
              va_list args) noexcept;
int snprintf(char* __restrict buffer, size_t size, const char* __restrict format, ...) noexcept;
}

// vsnprintf, then, on -1 or a result equal to size, terminates at the last
// byte so the buffer always ends terminated. Returns vsnprintf's result.
int str_format(char* buffer, int size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
// Formats after the text already in buffer, into the space left (size - 1 -
// existing length). On -1 or a full result it terminates at the last byte of
// that space and returns that space minus one.
int str_format_append(char* buffer, int size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
