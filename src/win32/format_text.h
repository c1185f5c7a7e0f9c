// The program's only formatter: printf into a bounded wide buffer, always zero-terminated.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <iterator>

// Writes at most capacity - 1 characters and a terminating zero; longer text is truncated. Writes nothing
// when capacity is 0. Wide strings are %ls. Call FormatText instead: it checks the arguments.
void FormatWide(wchar_t* buffer, std::size_t capacity, const wchar_t* format, ...);
void FormatWideArguments(wchar_t* buffer, std::size_t capacity, const wchar_t* format, va_list arguments);

// Declared for the compiler's format check, which covers narrow formats only; never defined or called.
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

// FormatText(buffer, format, arguments...): FormatTextInto with the capacity of the array `buffer`.
#define FormatText(buffer, format, ...) \
    FormatTextInto(buffer, std::size(buffer), format __VA_OPT__(, ) __VA_ARGS__)
