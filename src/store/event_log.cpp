#include "store/event_log.h"

#include <algorithm>
#include <cstdarg>
#include <cwchar>
#include <new>
#include <utility>

#include "store/log_file.h"
#include "win32/control_characters.h"
#include "win32/guards.h"

namespace {

constexpr std::size_t kRingLines = 500;
constexpr std::size_t kTailLines = 40;
constexpr wchar_t kSessionMarker[] = L"---------- session start ----------";

// Protects the variables below and every access to the file.
SRWLOCK g_lock = SRWLOCK_INIT;

// Lines that live until they are replaced. A line that found no memory is null.
wchar_t* g_ring[kRingLines];
std::size_t g_ringNext = 0;   // the index of the next line
std::size_t g_ringCount = 0;  // lines logged, at most kRingLines

static_assert(kLogLineCapacity >= kLogMessageCapacity + 16, "a message and its time stamp");

struct LogLine {
    wchar_t text[kLogLineCapacity];
    std::size_t length;
};

// "[hh:mm:ss.mmm] message"
void FormatLine(const wchar_t* message, LogLine* line) {
    SYSTEMTIME now = {};
    GetLocalTime(&now);
    FormatText(line->text, "[%02u:%02u:%02u.%03u] %ls", now.wHour, now.wMinute, now.wSecond,
               now.wMilliseconds, message);
    line->length = std::wcslen(line->text);
    ReplaceControlCharacters(line->text, line->length);
}

// Does not end the process when memory runs out: the line is then in the file only.
void AddToRing(const LogLine& line) {
    delete[] g_ring[g_ringNext];
    g_ring[g_ringNext] = new (std::nothrow) wchar_t[line.length + 1];
    if (g_ring[g_ringNext] != nullptr) std::copy_n(line.text, line.length + 1, g_ring[g_ringNext]);
    g_ringNext = (g_ringNext + 1) % kRingLines;
    g_ringCount = std::min(g_ringCount + 1, kRingLines);
}

// Calls `use` for each line, oldest first.
template <typename Use>
void ForEachRingLine(Use use) {
    for (std::size_t i = 0; i < g_ringCount; ++i) {
        const wchar_t* line = g_ring[(g_ringNext + kRingLines - g_ringCount + i) % kRingLines];
        if (line != nullptr) use(line);
    }
}

// A text has at most as many UTF-16 units as bytes in UTF-8.
std::wstring FromUtf8(const std::string& bytes) {
    const int size = static_cast<int>(bytes.size());
    std::wstring text(bytes.size(), L'\0');
    text.resize(
        static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, text.data(), size)));
    return text;
}

// Splits at LF or CR LF.
std::vector<std::wstring> SplitLines(const std::wstring& text) {
    std::vector<std::wstring> lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find(L'\n', start), text.size());
        std::wstring line = text.substr(start, end - start);
        if (!line.empty() && line.back() == L'\r') line.pop_back();
        // Another program may have written the line, and a power failure can leave zero bytes in the file:
        // clipboard text ends at the first one.
        ReplaceControlCharacters(line.data(), line.size());
        lines.push_back(std::move(line));
        start = end + 1;
    }
    return lines;
}

}  // namespace

void AppendLogLine(const wchar_t* message) {
    const ExclusiveLock lock(&g_lock);
    LogLine line;
    FormatLine(message, &line);
    AddToRing(line);
    AppendToLogFile({line.text, line.length});
}

void LogInCrash(const wchar_t* message) {
    const bool locked = TryAcquireSRWLockExclusive(&g_lock) != FALSE;
    LogLine line;
    FormatLine(message, &line);
    AppendToLogFileInCrash({line.text, line.length});
    if (locked) ReleaseSRWLockExclusive(&g_lock);
}

void OpenEventLogFile(const std::wstring& path) {
    const ExclusiveLock lock(&g_lock);
    SetLogFile(path);
    TrimLogFile();
    AppendToLogFile(kSessionMarker);
    ForEachRingLine([](const wchar_t* line) { AppendToLogFile(line); });
}

std::vector<std::wstring> ReadLogRing() {
    const ExclusiveLock lock(&g_lock);
    std::vector<std::wstring> lines;
    ForEachRingLine([&lines](const wchar_t* line) { lines.emplace_back(line); });
    return lines;
}

std::vector<std::wstring> ReadLogTail() {
    const ExclusiveLock lock(&g_lock);
    std::vector<std::wstring> lines = SplitLines(FromUtf8(ReadLogFileTail()));
    if (lines.size() > kTailLines) lines.erase(lines.begin(), lines.end() - kTailLines);
    return lines;
}

void LogFormatted(const wchar_t* format, ...) {
    wchar_t message[kLogMessageCapacity];
    va_list arguments;
    va_start(arguments, format);
    FormatWideArguments(message, kLogMessageCapacity, format, arguments);
    va_end(arguments);
    AppendLogLine(message);
}
