#include "store/restore_record.h"

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <string_view>
#include <utility>

#include "app/state/app_state.h"
#include "win32/format_text.h"
#include "win32/platform.h"

namespace {

constexpr wchar_t kSection[] = L"Restore";
constexpr wchar_t kRampKey[] = L"Ramp";

constexpr std::uint32_t kMaxPercent = 100;
constexpr std::uint64_t kMaxSeconds = 9'999'999'999;  // the year 2286
constexpr DWORD kMaxValueLength = 4000;               // of a row as it is stored

const wchar_t* Path() {
    return g_app.settingsPath.c_str();
}

bool HasPath() {
    return !g_app.settingsPath.empty();
}

bool HasAnyKey() {
    wchar_t keys[8] = {};
    return GetPrivateProfileStringW(kSection, nullptr, L"", keys, std::size(keys), Path()) != 0;
}

// An empty section has a name and no key.
bool HasSection() {
    if (HasAnyKey()) return true;
    wchar_t names[4096] = {};
    GetPrivateProfileSectionNamesW(names, std::size(names), Path());
    for (const wchar_t* name = names; *name != L'\0'; name += std::wcslen(name) + 1) {
        if (_wcsicmp(name, kSection) == 0) return true;
    }
    return false;
}

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

// "PERCENT AWAYSINCE NAME PATH"; a built-in panel's row ends with the name.
std::wstring TextOf(const RestoreRow& row) {
    std::wstring text = std::to_wstring(row.percent) + L" " + std::to_wstring(row.awaySince) + L" ";
    text += Encoded(row.name);
    if (!row.path.empty()) text += L" " + Encoded(row.path);
    return text;
}

bool ParseRow(std::wstring_view text, RestoreRow* row) {
    std::uint64_t percent = 0;
    if (!ParseNumber(TakeField(&text), kMaxPercent, &percent)) return false;
    row->percent = static_cast<std::uint32_t>(percent);
    return ParseNumber(TakeField(&text), kMaxSeconds, &row->awaySince) &&
           Decode(TakeField(&text), &row->name) && !row->name.empty() &&
           Decode(TakeField(&text), &row->path) && text.empty();
}

bool ReadRow(int number, RestoreRow* row) {
    wchar_t value[kMaxValueLength + 2] = {};
    const DWORD length = GetPrivateProfileStringW(kSection, std::to_wstring(number).c_str(), L"", value,
                                                  std::size(value), Path());
    // A longer value may have been truncated.
    return length <= kMaxValueLength && ParseRow({value, length}, row);
}

void Write(const wchar_t* key, const wchar_t* value) {
    WritePrivateProfileStringW(kSection, key, value, Path());
}

void DeleteSection() {
    Write(nullptr, nullptr);
}

// The number for a new row; 0 if there is none.
int FreeNumber(const RestoreRows& rows) {
    for (int number = 1; number <= kMaxRestoreRows; ++number) {
        if (rows.count(number) == 0) return number;
    }
    int longestAway = 0;
    for (const auto& [number, row] : rows) {
        if (row.awaySince == 0) continue;
        if (longestAway == 0 || row.awaySince < rows.at(longestAway).awaySince) longestAway = number;
    }
    return longestAway;
}

}  // namespace

RestoreRows ReadRestoreRows() {
    RestoreRows rows;
    if (!HasPath() || !HasAnyKey()) return rows;
    for (int number = 1; number <= kMaxRestoreRows; ++number) {
        RestoreRow row;
        if (ReadRow(number, &row)) rows.emplace(number, std::move(row));
    }
    return rows;
}

void WriteRestoreRow(int number, const RestoreRow& row) {
    const std::wstring text = TextOf(row);
    if (!HasPath() || text.size() > kMaxValueLength) return;
    Write(std::to_wstring(number).c_str(), text.c_str());
}

void AddRestoreRow(const RestoreRow& row) {
    const int number = FreeNumber(ReadRestoreRows());
    if (number != 0) WriteRestoreRow(number, row);
}

void FlushRestoreRecord() {
    if (!HasPath()) return;
    HANDLE file = CreateFileW(Path(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                              nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return;
    FlushFileBuffers(file);
    CloseHandle(file);
}

void DeleteRestoreRow(int number) {
    RestoreRows rows = ReadRestoreRows();
    if (rows.erase(number) == 0) return;
    if (rows.empty() && !IsRampRecorded()) {
        DeleteSection();
    } else {
        Write(std::to_wstring(number).c_str(), nullptr);
    }
}

bool IsRampRecorded() {
    return HasPath() && GetPrivateProfileIntW(kSection, kRampKey, 0, Path()) == 1;
}

void RecordRamp() {
    if (HasPath()) Write(kRampKey, L"1");
}

void DeleteRampRecord() {
    if (!HasPath()) return;
    if (ReadRestoreRows().empty()) {
        DeleteSection();
    } else {
        Write(kRampKey, nullptr);
    }
}

void DeleteEmptyRestoreRecord() {
    if (HasPath() && HasSection() && !IsRampRecorded() && ReadRestoreRows().empty()) DeleteSection();
}
