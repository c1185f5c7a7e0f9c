#include "faults/script.h"

#include "app/state/app_state.h"
#include "app/state/messages.h"
#include "faults/simulated_platform.h"
#include "ui/regions.h"

#include <oleacc.h>

namespace {

constexpr UINT kMenuLaunchAtStartup = 1, kMenuQuit = 2, kMenuLegacyMode = 3;

void Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    if (g_app.mainWindow != nullptr) SendMessageW(g_app.mainWindow, message, wParam, lParam);
}

LPARAM CentreOf(Region region) {
    const RECT rect = RegionRect(region);
    return MAKELPARAM((rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2);
}

void Press(Region region) {
    Send(WM_LBUTTONDOWN, MK_LBUTTON, CentreOf(region));
    Send(WM_LBUTTONUP, 0, CentreOf(region));
}

// Few steps: most of a session's time goes to the tinted cursors.
void Drag(Region region) {
    const LPARAM start = CentreOf(region);
    Send(WM_LBUTTONDOWN, MK_LBUTTON, start);
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
                       [] { Press(Region::GammaBanner); },
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
                       [] { Send(WM_POWERBROADCAST, PBT_APMRESUMEAUTOMATIC); },
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

void AppendShortUse(std::vector<void (*)()>* script) {
    Append(script, {
                       [] { Send(kMessageShowPopup); },
                       [] { Press(Region::NightPreset); },
                       [] { Press(Region::PwmCard); },
                       FireTimers,
                       UseAccessibility,
                       [] { Press(Region::Support); },
                       [] { Press(Region::Close); },
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
        case End::Helper: return "elevated run";
    }
    return "";
}

std::vector<void (*)()> SessionScript(End end, bool shortForm) {
    std::vector<void (*)()> script;
    if (end == End::Helper) return script;
    if (shortForm) {
        AppendShortUse(&script);
    } else {
        AppendUse(&script);
        Append(&script, {[] { Choose(kMenuLegacyMode); }});
        AppendUse(&script);
    }
    if (!shortForm) {
        Append(&script, {[] { g_platform.refusesRamps = true; }, [] { Press(Region::DayPreset); },
                         [] { Press(Region::NightPreset); }, [] { Press(Region::GammaBanner); }, FireTimers,
                         [] { g_platform.refusesRamps = false; }});
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
    return script;
}
