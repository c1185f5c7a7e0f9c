#include "app/power_events.h"

#include <cstring>

#include "app/state/app_state.h"
#include "app/state/timers.h"

namespace {

// GUID_CONSOLE_DISPLAY_STATE, {6FE69556-704A-47A0-8F24-C28D936FDA47}: winnt.h declares but does not define
// it.
constexpr GUID kConsoleDisplayState = {
    0x6FE69556, 0x704A, 0x47A0, {0x8F, 0x24, 0xC2, 0x8D, 0x93, 0x6F, 0xDA, 0x47}};

constexpr DWORD kDisplayOff = 0;
constexpr DWORD kDisplayOn = 1;  // 2 is dimmed

bool IsDisplayState(const POWERBROADCAST_SETTING& setting) {
    return IsEqualGUID(setting.PowerSetting, kConsoleDisplayState) && setting.DataLength == sizeof(DWORD);
}

void StartSettlingAfterResume() {
    StartTimer(TimerId::DisplaySettle, TimerPeriod::Long);
}

void OnDisplayState(DWORD state) {
    const DWORD before = g_app.displayState;
    g_app.displayState = state;
    if (before == kDisplayOff && state == kDisplayOn) StartSettlingAfterResume();
}

void OnPowerSetting(const POWERBROADCAST_SETTING* setting) {
    if (setting == nullptr || !IsDisplayState(*setting)) return;
    DWORD state = 0;
    std::memcpy(&state, setting->Data, sizeof(state));
    OnDisplayState(state);
}

}  // namespace

void RegisterPowerEvents(HWND window) {
    g_app.resumeRegistration = RegisterSuspendResumeNotification(window, DEVICE_NOTIFY_WINDOW_HANDLE);
    // Windows reports the current state immediately, so only a change from off to on counts as a resume.
    g_app.displayRegistration =
        RegisterPowerSettingNotification(window, &kConsoleDisplayState, DEVICE_NOTIFY_WINDOW_HANDLE);
}

void UnregisterPowerEvents() {
    if (g_app.resumeRegistration != nullptr) UnregisterSuspendResumeNotification(g_app.resumeRegistration);
    g_app.resumeRegistration = nullptr;
    if (g_app.displayRegistration != nullptr) UnregisterPowerSettingNotification(g_app.displayRegistration);
    g_app.displayRegistration = nullptr;
}

void OnPowerBroadcast(WPARAM event, LPARAM data) {
    switch (event) {
        case PBT_APMRESUMEAUTOMATIC:
        case PBT_APMRESUMESUSPEND: StartSettlingAfterResume(); return;
        case PBT_POWERSETTINGCHANGE:
            OnPowerSetting(reinterpret_cast<const POWERBROADCAST_SETTING*>(data));
            return;
    }
}
