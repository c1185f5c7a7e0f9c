#include "bench_window.h"

#include "app/shell/popup_dpi.h"
#include "app/state/app_state.h"
#include "app/window_proc.h"
#include "ui/accessible_events.h"
#include "ui/fonts.h"

namespace {

constexpr wchar_t kClass[] = L"AmbrelBench";

const std::function<void()>* g_replacePaint;

LRESULT CALLBACK BenchWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_PAINT && *g_replacePaint) {
        (*g_replacePaint)();
        return 0;
    }
    if (message == WM_CREATE || message == WM_DESTROY) return 0;
    return HandleWindowMessage(window, message, wParam, lParam);
}

void RegisterOnce() {
    static bool registered = false;
    if (registered) return;
    registered = true;
    WNDCLASSW windowClass = {};
    windowClass.style = CS_HREDRAW | CS_VREDRAW;
    windowClass.lpfnWndProc = BenchWindowProc;
    windowClass.hInstance = g_app.instance;
    windowClass.lpszClassName = kClass;
    RegisterClassW(&windowClass);
}

}  // namespace

void CreateBenchPopup(UINT dpi, const std::function<void()>* replacePaint) {
    g_replacePaint = replacePaint;
    g_app.instance = GetModuleHandleW(nullptr);
    RegisterOnce();
    CreateFonts();
    SetDpi(dpi);
    g_app.mainWindow =
        CreateWindowExW(WS_EX_TOPMOST | WS_EX_TOOLWINDOW, kClass, L"", WS_POPUP | WS_CLIPCHILDREN, 0, 0,
                        MulDiv(320, static_cast<int>(dpi), 96), MulDiv(540, static_cast<int>(dpi), 96),
                        nullptr, nullptr, g_app.instance, nullptr);
    ShowWindow(g_app.mainWindow, SW_SHOWNOACTIVATE);
    // As after the popup is shown: from now on a paint announces what has changed.
    AnnouncePopup(true);
    PaintNow();
}

void PaintNow() {
    InvalidateRect(g_app.mainWindow, nullptr, FALSE);
    UpdateWindow(g_app.mainWindow);
}

void DestroyBenchPopup() {
    DestroyWindow(g_app.mainWindow);
    g_app.mainWindow = nullptr;
    DeleteFonts();
}
