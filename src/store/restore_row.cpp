#include "store/restore_row.h"

#include <algorithm>

#include "win32/format_text.h"

namespace {

constexpr std::uint32_t kMaxPercent = 100;
constexpr std::uint64_t kMaxSeconds = 9'999'999'999;  // the year 2286

// Blanks separate the fields, and the private-profile functions trim them. Other characters outside this
// range may be changed by a code page.
bool IsStoredAsIs(wchar_t unit) {
    return unit > L' ' && unit < 0x7F && unit != L'%';
}

std::wstring Encoded(const std::wstring& text) {
    std::wstring encoded;
    for (const wchar_t unit : text) {
        if (IsStoredAsIs(unit)) {
            encoded += unit;
            continue;
        }
        wchar_t escape[8];
        FormatText(escape, "%%%04X", static_cast<unsigned>(unit));
        encoded += escape;
    }
    return encoded;
}

bool DecodeHexDigit(wchar_t digit, unsigned* value) {
    if (digit >= L'0' && digit <= L'9') {
        *value = *value * 16 + static_cast<unsigned>(digit - L'0');
    } else if (digit >= L'A' && digit <= L'F') {
        *value = *value * 16 + static_cast<unsigned>(digit - L'A') + 10;
    } else {
        return false;
    }
    return true;
}

// False if Encoded cannot have returned the text. A name does not contain a zero.
bool Decode(std::wstring_view encoded, std::wstring* text) {
    text->clear();
    while (!encoded.empty()) {
        if (encoded[0] != L'%') {
            if (!IsStoredAsIs(encoded[0])) return false;
            *text += encoded[0];
            encoded.remove_prefix(1);
            continue;
        }
        unsigned unit = 0;
        if (encoded.size() < 5) return false;
        for (std::size_t i = 1; i < 5; ++i) {
            if (!DecodeHexDigit(encoded[i], &unit)) return false;
        }
        if (unit == 0) return false;
        *text += static_cast<wchar_t>(unit);
        encoded.remove_prefix(5);
    }
    return true;
}

bool ParseNumber(std::wstring_view digits, std::uint64_t maximum, std::uint64_t* number) {
    *number = 0;
    for (const wchar_t digit : digits) {
        if (digit < L'0' || digit > L'9') return false;
        *number = *number * 10 + static_cast<std::uint64_t>(digit - L'0');
        if (*number > maximum) return false;
    }
    return !digits.empty();
}

// Removes the first field of a row, and the blank that follows it, from `rest`.
std::wstring_view TakeField(std::wstring_view* rest) {
    const std::size_t end = std::min(rest->find(L' '), rest->size());
    const std::wstring_view field = rest->substr(0, end);
    rest->remove_prefix(std::min(end + 1, rest->size()));
    return field;
}

}  // namespace

std::wstring RestoreRowText(const RestoreRow& row) {
    std::wstring text = std::to_wstring(row.percent) + L" " + std::to_wstring(row.awaySince) + L" ";
    text += Encoded(row.name);
    if (!row.path.empty()) text += L" " + Encoded(row.path);
    return text;
}

bool ParseRestoreRow(std::wstring_view text, RestoreRow* row) {
    std::uint64_t percent = 0;
    if (!ParseNumber(TakeField(&text), kMaxPercent, &percent)) return false;
    row->percent = static_cast<std::uint32_t>(percent);
    return ParseNumber(TakeField(&text), kMaxSeconds, &row->awaySince) &&
           Decode(TakeField(&text), &row->name) && !row->name.empty() &&
           Decode(TakeField(&text), &row->path) && text.empty();
}
