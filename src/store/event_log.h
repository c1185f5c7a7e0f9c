// The event log: a ring of the most recent lines in memory and the file events.log, with one time-stamped
// line per state change. Any thread may log. A line that cannot be written to the file is dropped silently.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "win32/format_text.h"

constexpr std::size_t kLogMessageCapacity = 512;  // terminating zero included; longer messages are truncated

// Appends "[hh:mm:ss.mmm] message" to the ring and, after OpenEventLogFile, to events.log. Control characters
// in the message become U+FFFD. Never ends the process, even without memory.
void AppendLogLine(const wchar_t* message);

// Like AppendLogLine, but writes only to events.log. For a crashing thread: tries the log's lock and
// continues without it, since this thread may hold it; the line is written in one call. Does not allocate.
void LogInCrash(const wchar_t* message);

// Called once, when the path of the settings folder is known: trims an events.log larger than 256 KiB to its
// last 64 KiB, then appends the session marker and every line of the ring.
void OpenEventLogFile(const std::wstring& path);

// A copy of the ring, oldest line first.
std::vector<std::wstring> ReadLogRing();

// At most 40 lines from the last 16 KiB of events.log, in file order; a partial first line is omitted. Empty
// when the file is missing, empty or unreadable.
std::vector<std::wstring> ReadLogTail();

// Formats and appends one line. Call it through LogEvent("...", ...), which checks the arguments at compile
// time; wide strings are %ls.
void LogFormatted(const wchar_t* format, ...);

#define LogEvent(format, ...)                                                   \
    (static_cast<void>(sizeof(CheckFormat(format __VA_OPT__(, ) __VA_ARGS__))), \
     LogFormatted(L"" format __VA_OPT__(, ) __VA_ARGS__))
