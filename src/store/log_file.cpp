#include "store/log_file.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <new>

#include "win32/platform.h"

#include <io.h>

namespace {

constexpr long long kMaxBytesAtStart = 262144;
constexpr long long kMaxBytes = 4LL * 1024 * 1024;
constexpr long long kTrimmedBytes = 65536;
constexpr long long kTailBytes = 16384;
constexpr wchar_t kTemporarySuffix[] = L".new";

// A UTF-16 code unit becomes at most three bytes of UTF-8.
constexpr std::size_t kLineBytes = kLogLineCapacity * std::size_t{3};

std::wstring g_path;
std::wstring g_temporaryPath;  // the file that a trim writes

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

File Open(const std::wstring& path, const wchar_t* mode) {
    std::FILE* file = nullptr;
    if (path.empty() || _wfopen_s(&file, path.c_str(), mode) != 0) return nullptr;
    return File(file);
}

// -1 on failure. Leaves the position at the end.
long long SizeOf(std::FILE* file) {
    return _fseeki64(file, 0, SEEK_END) == 0 ? _ftelli64(file) : -1;
}

// The last kTrimmedBytes of a file of more than `limit` bytes; null for a smaller one and on failure.
std::unique_ptr<char[]> ReadEndOfLargeFile(long long limit) {
    const File file = Open(g_path, L"rb");
    if (file == nullptr) return nullptr;
    const long long size = SizeOf(file.get());
    if (size <= limit || _fseeki64(file.get(), size - kTrimmedBytes, SEEK_SET) != 0) return nullptr;
    std::unique_ptr<char[]> end(new (std::nothrow) char[kTrimmedBytes]);
    if (end != nullptr && std::fread(end.get(), 1, kTrimmedBytes, file.get()) != kTrimmedBytes) end.reset();
    return end;
}

// Writes the file beside the log. The bytes are on the disk before the name is: a power failure must not
// leave the name with bytes that were never written.
bool WriteTemporaryFile(const char* bytes) {
    File file = Open(g_temporaryPath, L"wb");
    if (file == nullptr) return false;
    const bool written = std::fwrite(bytes, 1, kTrimmedBytes, file.get()) == kTrimmedBytes &&
                         std::fflush(file.get()) == 0 && _commit(_fileno(file.get())) == 0;
    return std::fclose(file.release()) == 0 && written;
}

bool TrimFileBeyond(long long limit) {
    const std::unique_ptr<char[]> end = ReadEndOfLargeFile(limit);
    if (end == nullptr) return false;
    if (WriteTemporaryFile(end.get()) &&
        MoveFileExW(g_temporaryPath.c_str(), g_path.c_str(), MOVEFILE_REPLACE_EXISTING) != FALSE) {
        return true;
    }
    DeleteFileW(g_temporaryPath.c_str());
    return false;
}

// A line as it is in the file, with CR LF. Nothing for an empty line.
struct LineBytes {
    char bytes[kLineBytes + 2];
    std::size_t length = 0;

    explicit LineBytes(std::wstring_view line) {
        const int converted = WideCharToMultiByte(CP_UTF8, 0, line.data(), static_cast<int>(line.size()),
                                                  bytes, static_cast<int>(kLineBytes), nullptr, nullptr);
        if (converted <= 0) return;
        length = static_cast<std::size_t>(converted);
        bytes[length++] = '\r';
        bytes[length++] = '\n';
    }
};

// Null when the file cannot be opened or has passed kMaxBytes and cannot be trimmed.
File OpenForAppending() {
    File file = Open(g_path, L"ab");
    if (file == nullptr || SizeOf(file.get()) <= kMaxBytes) return file;
    file.reset();
    return TrimFileBeyond(kMaxBytes) ? Open(g_path, L"ab") : nullptr;
}

}  // namespace

void SetLogFile(const std::wstring& path) {
    g_path = path;
    g_temporaryPath = path.empty() ? std::wstring() : path + kTemporarySuffix;
    if (!path.empty()) DeleteFileW(g_temporaryPath.c_str());
}

void AppendToLogFile(std::wstring_view line) {
    const LineBytes converted(line);
    if (converted.length == 0) return;
    const File file = OpenForAppending();
    if (file != nullptr) std::fwrite(converted.bytes, 1, converted.length, file.get());
}

void AppendToLogFileInCrash(std::wstring_view line) {
    const LineBytes converted(line);
    if (g_path.empty() || converted.length == 0) return;
    HANDLE file = CreateFileW(g_path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return;
    DWORD written = 0;
    WriteFile(file, converted.bytes, static_cast<DWORD>(converted.length), &written, nullptr);
    CloseHandle(file);
}

void TrimLogFile() {
    TrimFileBeyond(kMaxBytesAtStart);
}

std::string ReadLogFileTail() {
    const File file = Open(g_path, L"rb");
    if (file == nullptr) return {};
    const long long size = SizeOf(file.get());
    // One byte more than the tail: if that ends a line, the tail starts with a complete one.
    const long long start = std::max(size - kTailBytes - 1, 0LL);
    if (size <= 0 || _fseeki64(file.get(), start, SEEK_SET) != 0) return {};

    std::string bytes(static_cast<std::size_t>(size - start), '\0');
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
    if (size <= kTailBytes) return bytes;
    const std::size_t firstEnd = bytes.find('\n');
    return firstEnd == std::string::npos ? std::string() : bytes.substr(firstEnd + 1);
}
