#include "store/event_log.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <deque>
#include <memory>
#include <new>
#include <utility>

#include "win32/guards.h"

namespace {

constexpr std::size_t kRingLines = 500;
constexpr long long kMaxFileBytes = 262144;
constexpr long long kTrimmedFileBytes = 65536;
constexpr long long kTailBytes = 16384;
constexpr std::size_t kTailLines = 40;
constexpr wchar_t kSessionMarker[] = L"---------- session start ----------";

// Protects the variables below and every access to the file.
SRWLOCK g_lock = SRWLOCK_INIT;
std::deque<std::wstring> g_ring;
std::wstring g_path;  // empty until OpenEventLogFile

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

File OpenLog(const wchar_t* mode) {
    std::FILE* file = nullptr;
    if (_wfopen_s(&file, g_path.c_str(), mode) != 0) return nullptr;
    return File(file);
}

std::string ToUtf8(const std::wstring& text) {
    const int length = WideCharToMultiByte(CP_UTF8, 0, text.c_str(), -1, nullptr, 0, nullptr, nullptr);
    if (length <= 1) return {};
    std::string bytes(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.c_str(), -1, bytes.data(), length, nullptr, nullptr);
    bytes.pop_back();
    return bytes;
}

std::wstring FromUtf8(const std::string& bytes) {
    const int size = static_cast<int>(bytes.size());
    const int length = MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, nullptr, 0);
    std::wstring text(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, text.data(), length);
    return text;
}

// Splits at LF or CR LF.
std::vector<std::wstring> SplitLines(const std::wstring& text) {
    std::vector<std::wstring> lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find(L'\n', start), text.size());
        std::wstring line = text.substr(start, end - start);
        if (!line.empty() && line.back() == L'\r') line.pop_back();
        lines.push_back(std::move(line));
        start = end + 1;
    }
    return lines;
}

// Whether a line starts at that byte offset of the file.
bool IsLineStart(std::FILE* file, long long offset) {
    return offset == 0 || (_fseeki64(file, offset - 1, SEEK_SET) == 0 && std::fgetc(file) == '\n');
}

// The last kTailBytes of the file, without a partial first line. Empty when the file cannot be read.
std::string ReadTailBytes() {
    const File file = g_path.empty() ? nullptr : OpenLog(L"rb");
    if (file == nullptr || _fseeki64(file.get(), 0, SEEK_END) != 0) return {};
    const long long size = _ftelli64(file.get());
    const long long start = std::max(size - kTailBytes, 0LL);
    const bool startsAtLine = IsLineStart(file.get(), start);
    if (size <= 0 || _fseeki64(file.get(), start, SEEK_SET) != 0) return {};

    std::string bytes(static_cast<std::size_t>(size - start), '\0');
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
    if (startsAtLine) return bytes;
    const std::size_t firstEnd = bytes.find('\n');
    return firstEnd == std::string::npos ? std::string() : bytes.substr(firstEnd + 1);
}

// The caller holds the lock. The file is opened and closed for every line, so that no line is lost when the
// process is killed and other programs can open the file between two lines.
void WriteLogFileLine(const std::wstring& line) {
    if (g_path.empty()) return;
    const File file = OpenLog(L"ab");
    if (file == nullptr) return;
    const std::string bytes = ToUtf8(line);
    if (bytes.empty()) return;
    std::fwrite(bytes.data(), 1, bytes.size(), file.get());
    std::fwrite("\r\n", 1, 2, file.get());
}

// Trims to a byte count, not to a line boundary: the first remaining line may be partial.
void TrimLogFile() {
    File file = OpenLog(L"rb");
    if (file == nullptr || _fseeki64(file.get(), 0, SEEK_END) != 0) return;
    const long long size = _ftelli64(file.get());
    if (size <= kMaxFileBytes || _fseeki64(file.get(), size - kTrimmedFileBytes, SEEK_SET) != 0) return;

    const std::unique_ptr<char[]> tail(new (std::nothrow) char[kTrimmedFileBytes]);
    if (tail == nullptr) return;
    // On a short read the file is left untouched.
    if (std::fread(tail.get(), 1, kTrimmedFileBytes, file.get()) != kTrimmedFileBytes) return;
    file.reset();

    file = OpenLog(L"wb");
    if (file != nullptr) std::fwrite(tail.get(), 1, kTrimmedFileBytes, file.get());
}

}  // namespace

void AppendLogLine(const wchar_t* message) {
    const ExclusiveLock lock(&g_lock);
    if (g_ring.size() >= kRingLines) g_ring.pop_front();

    SYSTEMTIME now = {};
    GetLocalTime(&now);
    wchar_t stamp[32];
    FormatText(stamp, "[%02u:%02u:%02u.%03u] ", now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);

    g_ring.push_back(stamp);
    g_ring.back() += message;
    WriteLogFileLine(g_ring.back());
}

void OpenEventLogFile(const std::wstring& path) {
    const ExclusiveLock lock(&g_lock);
    g_path = path;
    TrimLogFile();
    WriteLogFileLine(kSessionMarker);
    for (const std::wstring& line : g_ring)
        WriteLogFileLine(line);
}

std::vector<std::wstring> ReadLogRing() {
    const ExclusiveLock lock(&g_lock);
    return {g_ring.begin(), g_ring.end()};
}

std::vector<std::wstring> ReadLogTail() {
    const ExclusiveLock lock(&g_lock);
    std::wstring text = FromUtf8(ReadTailBytes());
    // A power failure can leave zero bytes in the file, and clipboard text ends at the first one.
    std::replace(text.begin(), text.end(), L'\0', L'\xFFFD');
    std::vector<std::wstring> lines = SplitLines(text);
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
