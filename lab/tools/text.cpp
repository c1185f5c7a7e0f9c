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

void PrintBytes(const std::string& bytes) {
    std::fwrite(bytes.data(), 1, bytes.size(), stdout);
}

void PrintReady() {
    PrintBytes("ready\n");
    FlushOutput();
}

void FlushOutput() {
    std::fflush(stdout);
}

long long Number(const std::wstring& text) {
    const bool hexadecimal = text.find(L"0x") != std::wstring::npos || text.find(L"0X") != std::wstring::npos;
    return hexadecimal ? static_cast<long long>(std::wcstoull(text.c_str(), nullptr, 16))
                       : std::wcstoll(text.c_str(), nullptr, 10);
}
