// The program's one formatter: printf into a wide buffer that is never overrun and always terminated.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <iterator>

// Writes at most capacity - 1 characters and a terminating zero; a longer text is cut. Wide strings are %ls.
// Writes nothing when capacity is 0. Call FormatText, which has the compiler check the arguments.
void FormatWide(wchar_t* buffer, std::size_t capacity, const wchar_t* format, ...);
void FormatWideArguments(wchar_t* buffer, std::size_t capacity, const wchar_t* format, va_list arguments);

// Never defined and never called: compilers check the arguments of a narrow format only.
#if defined(__MINGW32__) && defined(__clang__)
int CheckFormat(const char* format, ...) __attribute__((format(printf, 1, 2)));
#elif defined(__MINGW32__)
int CheckFormat(const char* format, ...) __attribute__((format(gnu_printf, 1, 2)));
#else
int CheckFormat(const char* format, ...);
#endif

// FormatTextInto(buffer, capacity, format, arguments...): format is a narrow literal.
#define FormatTextInto(buffer, capacity, format, ...)                           \
    (static_cast<void>(sizeof(CheckFormat(format __VA_OPT__(, ) __VA_ARGS__))), \
     FormatWide(buffer, capacity, L"" format __VA_OPT__(, ) __VA_ARGS__))

// FormatText(buffer, format, arguments...): the same into the whole of an array.
#define FormatText(buffer, format, ...) \
    FormatTextInto(buffer, std::size(buffer), format __VA_OPT__(, ) __VA_ARGS__)
