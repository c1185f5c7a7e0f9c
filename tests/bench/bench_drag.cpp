// One step of a slider drag, from WM_MOUSEMOVE to the painted window. The matrix goes to a function that does
// nothing, since Wine has no Magnification API: the ratio is not flattered by the time that a double takes.
#include "app/shell/tray_icon.h"
#include "app/state/app_state.h"
#include "app/window_proc.h"
#include "bench_window.h"
#include "floor_cursors.h"
#include "floor_drag.h"
#include "measure.h"
#include "recorded_calls.h"
#include "replaced_cursors.h"

namespace {

constexpr DWORD kIds[kSystemCursorCount] = {32512, 32513, 32514, 32515, 32516, 32640, 32641, 32642,
                                            32643, 32644, 32645, 32646, 32648, 32649, 32650, 32651};
constexpr int kCursorSize = 32;
constexpr int kStartY = 200;
constexpr int kPositions = 10;

std::function<void()> g_replacePaint;
RecordedCalls g_frame;

BOOL WINAPI AcceptMatrix(tagMAGCOLOREFFECT*) {
    return TRUE;
}

BOOL WINAPI AcceptFloorMatrix(const float*) {
    return TRUE;
}

void MoveTo(int y) {
    HandleWindowMessage(g_app.mainWindow, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(80, y));
    UpdateWindow(g_app.mainWindow);
}

void StepWithTint(int i) {
    MoveTo(kStartY - 10 * (i % kPositions));
}

// The same value again, as when the mouse moves sideways or by less than a unit.
void StepWithoutTint(int) {
    MoveTo(kStartY);
}

FloorStep StepFor(bool legacy, bool tint) {
    FloorStep step;
    step.window = g_app.mainWindow;
    step.setMatrix = legacy ? nullptr : &AcceptFloorMatrix;
    for (auto& channel : step.ramp) {
        for (int i = 0; i < 256; ++i)
            channel[i] = static_cast<WORD>(i * 200);
    }
    step.icon = FloorIcon(g_app.mainWindow, g_app.trayIconData.hIcon);
    if (tint) {
        step.cursors = g_app.baseCursors;
        step.cursorIds = kIds;
        step.cursorCount = kSystemCursorCount;
        step.cursorSize = kCursorSize;
    }
    return step;
}

void Measure(bool legacy, bool tint) {
    g_app.useLegacyGamma = legacy;
    StepWithTint(5);
    StepWithoutTint(0);
    g_frame.Record(PaintNow);
    FloorStep step = StepFor(legacy, tint);
    const auto floor = [&step](int) {
        FloorDragStep(&step);
        g_replacePaint = [] { g_frame.Replay(); };
        UpdateWindow(step.window);
        g_replacePaint = nullptr;
    };
    const std::string name = std::string("drag step, ") + (legacy ? "Legacy Mode" : "Magnification") +
                             (tint ? ", with a re-tint" : ", without a re-tint");
    Compare({name, 1.10}, tint ? StepWithTint : StepWithoutTint, floor, DestroyReplacedCursors);
}

}  // namespace

int main() {
    CollectReplacedCursors();
    CreateBenchPopup(96, &g_replacePaint);
    AddTrayIcon();
    CreatePlainCursors(g_app.baseCursors, kSystemCursorCount, kCursorSize);
    g_app.baseCursorsLoaded = true;
    g_app.filterOn = true;
    g_app.magnificationReady = true;
    g_app.magSetFullscreenColorEffect = &AcceptMatrix;
    g_app.dragSlider = Slider::Warmth;
    g_app.dragStartY = kStartY;
    g_app.dragStartValue = 0.3;
    for (const bool legacy : {false, true}) {
        for (const bool tint : {false, true})
            Measure(legacy, tint);
    }
    RemoveTrayIcon();
    DestroyBenchPopup();
    return 0;
}
