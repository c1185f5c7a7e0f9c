#include "faults/script.h"

#include <set>

#include "app/state/app_state.h"
#include "app/state/messages.h"
#include "faults/simulated_platform.h"
#include "filter/gamma_range.h"
#include "ui/regions.h"

#include <oleacc.h>

namespace {

constexpr UINT kMenuNone = 0, kMenuLaunchAtStartup = 1, kMenuQuit = 2, kMenuLegacyMode = 3;

// GUID_CONSOLE_DISPLAY_STATE, which winnt.h declares only, and its states.
constexpr GUID kConsoleDisplayState = {
    0x6FE69556, 0x704A, 0x47A0, {0x8F, 0x24, 0xC2, 0x8D, 0x93, 0x6F, 0xDA, 0x47}};
constexpr DWORD kDisplayOff = 0, kDisplayOn = 1;

constexpr DWORD kLocked = 100, kForgotten = 70;  // percent, of the monitor's brightness

std::set<Region> g_pressed;
bool g_reasserted = true;

void Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    if (g_app.mainWindow != nullptr) SendMessageW(g_app.mainWindow, message, wParam, lParam);
}

LPARAM CentreOf(Region region) {
    const RECT rect = RegionRect(region);
    return MAKELPARAM((rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2);
}

// IsWindowVisible is one of the functions that fail.
bool IsPopupVisible() {
    return (GetWindowLongPtrW(g_app.mainWindow, GWL_STYLE) & WS_VISIBLE) != 0;
}

// Opens the popup if it is hidden.
void PushButton(Region region) {
    if (!IsPopupVisible()) Send(kMessageShowPopup);
    if (IsAvailable(region) && IsPopupVisible()) g_pressed.insert(region);
    Send(WM_LBUTTONDOWN, MK_LBUTTON, CentreOf(region));
}

void Press(Region region) {
    PushButton(region);
    Send(WM_LBUTTONUP, 0, CentreOf(region));
}

// Few steps: most of a session's time goes to the tinted cursors.
void Drag(Region region) {
    const LPARAM start = CentreOf(region);
    PushButton(region);
    for (const int distance : {20, 40})
        Send(WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(LOWORD(start), HIWORD(start) + distance));
    Send(WM_LBUTTONUP, 0, start);
}

void FireTimers() {
    const std::set<UINT_PTR> due = g_platform.timers;
    for (const UINT_PTR id : due)
        Send(WM_TIMER, id);
}

void Choose(UINT command) {
    g_platform.menuChoice = command;
    Send(kMessageTray, 0, WM_RBUTTONUP);
    g_platform.menuChoice = 0;
}

// The menu ends a drag whose release was lost.
void OpenMenuInDrag() {
    PushButton(Region::BrightnessTrack);
    Choose(kMenuNone);
    Send(WM_LBUTTONUP, 0, CentreOf(Region::BrightnessTrack));
}

void SendDisplayState(DWORD state) {
    struct {
        GUID setting;
        DWORD length;
        DWORD data;
    } change = {kConsoleDisplayState, sizeof(DWORD), state};
    Send(WM_POWERBROADCAST, PBT_POWERSETTINGCHANGE, reinterpret_cast<LPARAM>(&change));
}

// Without power the driver drops the ramps, and the monitor forgets the lock.
void LosePower() {
    DropRamps();
    if (g_platform.monitorPercent == kLocked) g_platform.monitorPercent = kForgotten;
}

void SettleAfterPowerLoss() {
    FireTimers();
    if (g_app.filterOn && g_app.useLegacyGamma && IsRampIdentity()) g_reasserted = false;
    if (g_app.pwmSafe && g_platform.monitorPercent != kLocked) g_reasserted = false;
}

void SleepAndResume() {
    Send(WM_POWERBROADCAST, PBT_APMSUSPEND);
    LosePower();
    Send(WM_POWERBROADCAST, PBT_APMRESUMEAUTOMATIC);
    Send(WM_POWERBROADCAST, PBT_APMRESUMESUSPEND);
    SettleAfterPowerLoss();
}

void SwitchDisplaysOffAndOn() {
    SendDisplayState(kDisplayOff);
    LosePower();
    SendDisplayState(kDisplayOn);
    SettleAfterPowerLoss();
}

void ReadChild(IAccessible* object, LONG id) {
    VARIANT child = {};
    child.vt = VT_I4;
    child.lVal = id;
    for (const auto method : {&IAccessible::get_accName, &IAccessible::get_accValue,
                              &IAccessible::get_accDescription, &IAccessible::get_accDefaultAction}) {
        BSTR text = nullptr;
        (object->*method)(child, &text);
        SysFreeString(text);
    }
    VARIANT answer = {};
    object->get_accState(child, &answer);
    LONG left = 0;
    LONG top = 0;
    LONG width = 0;
    LONG height = 0;
    object->accLocation(&left, &top, &width, &height, child);
    object->accHitTest(left, top, &answer);
}

// What a screen reader does: reads every control, and presses the gear.
void UseAccessibility() {
    Send(WM_GETOBJECT, 0, static_cast<DWORD>(OBJID_CLIENT));
    IAccessible* object = g_app.accessibleObject;
    if (object == nullptr) return;
    LONG count = 0;
    object->get_accChildCount(&count);
    for (LONG id = 0; id <= count; ++id)
        ReadChild(object, id);
    IDispatch* parent = nullptr;
    object->get_accParent(&parent);
    if (parent != nullptr) parent->Release();
    VARIANT gear = {};
    gear.vt = VT_I4;
    gear.lVal = 2;
    object->accDoDefaultAction(gear);
    Send(kMessageAccessibleActions);
}

void Append(std::vector<void (*)()>* script, std::initializer_list<void (*)()> steps) {
    script->insert(script->end(), steps);
}

// The same in each pipeline.
void AppendUse(std::vector<void (*)()>* script) {
    Append(script, {
                       [] { Send(kMessageShowPopup); },
                       [] { Press(Region::NightPreset); },
                       [] { Drag(Region::WarmthTrack); },
                       [] { Drag(Region::BrightnessTrack); },
                       FireTimers,
                       [] { Press(Region::PwmCard); },
                       FireTimers,
                       FireTimers,
                       [] { Press(Region::EveningPreset); },
                       [] { Press(Region::Power); },
                       [] { Press(Region::Power); },
                       [] { Press(Region::Gear); },
                       [] { Press(Region::LaunchRow); },
                       [] { Press(Region::ExtremeDimRow); },
                       [] { Press(Region::Support); },
                       FireTimers,
                       [] { Press(Region::LaunchRow); },
                       [] { Press(Region::Close); },
                       [] { Send(WM_DISPLAYCHANGE, 32, MAKELPARAM(1280, 720)); },
                       FireTimers,
                       SleepAndResume,
                       SwitchDisplaysOffAndOn,
                       FireTimers,
                       [] { Send(g_app.taskbarCreatedMessage); },
                       [] { Send(WM_ACTIVATE, WA_INACTIVE); },
                       [] { Send(kMessageTray, 0, WM_LBUTTONUP); },
                       UseAccessibility,
                       [] { Press(Region::Close); },
                       [] { Send(WM_CLOSE); },
                       [] { Choose(kMenuLaunchAtStartup); },
                       [] { Choose(kMenuLaunchAtStartup); },
                   });
}

// What Windows refuses now and then.
void AppendRefusals(std::vector<void (*)()>* script) {
    Append(script, {
                       [] {
                           g_platform.otherInForeground = true;
                           Send(WM_CLOSE);
                           Send(kMessageShowPopup);
                       },
                       FireTimers,
                       [] {
                           g_platform.otherInForeground = false;
                           g_platform.refusesPainting = true;
                           Press(Region::Power);
                       },
                       [] { Press(Region::Power); },
                       OpenMenuInDrag,
                       [] { Press(Region::Gear); },
                       [] {
                           g_platform.refusesClipboard = true;
                           Press(Region::Support);
                       },
                       [] { Press(Region::Close); },
                   });
}

// In Legacy Mode.
void AppendGammaFix(std::vector<void (*)()>* script) {
    Append(script, {
                       [] { g_platform.refusesRamps = true; },
                       [] { Press(Region::DayPreset); },
                       [] { Press(Region::NightPreset); },
                       [] { Press(Region::GammaBanner); },
                       [] {
                           g_platform.answer = IDYES;
                           Press(Region::GammaBanner);
                       },
                       FireTimers,
                       [] { ExpandGammaRange(); },
                       FireTimers,
                       [] { Press(Region::GammaBanner); },
                       [] { g_platform.refusesRamps = false; },
                       [] { Press(Region::EveningPreset); },
                   });
}

void AppendFullUse(std::vector<void (*)()>* script) {
    AppendUse(script);
    AppendRefusals(script);
    Append(script,
           {[] { Press(Region::Gear); }, [] { Press(Region::LegacyRow); }, [] { Press(Region::Close); }});
    AppendUse(script);
    Append(script, {
                       [] { Choose(kMenuLegacyMode); },
                       [] { Choose(kMenuLegacyMode); },
                       [] {
                           g_platform.secondDisplay = true;
                           Send(WM_DISPLAYCHANGE, 32, MAKELPARAM(1280, 720));
                       },
                       FireTimers,
                       [] { Drag(Region::WarmthTrack); },
                   });
    AppendGammaFix(script);
}

void AppendShortUse(std::vector<void (*)()>* script) {
    Append(script, {
                       [] { Send(kMessageShowPopup); },
                       [] { Press(Region::NightPreset); },
                       [] { Press(Region::PwmCard); },
                       SleepAndResume,
                       SwitchDisplaysOffAndOn,
                       UseAccessibility,
                       [] { Press(Region::Support); },
                       [] { Press(Region::Close); },
                   });
    AppendRefusals(script);
    Append(script, {
                       [] { Choose(kMenuLegacyMode); },
                       [] { Drag(Region::WarmthTrack); },
                       [] { Send(WM_DISPLAYCHANGE, 32, MAKELPARAM(1280, 720)); },
                       FireTimers,
                   });
}

}  // namespace

