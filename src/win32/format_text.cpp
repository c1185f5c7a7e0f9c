#include "win32/format_text.h"

#include <cstdio>

void FormatWideArguments(wchar_t* buffer, std::size_t capacity, const wchar_t* format, va_list arguments) {
    if (capacity == 0) return;
#if defined(__MINGW32__)
    // msvcrt's _vsnwprintf does not terminate truncated text and does not support %zu.
    __mingw_vsnwprintf(buffer, capacity, format, arguments);
#else
    _vsnwprintf_s(buffer, capacity, _TRUNCATE, format, arguments);
#endif
    buffer[capacity - 1] = L'\0';
}

void FormatWide(wchar_t* buffer, std::size_t capacity, const wchar_t* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    FormatWideArguments(buffer, capacity, format, arguments);
    va_end(arguments);
}
