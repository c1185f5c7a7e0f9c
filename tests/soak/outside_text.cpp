#include "soak/outside_text.h"

#include "soak/attack.h"

bool HasControlCharacter(const std::wstring& text) {
    for (const wchar_t character : text) {
        if (character < 0x20 || (character >= 0x7F && character < 0xA0)) return true;
        if (character == 0x2028 || character == 0x2029) return true;
    }
    return false;
}

void RequireReportLines(const std::wstring& report) {
    std::size_t start = 0;
    for (std::size_t end = report.find(L"\r\n"); end != std::wstring::npos;
         end = report.find(L"\r\n", start)) {
        Require(!HasControlCharacter(report.substr(start, end - start)), "a control character in the report");
        start = end + 2;
    }
    Require(start == report.size() && !report.empty(), "the report does not end with a line");
}

int CountLines(const std::wstring& report) {
    int lines = 0;
    for (const wchar_t character : report)
        lines += character == L'\n' ? 1 : 0;
    return lines;
}
