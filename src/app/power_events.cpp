#include "app/power_events.h"

#include <cstddef>

#include "app/state/app_state.h"
#include "app/state/timers.h"
#include "win32/try_copy_memory.h"

namespace {

// GUID_CONSOLE_DISPLAY_STATE, {6FE69556-704A-47A0-8F24-C28D936FDA47}: winnt.h declares but does not define
// it.
constexpr GUID kConsoleDisplayState = {
    0x6FE69556, 0x704A, 0x47A0, {0x8F, 0x24, 0xC2, 0x8D, 0x93, 0x6F, 0xDA, 0x47}};

constexpr DWORD kDisplayOff = 0;
constexpr DWORD kDisplayOn = 1;  // 2 is dimmed

// POWERBROADCAST_SETTING with the data of this setting.
struct DisplayStateSetting {
    GUID setting;
    DWORD dataLength;
    DWORD state;
};
static_assert(offsetof(DisplayStateSetting, state) == offsetof(POWERBROADCAST_SETTING, Data));

bool IsDisplayState(const DisplayStateSetting& setting) {
    return IsEqualGUID(setting.setting, kConsoleDisplayState) && setting.dataLength == sizeof(DWORD);
}

void StartSettlingAfterResume() {
    StartTimer(TimerId::DisplaySettle, TimerPeriod::Long);
}

void OnDisplayState(DWORD state) {
    const DWORD before = g_app.displayState;
    g_app.displayState = state;
    if (before == kDisplayOff && state == kDisplayOn) StartSettlingAfterResume();
}

// Settings with less data may end before the state; they are not this one.
void OnPowerSetting(const void* data) {
    DisplayStateSetting setting = {};
    if (TryCopyMemory(data, &setting, sizeof(setting)) && IsDisplayState(setting))
        OnDisplayState(setting.state);
}

}  // namespace

void RegisterPowerEvents(HWND window) {
    g_app.resumeRegistration = RegisterSuspendResumeNotification(window, DEVICE_NOTIFY_WINDOW_HANDLE);
    // Windows reports the current state immediately, so only a change from off to on is treated as a resume.
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
        case PBT_POWERSETTINGCHANGE: OnPowerSetting(reinterpret_cast<const void*>(data)); return;
    }
}
