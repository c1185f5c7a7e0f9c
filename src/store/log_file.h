// The file events.log. It is opened and closed for every line, so that no line is lost when the process is
// killed and other programs can open it between two lines. A failure leaves the file as it is and loses the
// line. Any thread; callers hold the event log's lock, except for AppendToLogFileInCrash.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

constexpr std::size_t kLogLineCapacity = 528;  // terminating zero included; a longer line is lost

// Sets the path that the functions below use; empty, the default, disables the file. Deletes the temporary
// file of an interrupted trim.
void SetLogFile(const std::wstring& path);

// Appends a line and CR LF. Trims the file first if it has passed 4 MiB; if that fails, the line is lost, so
// the file never grows beyond 4 MiB and one line.
void AppendToLogFile(std::wstring_view line);

// Appends a line and CR LF through the Win32 API only; neither the program nor the C runtime allocates.
void AppendToLogFileInCrash(std::wstring_view line);

// Trims a file of more than 256 KiB to its last 64 KiB: to a byte count, so the first line may be partial.
// The bytes are written to a temporary file, which then replaces it atomically: killed at any moment, the
// process leaves either the old file or the new one.
void TrimLogFile();

// The last 16 KiB of the file, without a partial first line. Empty when the file cannot be read.
std::string ReadLogFileTail();
