#include "brightness/display_targets.h"

#include <algorithm>
#include <utility>

#include "app/state/app_state.h"
#include "brightness/ddc.h"
#include "brightness/wmi.h"
#include "store/event_log.h"

namespace {

constexpr std::uint32_t kAt100Threshold = 99;  // percent

bool IsBuiltIn(const DisplayTarget& target) {
    return target.kind == TargetKind::WmiPanel;
}

}  // namespace

bool IsAt100(const DisplayTarget& target) {
    return target.percent >= kAt100Threshold;
}

void EnumerateTargets(DisplayTargetList* list) {
    EnumerateWmiTargets(list);
    DisplayTargetList external;
    EnumDisplayMonitors(nullptr, nullptr, EnumerateDdcTargets, reinterpret_cast<LPARAM>(&external));
    for (DisplayTarget& target : external)
        list->push_back(std::move(target));
}

void CountTargets(const DisplayTargetList& list) {
    const std::int32_t previousCount = g_app.pwmTargetCount;
    const bool previouslyPresent = g_app.pwmTargetsPresent;
    g_app.pwmTargetsPresent = !list.empty();
    g_app.pwmTargetCount = static_cast<std::int32_t>(list.size());
    g_app.pwmTargetsAt100 = static_cast<std::int32_t>(std::count_if(list.begin(), list.end(), IsAt100));
    g_app.pwmBuiltInOnly = !list.empty() && std::all_of(list.begin(), list.end(), IsBuiltIn);
    if (g_app.pwmTargetsPresent != previouslyPresent || g_app.pwmTargetCount != previousCount) {
        LogEvent("PWM-safe targets: %d controllable (was %d)", g_app.pwmTargetCount, previousCount);
    }
}

bool SetTargetBrightness(const DisplayTarget& target, std::uint32_t percent) {
    if (IsBuiltIn(target)) return SetWmiBrightness(target.name, percent);
    return SetDdcBrightness(target.name, std::min(percent, kMaxPercent));
}
