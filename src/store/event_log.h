// The program's only trace: a ring of the most recent lines in memory and the file events.log, one stamped
// line for each state change. Any thread may log. A file that cannot be written loses its line silently.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "win32/format_text.h"

constexpr std::size_t kLogMessageCapacity = 512;  // with the terminating zero: a longer message is cut

// Puts "[hh:mm:ss.mmm] message" into the ring and, once the file is known, into events.log.
void AppendLogLine(const wchar_t* message);

// Called once, when the settings' folder is known: trims an events.log of more than 256 KiB to its last 64
// KiB, appends the session marker and then every line of the ring.
void OpenEventLogFile(const std::wstring& path);

// A copy of the ring, oldest line first.
std::vector<std::wstring> ReadLogRing();

// The last 40 lines at most of the last 16 KiB of events.log, in file order. None when there is no such file
// or it is empty. A line that the 16 KiB cut in two is left out.
std::vector<std::wstring> ReadLogTail();

// Formats and appends one line; call it as LogEvent("...", ...), with %ls for wide strings.
void LogFormatted(const wchar_t* format, ...);

#define LogEvent(format, ...)                                                   \
    (static_cast<void>(sizeof(CheckFormat(format __VA_OPT__(, ) __VA_ARGS__))), \
     LogFormatted(L"" format __VA_OPT__(, ) __VA_ARGS__))
