#include "script.h"

#include <cwchar>

#include "state.h"

namespace {

constexpr wchar_t kScriptPath[] = L"C:\\lab\\hardware.script";

std::wstring FromUtf8(const std::string& text) {
    const int length = static_cast<int>(text.size());
    const int size = MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0);
    std::wstring wide(static_cast<size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide.data(), size);
    return wide;
}

std::wstring Unescape(const std::wstring& text) {
    std::wstring plain;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != L'\\' || i + 1 == text.size()) {
            plain += text[i];
            continue;
        }
        const wchar_t letter = text[++i];
        plain += letter == L't' ? L'\t' : letter == L'n' ? L'\n' : letter == L'r' ? L'\r' : letter;
    }
    return plain;
}

std::string ReadFileText(const wchar_t* path) {
    std::string text;
    const HANDLE file =
        CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return text;
    }
    char buffer[16384];
    DWORD size = 0;
    while (ReadFile(file, buffer, sizeof(buffer), &size, nullptr) && size) {
        text.append(buffer, size);
    }
    CloseHandle(file);
    return text;
}

std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    size_t start = 0;
    for (size_t end = text.find(separator); end != std::string::npos; end = text.find(separator, start)) {
        parts.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    parts.push_back(text.substr(start));
    return parts;
}

Rows Parse(const std::string& text) {
    Rows rows;
    for (const std::string& line : Split(text, '\n')) {
        const std::vector<std::string> words = Split(line, '\t');
        Row row = {words.front(), {}};
        for (size_t i = 1; i < words.size(); ++i) {
            const size_t equals = words[i].find('=');
            if (equals != std::string::npos) {
                row.fields.emplace_back(words[i].substr(0, equals),
                                        Unescape(FromUtf8(words[i].substr(equals + 1))));
            }
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

}  // namespace

std::string ToUtf8(const std::wstring& text) {
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

std::wstring Escape(const std::wstring& text) {
    std::wstring escaped;
    for (const wchar_t letter : text) {
        switch (letter) {
            case L'\t': escaped += L"\\t"; break;
            case L'\n': escaped += L"\\n"; break;
            case L'\r': escaped += L"\\r"; break;
            case L'\\': escaped += L"\\\\"; break;
            default: escaped += letter;
        }
    }
    return escaped;
}

bool Row::Has(const char* field) const {
    for (const auto& [name, value] : fields) {
        if (name == field) {
            return true;
        }
    }
    return false;
}

std::wstring Row::Text(const char* field) const {
    for (const auto& [name, value] : fields) {
        if (name == field) {
            return value;
        }
    }
    return {};
}

LONG64 Row::Number(const char* field, LONG64 missing) const {
    return Has(field) ? std::wcstoll(Text(field).c_str(), nullptr, 0) : missing;
}

std::shared_ptr<const Rows> ReadScript() {
    static SRWLOCK lock = SRWLOCK_INIT;
    static std::shared_ptr<const Rows> script = std::make_shared<const Rows>();
    static LONG64 serial = 0;
    AcquireSRWLockExclusive(&lock);
    // Read before the file: if the script is replaced in between, the next call reads it again.
    const LONG64 newest = Count(Counter::kScriptSerial, 0);
    if (newest != serial) {
        script = std::make_shared<const Rows>(Parse(ReadFileText(kScriptPath)));
        serial = newest;
    }
    std::shared_ptr<const Rows> current = script;
    ReleaseSRWLockExclusive(&lock);
    return current;
}
