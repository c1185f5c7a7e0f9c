#include <cstdarg>
#include <cstdio>
#include <cwchar>

#include "tool.h"

std::string ToUtf8(const std::wstring& text) {
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

std::wstring FromUtf8(const std::string& text) {
    const int length = static_cast<int>(text.size());
    const int size = MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0);
    std::wstring wide(static_cast<size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide.data(), size);
    return wide;
}

void PrintText(const std::wstring& text) {
    const std::string bytes = ToUtf8(text);
    std::fwrite(bytes.data(), 1, bytes.size(), stdout);
}

void Print(const wchar_t* format, ...) {
    static wchar_t buffer[65536];
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vswprintf(buffer, std::size(buffer), format, arguments);
    va_end(arguments);
    if (length > 0) {
        PrintText(std::wstring(buffer, static_cast<size_t>(length)));
    }
}

void FlushOutput() {
    std::fflush(stdout);
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

long long Number(const std::wstring& text) {
    const bool hexadecimal = text.find(L"0x") != std::wstring::npos || text.find(L"0X") != std::wstring::npos;
    return hexadecimal ? static_cast<long long>(std::wcstoull(text.c_str(), nullptr, 16))
                       : std::wcstoll(text.c_str(), nullptr, 10);
}
