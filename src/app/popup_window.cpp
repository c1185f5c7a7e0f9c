#include "app/popup_window.h"

#include "app/shell/popup_dpi.h"
#include "app/state/app_state.h"
#include "app/state/dpi.h"
#include "app/state/program_names.h"
#include "app/window_proc.h"
#include "res/resource_ids.h"
#include "ui/canvas.h"
#include "win32/system_library.h"

#include <dwmapi.h>

namespace {

void FitWindowToItsDpi() {
    SetDpi(DpiOfWindow(g_app.mainWindow));
    SetWindowPos(g_app.mainWindow, nullptr, 0, 0, ScaleByDpi(kCanvasWidth), ScaleByDpi(kCanvasHeight),
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

// Windows 11 rounds the corners on request. Earlier versions reject the attribute.
void RoundCorners() {
    constexpr DWORD kCornerPreference = 33;  // DWMWA_WINDOW_CORNER_PREFERENCE
    const DWORD round = 2;                   // DWMWCP_ROUND
    const SystemLibrary dwmapi(L"dwmapi.dll");
    const auto setAttribute = dwmapi.Find<decltype(&DwmSetWindowAttribute)>("DwmSetWindowAttribute");
    if (setAttribute != nullptr) setAttribute(g_app.mainWindow, kCornerPreference, &round, sizeof(round));
}

}  // namespace

bool RegisterPopupClass() {
    WNDCLASSEXW windowClass = {};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.style = CS_HREDRAW | CS_VREDRAW;
    windowClass.lpfnWndProc = MainWindowProc;
    windowClass.hInstance = g_app.instance;
    windowClass.hIcon = LoadIconW(g_app.instance, MAKEINTRESOURCEW(IDI_APPLICATION_WINDOW));
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.hbrBackground = g_app.backgroundBrush;
    windowClass.lpszClassName = kWindowClassName;
    return RegisterClassExW(&windowClass) != 0;
}

bool CreatePopupWindow() {
    HWND window =
        CreateWindowExW(WS_EX_TOPMOST | WS_EX_TOOLWINDOW, kWindowClassName, kProgramTitle,
                        WS_POPUP | WS_CLIPCHILDREN, CW_USEDEFAULT, CW_USEDEFAULT, ScaleByDpi(kCanvasWidth),
                        ScaleByDpi(kCanvasHeight), nullptr, nullptr, g_app.instance, nullptr);
    if (window == nullptr) return false;
    FitWindowToItsDpi();
    RoundCorners();
    return true;
}
