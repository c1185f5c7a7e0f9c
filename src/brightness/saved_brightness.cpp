#include "brightness/saved_brightness.h"

#include <algorithm>
#include <ctime>

#include "app/state/app_state.h"
#include "brightness/display_targets.h"
#include "brightness/monitor_path.h"
#include "brightness/target_name.h"
#include "store/restore_record.h"

namespace {

constexpr std::uint64_t kDay = 86400;              // seconds
constexpr std::uint64_t kMaxTimeAway = 30 * kDay;  // seconds

std::uint64_t SecondsSince1970() {
    return static_cast<std::uint64_t>(std::time(nullptr));
}

// A display as the record identifies it.
struct Identity {
    std::wstring name;
    std::wstring path;

    explicit Identity(const std::wstring& target) : name(target), path(MonitorDevicePath(target)) {}

    bool IsOf(const RestoreRow& row) const { return row.name == name && row.path == path; }
};

// Without a path an external monitor cannot be distinguished from one that is connected later. Windows may
// fail to report the path of a connected monitor.
bool IsIdentifiable(const std::wstring& name, const std::wstring& path) {
    return !path.empty() || !IsDdcTargetName(name);
}

RestoreRows::const_iterator FindRow(const RestoreRows& rows, const Identity& identity) {
    return std::find_if(rows.begin(), rows.end(),
                        [&](const auto& numbered) { return identity.IsOf(numbered.second); });
}

// Returns the user's value: the target's brightness, or the value of a previous run that left the display
// locked.
std::uint32_t RecordBrightness(const DisplayTarget& target) {
    if (g_app.settingsPath.empty()) return target.percent;
    const Identity identity(target.name);
    if (!IsIdentifiable(identity.name, identity.path)) return target.percent;
    const RestoreRows rows = ReadRestoreRows();
    const auto known = FindRow(rows, identity);
    RestoreRow row = {target.percent, 0, identity.name, identity.path};
    if (known == rows.end()) {
        AddRestoreRow(row);
    } else {
        if (IsAt100(target)) row.percent = known->second.percent;
        WriteRestoreRow(known->first, row);
    }
    FlushRestoreRecord();
    return row.percent;
}

// The target that has the row's name. Null if its display is not connected.
const DisplayTarget* TargetOf(const RestoreRow& row, const DisplayTargetList& list) {
    const auto target = std::find_if(list.begin(), list.end(),
                                     [&](const DisplayTarget& each) { return each.name == row.name; });
    return target != list.end() ? &*target : nullptr;
}

// Keeps the row of a display that is not connected or cannot be identified. The time counts from the first
// such start. If it is in the future, the clock has been set back.
void KeepWhileAway(int number, RestoreRow row) {
    const std::uint64_t now = SecondsSince1970();
    if (row.awaySince == 0 || row.awaySince > now) {
        row.awaySince = now;
        WriteRestoreRow(number, row);
    } else if (now - row.awaySince > kMaxTimeAway) {
        DeleteRestoreRow(number);
    }
}

void RecallRow(int number, const RestoreRow& row, const DisplayTarget& target) {
    const Identity identity(target.name);
    const bool isLocked = IsAt100(target);
    // If it reads less, it is another monitor, or the user has chosen that brightness.
    if (isLocked && !IsIdentifiable(identity.name, identity.path)) {
        KeepWhileAway(number, row);
        return;
    }
    if (isLocked && identity.IsOf(row)) {
        // If two rows name the same display, the first is used.
        if (g_app.pwmSavedBrightness.try_emplace(row.name, row.percent).second) {
            if (row.awaySince != 0) WriteRestoreRow(number, {row.percent, 0, row.name, row.path});
            return;
        }
    }
    DeleteRestoreRow(number);
}

}  // namespace

std::uint32_t SaveBrightness(const DisplayTarget& target) {
    const auto saved = g_app.pwmSavedBrightness.find(target.name);
    if (saved != g_app.pwmSavedBrightness.end()) return saved->second;
    const std::uint32_t percent = RecordBrightness(target);
    g_app.pwmSavedBrightness.emplace(target.name, percent);
    return percent;
}

void RecallBrightness(const DisplayTargetList& list) {
    for (const auto& [number, row] : ReadRestoreRows()) {
        if (!IsIdentifiable(row.name, row.path)) {
            DeleteRestoreRow(number);
        } else if (const DisplayTarget* target = TargetOf(row, list)) {
            RecallRow(number, row, *target);
        } else {
            KeepWhileAway(number, row);
        }
    }
    DeleteEmptyRestoreRecord();
}

void DeleteRecordedBrightness(const std::vector<std::wstring>& names) {
    if (names.empty() || g_app.settingsPath.empty()) return;
    const RestoreRows rows = ReadRestoreRows();
    if (rows.empty()) return;
    for (const std::wstring& name : names) {
        const auto row = FindRow(rows, Identity(name));
        // This run did not know the value of a row that is still marked as away, so it was not restored.
        if (row != rows.end() && row->second.awaySince == 0) DeleteRestoreRow(row->first);
    }
}
