// Functions of Microsoft's C runtime that the fuzzed sources call. Included before every source.
#pragma once

#include <cstdarg>
#include <cstdio>

constexpr std::size_t _TRUNCATE = static_cast<std::size_t>(-1);
int _vsnwprintf_s(wchar_t* buffer, std::size_t capacity, std::size_t count, const wchar_t* format,
                  va_list arguments);
int _wcsicmp(const wchar_t* one, const wchar_t* other);
int _wfopen_s(std::FILE** file, const wchar_t* path, const wchar_t* mode);
#define _fseeki64 fseeko
#define _ftelli64 ftello
