// The event log: a message is one line regardless of its contents, and the end of a file of any content is
// read as at most 40 lines without control characters.
#include <algorithm>
#include <fstream>
#include <iterator>

#include "app/state/app_state.h"
#include "shim/shim.h"
#include "store/event_log.h"
#include "store/log_file.h"
#include "target.h"

namespace {

constexpr wchar_t kPath[] = L"C:\\events.log";
constexpr std::size_t kTailBytes = 16384;
constexpr std::size_t kTrimmedBytes = 65536;
constexpr std::size_t kTrimLimit = 262144;
constexpr std::size_t kStampLength = 15;  // "[09:05:07.042] "

std::string Content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void Write(const std::string& bytes) {
    std::ofstream(FilePath(kPath), std::ios::binary) << bytes;
}

std::wstring WithoutControls(std::wstring text) {
    std::replace_if(text.begin(), text.end(), IsControl, L'\xFFFD');
    return text;
}

// The lines in the last 16 KiB of the file, without a partial first one, as they are stored.
std::vector<std::string> LinesInTail(const std::string& content) {
    std::size_t start = content.size() > kTailBytes ? content.size() - kTailBytes : 0;
    while (start != 0 && start < content.size() && content[start - 1] != '\n')
        ++start;
    std::vector<std::string> lines;
    for (std::string line; start < content.size(); ++start) {
        const bool ends = content[start] == '\n';
        if (!ends) line += content[start];
        if (!ends && start + 1 < content.size()) continue;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        lines.push_back(line);
        line.clear();
    }
    if (lines.size() > 40) lines.erase(lines.begin(), lines.end() - 40);
    return lines;
}

bool IsAscii(const std::string& text) {
    return std::all_of(text.begin(), text.end(),
                       [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

}  // namespace

void FuzzLogMessage(Input input) {
    Write("");
    SetLogFile(kPath);
    const std::wstring message = input.Text();
    LogEvent("%ls", message.c_str());

    const std::wstring shown = message.substr(0, message.find(L'\0')).substr(0, kLogMessageCapacity - 1);
    const std::wstring line = ReadLogRing().back();
    CHECK(!HasControl(line));
    CHECK(line.size() > kStampLength - 1 && line.substr(kStampLength) == WithoutControls(shown));
    const std::string bytes = Content(FilePath(kPath));
    CHECK(bytes.size() >= 2 && bytes.find('\n') == bytes.size() - 1 && bytes[bytes.size() - 2] == '\r');
    const std::vector<std::wstring> tail = ReadLogTail();
    CHECK(tail.size() == 1 && tail[0].size() >= line.size() && !HasControl(tail[0]));
    // Half of a surrogate pair cannot be stored.
    const bool hasSurrogates =
        std::any_of(line.begin(), line.end(), [](wchar_t unit) { return unit >= 0xD800 && unit < 0xE000; });
    CHECK(hasSurrogates || tail[0] == line);
}

void FuzzLogTail(Input input) {
    // Large enough for a trim only now and then: most of the work is on files of a few tails.
    const std::size_t repeats = input.Byte();
    const std::size_t limit = input.Byte() == 0xFF ? kTrimLimit + kTailBytes : 3 * kTailBytes;
    const std::string piece = input.Bytes();
    std::string content;
    for (std::size_t i = 0; i <= repeats * repeats && content.size() < limit; ++i)
        content += piece;
    Write(content);

    SetLogFile(kPath);
    const std::vector<std::wstring> lines = ReadLogTail();
    const std::vector<std::string> expected = LinesInTail(content);
    CHECK(lines.size() == expected.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        CHECK(!HasControl(lines[i]) && lines[i].size() <= kTailBytes);
        const std::wstring widened(expected[i].begin(), expected[i].end());
        CHECK(!IsAscii(expected[i]) || lines[i] == WithoutControls(widened));
    }

    TrimLogFile();
    const bool trimmed = content.size() > kTrimLimit;
    CHECK(Content(FilePath(kPath)) == (trimmed ? content.substr(content.size() - kTrimmedBytes) : content));
    CHECK(Content(FilePath(L"C:\\events.log.new")).empty());
}