const char* NameOf(End end) {
    switch (end) {
        case End::Quit: return "Quit";
        case End::EndOfSession: return "end of the session";
        case End::SecondStart: return "second start";
        case End::Helper: return "elevated run";
    }
    return "";
}

std::vector<void (*)()> SessionScript(End end, bool shortForm) {
    std::vector<void (*)()> script;
    if (end == End::Helper || end == End::SecondStart) return script;
    if (shortForm) {
        AppendShortUse(&script);
    } else {
        AppendFullUse(&script);
    }
    // The mode is on and the filter is in force at the end.
    Append(&script, {[] {
        if (!g_app.pwmSafe) Press(Region::PwmCard);
        if (!g_app.filterOn) Press(Region::NightPreset);
    }});
    if (end == End::Quit) {
        Append(&script, {[] { Choose(kMenuQuit); }});
    } else {
        Append(&script, {[] { Send(WM_ENDSESSION, TRUE); }, FireTimers});
    }
    g_pressed.clear();
    g_reasserted = true;
    return script;
}

int CountUnpressedRegions() {
    int unpressed = 0;
    for (int region = 0; region < static_cast<int>(Region::None); ++region)
        unpressed += g_pressed.count(static_cast<Region>(region)) == 0 ? 1 : 0;
    return unpressed;
}

bool WasReassertedAfterPowerLoss() {
    return g_reasserted;
}
