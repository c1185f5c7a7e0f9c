#include "filter/drag_platform.h"

#include "filter/cursor_tint.h"
#include "support/seam.h"

AMBREL_SEAM_SET(drag_platform);

DragPlatform g_platform;

namespace {

constexpr int kMaxSteps = 64;

const char* g_steps[kMaxSteps];
int g_stepCount = 0;

void Step(const char* name) {
    if (g_stepCount < kMaxSteps) g_steps[g_stepCount++] = name;
}

HDC WINAPI FakeGetDC(HWND) {
    Step("get dc");
    return reinterpret_cast<HDC>(0xDC);
}

int WINAPI FakeReleaseDC(HWND, HDC) {
    Step("release dc");
    return 1;
}

BOOL WINAPI FakeSetDeviceGammaRamp(HDC, LPVOID ramp) {
    Step("set ramp");
    for (std::size_t i = 0; i < sizeof(g_platform.ramp); ++i)
        g_platform.ramp[i] = static_cast<const unsigned char*>(ramp)[i];
    return g_platform.acceptsRamps ? TRUE : FALSE;
}

BOOL WINAPI FakeGetDeviceGammaRamp(HDC, LPVOID ramp) {
    Step("read ramp");
    for (std::size_t i = 0; i < sizeof(g_platform.ramp); ++i) {
        const unsigned char wrong = 0xFF;
        static_cast<unsigned char*>(ramp)[i] = g_platform.readsBackRight ? g_platform.ramp[i] : wrong;
    }
    return TRUE;
}

// A single display.
BOOL WINAPI FakeEnumDisplayDevicesW(LPCWSTR, DWORD index, DISPLAY_DEVICEW* display, DWORD) {
    if (index > 0) return FALSE;
    display->StateFlags = DISPLAY_DEVICE_ATTACHED_TO_DESKTOP;
    return TRUE;
}

HDC WINAPI FakeCreateDCW(LPCWSTR, LPCWSTR, LPCWSTR, const DEVMODEW*) {
    Step("create dc");
    return nullptr;
}

BOOL WINAPI FakeInvalidateRect(HWND window, const RECT* area, BOOL erase) {
    Step(window == DraggedWindow() && area == nullptr && erase == FALSE ? "invalidate"
                                                                        : "invalidate otherwise");
    return TRUE;
}

HICON WINAPI FakeLoadIconW(HINSTANCE, LPCWSTR name) {
    // 103 is the icon for the switched-on filter.
    Step(name == MAKEINTRESOURCEW(103) ? "load icon on" : "load icon off");
    return reinterpret_cast<HICON>(0x1C0);
}

BOOL WINAPI FakeShellNotifyIconW(DWORD message, NOTIFYICONDATAW*) {
    Step(message == NIM_MODIFY ? "modify tray icon" : "other tray call");
    return TRUE;
}

HWND WINAPI FakeSetCapture(HWND) {
    Step("capture");
    return nullptr;
}

BOOL WINAPI FakeReleaseCapture() {
    Step("release capture");
    return TRUE;
}

UINT_PTR WINAPI FakeSetTimer(HWND, UINT_PTR id, UINT period, TIMERPROC) {
    Step(id == 1 && period == 500 ? "set timer 1 500" : "set another timer");
    return id;
}

BOOL WINAPI FakeKillTimer(HWND, UINT_PTR id) {
    Step(id == 1 ? "kill timer 1" : "kill another timer");
    return TRUE;
}

BOOL WINAPI FakePostMessageW(HWND, UINT, WPARAM, LPARAM) {
    Step("post");
    return TRUE;
}

BOOL WINAPI FakeWritePrivateProfileStringW(LPCWSTR, LPCWSTR, LPCWSTR, LPCWSTR) {
    Step("write settings");
    return TRUE;
}

int WINAPI FakeMessageBoxW(HWND, LPCWSTR, LPCWSTR, UINT) {
    Step("box");
    return IDOK;
}

}  // namespace

AMBREL_SEAM(GetDC, FakeGetDC);
AMBREL_SEAM(ReleaseDC, FakeReleaseDC);
AMBREL_SEAM(SetDeviceGammaRamp, FakeSetDeviceGammaRamp);
AMBREL_SEAM(GetDeviceGammaRamp, FakeGetDeviceGammaRamp);
AMBREL_SEAM(EnumDisplayDevicesW, FakeEnumDisplayDevicesW);
AMBREL_SEAM(CreateDCW, FakeCreateDCW);
AMBREL_SEAM(InvalidateRect, FakeInvalidateRect);
AMBREL_SEAM(LoadIconW, FakeLoadIconW);
AMBREL_SEAM(Shell_NotifyIconW, FakeShellNotifyIconW);
AMBREL_SEAM(SetCapture, FakeSetCapture);
AMBREL_SEAM(ReleaseCapture, FakeReleaseCapture);
AMBREL_SEAM(SetTimer, FakeSetTimer);
AMBREL_SEAM(KillTimer, FakeKillTimer);
AMBREL_SEAM(PostMessageW, FakePostMessageW);
AMBREL_SEAM(MessageBoxW, FakeMessageBoxW);
AMBREL_SEAM(WritePrivateProfileStringW, FakeWritePrivateProfileStringW);

AMBREL_REPLACE(void, TintSystemCursors, ()) {
    Step("tint cursors");
}
AMBREL_REPLACE(void, RestoreSystemCursors, ()) {
    Step("restore cursors");
}
AMBREL_REPLACE(void, ResetSystemCursors, ()) {
    Step("reset cursors");
}
AMBREL_REPLACE(void, ReleaseCursorCopies, ()) {
    Step("release cursor copies");
}

HWND DraggedWindow() {
    return reinterpret_cast<HWND>(0x1234);
}

BOOL WINAPI FakeSetEffect(tagMAGCOLOREFFECT*) {
    Step("matrix");
    if (g_platform.matrixError == 0) return TRUE;
    SetLastError(g_platform.matrixError);
    return FALSE;
}

CallRecord Steps() {
    return {g_steps, g_steps + g_stepCount};
}

void ClearSteps() {
    g_stepCount = 0;
}
