// The section [Restore] with any content: rows are in range, what is written is read again, and nothing stays
// when every row has been deleted.
#include "store/restore_record.h"

#include "app/state/app_state.h"
#include "shim/shim.h"
#include "target.h"

namespace {

constexpr std::uint64_t kLastSecond = 9'999'999'999;

bool Same(const RestoreRow& one, const RestoreRow& other) {
    return one.percent == other.percent && one.awaySince == other.awaySince && one.name == other.name &&
           one.path == other.path;
}

bool IsPrintable(const std::wstring& text) {
    for (const wchar_t unit : text) {
        if (unit <= 0x20 || unit >= 0x7F || unit == L'%') return false;
    }
    return true;
}

void CheckRows(const RestoreRows& rows) {
    CHECK(rows.size() <= static_cast<std::size_t>(kMaxRestoreRows));
    for (const auto& [number, row] : rows) {
        CHECK(number >= 1 && number <= kMaxRestoreRows);
        CHECK(row.percent <= 100 && row.awaySince <= kLastSecond && !row.name.empty());
        CHECK(row.name.find(L'\0') == std::wstring::npos && row.path.find(L'\0') == std::wstring::npos);
    }
}

void CheckSameRows(const RestoreRows& before) {
    const RestoreRows now = ReadRestoreRows();
    CHECK(now.size() == before.size());
    for (const auto& [number, row] : before)
        CHECK(Same(now.at(number), row));
}

}  // namespace

void FuzzRestoreRecord(Input input) {
    g_app.settingsPath = L"C:\\settings.ini";
    RestoreRow added;
    added.percent = input.Byte() % 101U;
    added.awaySince = input.Number();
    added.name = input.Line();
    added.path = input.Line();
    SetProfile(input.Text());

    const RestoreRows rows = ReadRestoreRows();
    CheckRows(rows);
    for (const auto& [number, row] : rows)
        WriteRestoreRow(number, row);
    CheckSameRows(rows);

    const bool hasZero = (added.name + added.path).find(L'\0') != std::wstring::npos;
    if (!added.name.empty() && !hasZero) {
        AddRestoreRow(added);
        bool found = false;
        const RestoreRows now = ReadRestoreRows();
        for (const auto& [number, row] : now)
            found = found || Same(row, added);
        // Printable names of this length fit in any case.
        const bool fits =
            added.name.size() + added.path.size() < 3900 && IsPrintable(added.name + added.path);
        CHECK(found || !fits || rows.size() == static_cast<std::size_t>(kMaxRestoreRows));
        CheckRows(now);
    }

    RecordRamp();
    CHECK(IsRampRecorded());
    const RestoreRows last = ReadRestoreRows();
    for (const auto& [number, row] : last)
        DeleteRestoreRow(number);
    CHECK(ReadRestoreRows().empty() && IsRampRecorded());
    DeleteRampRecord();
    DeleteEmptyRestoreRecord();
    CHECK(!IsRampRecorded() && !HasProfileSection(L"Restore"));
}
