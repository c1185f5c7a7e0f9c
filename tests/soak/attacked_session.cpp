// One session of the program per round.
#include <cmath>

#include "app/startup.h"
#include "app/state/app_state.h"
#include "app/state/messages.h"
#include "app/state/timers.h"
#include "faults/session.h"
#include "faults/simulated_platform.h"
#include "soak/attack.h"
#include "soak/properties.h"

namespace {

constexpr UINT kMenuQuit = 2;
constexpr int kMaxQueue = 200;  // more messages than one step causes

void Quit() {
    g_platform.refusesRamps = false;
    g_platform.menuChoice = kMenuQuit;
    Send(kMessageTray, 0, WM_RBUTTONUP);
}

bool IsInRange(double value, double first, double last) {
    return value >= first && value <= last;
}

}  // namespace

LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam) {
    return g_app.mainWindow != nullptr ? SendMessageW(g_app.mainWindow, message, wParam, lParam) : 0;
}

void DispatchQueue() {
    MSG message;
    int dispatched = 0;
    while (dispatched <= kMaxQueue && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
        dispatched += 1;
        if (message.message == WM_QUIT) {
            Require(false, "the program quits");
            return;
        }
        DispatchMessageW(&message);
    }
    Require(dispatched <= kMaxQueue, "the queue does not become empty");
}

void MoveToMonitorOf(int dpi) {
    const RECT place = {0, 0, MulDiv(320, dpi, 96), MulDiv(540, dpi, 96)};
    const auto word = static_cast<WORD>(dpi);
    Send(WM_DPICHANGED, MAKEWPARAM(word, word), reinterpret_cast<LPARAM>(&place));
}

void RequireValuesInRange() {
    const double floor = g_app.allowExtremeDim ? 0.0 : 0.1;
    Require(IsInRange(g_app.intensity, 0.0, 1.0), "intensity " + std::to_string(g_app.intensity));
    Require(IsInRange(g_app.brightness, floor, 1.0), "brightness " + std::to_string(g_app.brightness));
    Require(g_app.dpi >= 1 && g_app.dpi <= 960, "DPI " + std::to_string(g_app.dpi));
    Require(g_app.panel == Panel::Main || g_app.panel == Panel::Settings, "no panel");
    Require(g_app.pwmTargetsAt100 >= 0 && g_app.pwmTargetsAt100 <= g_app.pwmTargetCount,
            "more displays at 100 % than there are");
    for (const UINT_PTR timer : g_platform.timers)
        Require(IsTimerId(timer), "timer " + std::to_string(timer));
}

void RequireConsistentState() {
    RequireValuesInRange();
    Require(g_app.mainWindow != nullptr && !g_app.ending, "the program ends");
    Require(g_app.dragSlider == Slider::None || GetCapture() == g_app.mainWindow, "a drag without the mouse");
    if (!g_app.filterOn) {
        Require(IsRampIdentity(), "a gamma ramp without the filter");
        Require(g_platform.matrixIsIdentity, "a colour matrix without the filter");
        Require(!g_platform.cursorsReplaced, "tinted cursors without the filter");
    }
    Require(IsRampIdentity() || g_platform.matrixIsIdentity, "a gamma ramp and a colour matrix");
    if (!g_app.pwmSafe) {
        Require(g_platform.monitorPercent == 40,
                "the monitor is at " + std::to_string(g_platform.monitorPercent) + " % without the mode");
    }
}

void RunSessionWith(void (*attack)()) {
    PrepareSession({attack, Quit});
    const int exitCode = RunAmbrel(GetModuleHandleW(nullptr), L"ambrel.exe");
    Require(exitCode == 0, "exit code " + std::to_string(exitCode));
    Require(!g_platform.scriptRanOut, "the program does not quit");
    Require(IsRampIdentity(), "a gamma ramp is left");
    Require(g_platform.matrixIsIdentity, "a colour matrix is left");
    Require(!g_platform.cursorsReplaced, "tinted cursors are left");
    Require(g_platform.monitorPercent == 40,
            "the monitor is left at " + std::to_string(g_platform.monitorPercent) + " %");
    CleanUpSession();
}
