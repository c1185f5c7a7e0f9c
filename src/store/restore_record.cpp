#include "store/restore_record.h"

#include <cwchar>
#include <iterator>
#include <utility>

#include "app/state/app_state.h"
#include "win32/platform.h"

namespace {

constexpr wchar_t kSection[] = L"Restore";
constexpr wchar_t kRampKey[] = L"Ramp";

constexpr DWORD kMaxValueLength = 4000;  // of a row as it is stored
constexpr int kMaxRepetitions = 100;     // of a key; sanity limit

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

bool ReadRow(int number, RestoreRow* row) {
    wchar_t value[kMaxValueLength + 2] = {};
    const DWORD length = GetPrivateProfileStringW(kSection, std::to_wstring(number).c_str(), L"", value,
                                                  std::size(value), Path());
    // A longer value may have been truncated.
    return length <= kMaxValueLength && ParseRestoreRow({value, length}, row);
}

void Write(const wchar_t* key, const wchar_t* value) {
    WritePrivateProfileStringW(kSection, key, value, Path());
}

// A key that exists hides both fallbacks.
bool HasKey(const wchar_t* key) {
    wchar_t one[2] = {};
    wchar_t other[2] = {};
    GetPrivateProfileStringW(kSection, key, L"1", one, std::size(one), Path());
    GetPrivateProfileStringW(kSection, key, L"2", other, std::size(other), Path());
    return one[0] == other[0];
}

// A file that was edited by hand may contain a key several times. Only the first is read; a deletion reveals
// the next.
void DeleteKey(const wchar_t* key) {
    for (int i = 0; i < kMaxRepetitions && HasKey(key); ++i)
        Write(key, nullptr);
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
    const std::wstring text = RestoreRowText(row);
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
        DeleteKey(std::to_wstring(number).c_str());
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
        DeleteKey(kRampKey);
    }
}

void DeleteEmptyRestoreRecord() {
    if (HasPath() && HasSection() && !IsRampRecorded() && ReadRestoreRows().empty()) DeleteSection();
}
