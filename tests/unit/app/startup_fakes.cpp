#include "app/startup_fakes.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "app/crash_guard.h"
#include "app/shell/tray_icon.h"
#include "app/startup.h"
#include "app/state/app_state.h"
#include "app/window_lifetime.h"
#include "app/window_proc.h"
#include "diag/system_probe.h"
#include "filter/cursor_tint.h"
#include "filter/gamma_range.h"
#include "filter/gamma_range_helper.h"
#include "filter/magnification.h"
#include "store/autostart.h"
#include "store/settings.h"
#include "support/fake_libraries.h"
#include "support/seam.h"

#include <objbase.h>
#include <shellscalingapi.h>

AMBREL_SEAM_SET(startup_fakes);
AMBREL_USES_SEAMS(recorded_timers);

FakeSystem g_system;

AMBREL_REPLACE(OsInfo, ReadOsInfo, ()) {
    return g_system.os;
}
AMBREL_REPLACE(std::wstring, ReadHardwareName, ()) {
    return g_system.hardware;
}
AMBREL_REPLACE(std::wstring, ReadCpuName, ()) {
    return g_system.processor;
}
AMBREL_REPLACE(void, LoadSettings, ()) {
    Record("load settings");
    g_app.settingsPath = g_system.settingsPath;
}
AMBREL_REPLACE(void, SaveSettings, ()) {
    Record("save settings");
}
AMBREL_REPLACE(bool, IsGammaRangeExpanded, ()) {
    Record("read gamma range");
    return g_system.gammaRangeExpanded;
}
AMBREL_REPLACE(int, RunGammaRangeHelper, ()) {
    Record("helper");
    return g_system.helperExitCode;
}
AMBREL_REPLACE(void, InstallCrashGuard, ()) {
    Record("install crash guard");
}
AMBREL_REPLACE(void, DestroyMainWindow, ()) {
    Record("destroy window ", ValueOf(g_app.mainWindow));
}
AMBREL_REPLACE(void, RepairAutostartEntry, ()) {
    Record("repair autostart entry");
}
AMBREL_REPLACE(void, ResetSystemCursors, ()) {
    Record("reset cursors");
}
AMBREL_REPLACE(void, InitMagnification, ()) {
    Record("init magnification");
}
AMBREL_REPLACE(bool, AddTrayIcon, ()) {
    Record("add tray icon");
    return g_system.trayAccepts;
}
AMBREL_REPLACE(void, UpdateTrayIcon, ()) {
    Record("update tray icon");
}
AMBREL_REPLACE(void, RemoveTrayIcon, ()) {
    Record("remove tray icon");
}
AMBREL_REPLACE(LRESULT CALLBACK, MainWindowProc, (HWND window, UINT message, WPARAM, LPARAM)) {
    Record("window procedure ", message);
    if (message == WM_CREATE) g_app.mainWindow = window;
    return 0;
}

namespace {

ULONGLONG WINAPI FakeGetTickCount64() {
    return 987654;
}

HRESULT WINAPI FakeCoInitializeEx(void* reserved, DWORD model) {
    EXPECT_EQ(reserved, nullptr);
    Record("co initialize ", model);
    return E_FAIL;
}

HRESULT WINAPI FakeCoInitializeSecurity(PSECURITY_DESCRIPTOR descriptor, LONG services,
                                        SOLE_AUTHENTICATION_SERVICE*, void* reserved1, DWORD authentication,
                                        DWORD impersonation, void* list, DWORD capabilities,
                                        void* reserved2) {
    EXPECT_TRUE(descriptor == nullptr && reserved1 == nullptr && list == nullptr && reserved2 == nullptr);
    Record("co security ", services, " ", authentication, " ", impersonation, " ", capabilities);
    return E_FAIL;
}

void WINAPI FakeCoUninitialize() {
    Record("co uninitialize");
}

HRESULT WINAPI FakeSetProcessDpiAwareness(PROCESS_DPI_AWARENESS awareness) {
    Record("set awareness ", static_cast<int>(awareness));
    return g_system.awarenessAnswer;
}

BOOL WINAPI FakeSetProcessDpiAware() {
    Record("set aware");
    return TRUE;
}

HRESULT WINAPI FakeDwmSetWindowAttribute(HWND window, DWORD attribute, const void* value, DWORD size) {
    EXPECT_EQ(size, 4U);
    Record("dwm ", ValueOf(window), " ", attribute, " ", *static_cast<const DWORD*>(value));
    return E_INVALIDARG;
}

HANDLE WINAPI FakeCreateMutex(SECURITY_ATTRIBUTES*, BOOL, const wchar_t* name) {
    Record("create mutex ", Narrow(name));
    SetLastError(g_system.mutexError);
    return g_system.mutexCreated ? kMutex : nullptr;
}

HWND WINAPI FakeFindWindow(const wchar_t* className, const wchar_t* title) {
    Record("find window ", Narrow(className), " ", Narrow(title));
    return g_system.firstInstancesWindow;
}

DWORD WINAPI FakeGetWindowThreadProcessId(HWND, DWORD* process) {
    *process = 4242;
    return 1;
}

BOOL WINAPI FakeAllowSetForegroundWindow(DWORD process) {
    Record("allow ", process);
    return TRUE;
}

BOOL WINAPI FakePostMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    Record("post ", ValueOf(window), " ", message, " ", wParam, " ", lParam);
    return TRUE;
}

UINT WINAPI FakeRegisterWindowMessage(const wchar_t* name) {
    Record("register message ", Narrow(name));
    return 0xC0DE;
}

HBRUSH WINAPI FakeCreateSolidBrush(COLORREF colour) {
    Record("brush ", colour);
    return MakeHandle<HBRUSH>(700);
}

HFONT WINAPI FakeCreateFont(int height, int width, int escapement, int orientation, int weight, DWORD italic,
                            DWORD underline, DWORD strikeOut, DWORD charSet, DWORD outPrecision,
                            DWORD clipPrecision, DWORD quality, DWORD pitchAndFamily, const wchar_t* face) {
    Record("font");
    LOGFONTW font = {height,
                     width,
                     escapement,
                     orientation,
                     weight,
                     static_cast<BYTE>(italic),
                     static_cast<BYTE>(underline),
                     static_cast<BYTE>(strikeOut),
                     static_cast<BYTE>(charSet),
                     static_cast<BYTE>(outPrecision),
                     static_cast<BYTE>(clipPrecision),
                     static_cast<BYTE>(quality),
                     static_cast<BYTE>(pitchAndFamily),
                     {}};
    std::wstring_view(face).copy(font.lfFaceName, LF_FACESIZE - 1);
    g_system.fonts.push_back(font);
    return MakeHandle<HFONT>(800 + g_system.fonts.size());
}

HANDLE WINAPI FakeLoadImage(HINSTANCE, const wchar_t* name, UINT, int width, int height, UINT) {
    Record("load icon ", ValueOf(name), " ", width, "x", height);
    return MakeHandle<HANDLE>(900);
}

BOOL WINAPI FakeDestroyIcon(HICON icon) {
    Record("destroy icon ", ValueOf(icon));
    return TRUE;
}

// Icon n is the handle 10 n.
HICON WINAPI FakeLoadIcon(HINSTANCE instance, const wchar_t* name) {
    EXPECT_EQ(instance, kInstance);
    return MakeHandle<HICON>(ValueOf(name) * 10);
}

// Cursor n is the handle n + 1.
HCURSOR WINAPI FakeLoadCursor(HINSTANCE instance, const wchar_t* name) {
    EXPECT_EQ(instance, nullptr);
    return MakeHandle<HCURSOR>(ValueOf(name) + 1);
}

ATOM WINAPI FakeRegisterClassEx(const WNDCLASSEXW* windowClass) {
    Record("register class");
    g_system.windowClass = *windowClass;
    g_system.className = windowClass->lpszClassName;
    return g_system.classRegistered ? 1 : 0;
}

HWND WINAPI FakeCreateWindowEx(DWORD extendedStyle, const wchar_t* className, const wchar_t* title,
                               DWORD style, int x, int y, int width, int height, HWND parent, HMENU menu,
                               HINSTANCE instance, void*) {
    Record("create window ", width, "x", height);
    g_system.windowClassName = className;
    g_system.windowTitle = title;
    g_system.windowStyle = style;
    g_system.windowExtendedStyle = extendedStyle;
    g_system.windowX = x;
    g_system.windowY = y;
    g_system.windowParent = parent;
    g_system.windowMenu = menu;
    g_system.windowInstance = instance;
    g_app.windowDestroyed = g_system.windowDestroyed;
    if (!g_system.windowCreated) return nullptr;
    g_system.windowClass.lpfnWndProc(kWindow, WM_CREATE, 0, 0);
    return kWindow;
}

UINT WINAPI FakeGetDpiForWindow(HWND window) {
    Record("dpi of window ", ValueOf(window));
    return g_system.windowDpi;
}

BOOL WINAPI FakeSetWindowPos(HWND window, HWND, int, int, int width, int height, UINT flags) {
    EXPECT_EQ(flags & (SWP_NOZORDER | SWP_NOACTIVATE), static_cast<UINT>(SWP_NOZORDER | SWP_NOACTIVATE));
    EXPECT_EQ(flags & (SWP_NOSIZE | SWP_SHOWWINDOW), 0U);
    EXPECT_NE(flags & SWP_NOMOVE, 0U) << "the window stays where it is";
    Record("resize ", ValueOf(window), " ", width, "x", height);
    return TRUE;
}

BOOL WINAPI FakeShowWindow(HWND window, int command) {
    Record("show window ", ValueOf(window), " ", command);
    return FALSE;
}

int WINAPI FakeMessageBox(HWND owner, const wchar_t* text, const wchar_t* title, UINT type) {
    EXPECT_EQ(owner, nullptr);
    Record("box \"", Narrow(text), "\" \"", Narrow(title), "\" ", type);
    return IDOK;
}

BOOL WINAPI FakeGetMessage(MSG* message, HWND window, UINT first, UINT last) {
    EXPECT_TRUE(window == nullptr && first == 0 && last == 0) << "every message of the thread";
    g_system.reads += 1;
    if (g_system.reads <= g_system.failingReads) return -1;
    if (g_system.everyOtherReadFails && g_system.reads % 2 == 1) return -1;
    if (g_system.messages.empty()) {
        Record("quit message");
        // WM_DESTROY posts it; another program can do that as well.
        g_app.windowDestroyed = !g_system.otherProgramQuits;
        *message = {nullptr, WM_QUIT, g_system.quitCode, 0, 0, {}};
        return FALSE;
    }
    *message = g_system.messages.front();
    g_system.messages.erase(g_system.messages.begin());
    return TRUE;
}

BOOL WINAPI FakeTranslateMessage(const MSG* message) {
    Record("translate ", message->message);
    return FALSE;
}

LRESULT WINAPI FakeDispatchMessage(const MSG* message) {
    Record("dispatch ", message->message);
    return 0;
}

}  // namespace

AMBREL_SEAM(GetTickCount64, FakeGetTickCount64);
AMBREL_SEAM(CoInitializeEx, FakeCoInitializeEx);
AMBREL_SEAM(CoInitializeSecurity, FakeCoInitializeSecurity);
AMBREL_SEAM(CoUninitialize, FakeCoUninitialize);
AMBREL_SEAM(SetProcessDPIAware, FakeSetProcessDpiAware);
AMBREL_SEAM(CreateMutexW, FakeCreateMutex);
AMBREL_SEAM(FindWindowW, FakeFindWindow);
AMBREL_SEAM(GetWindowThreadProcessId, FakeGetWindowThreadProcessId);
AMBREL_SEAM(AllowSetForegroundWindow, FakeAllowSetForegroundWindow);
AMBREL_SEAM(PostMessageW, FakePostMessage);
AMBREL_SEAM(RegisterWindowMessageW, FakeRegisterWindowMessage);
AMBREL_SEAM(CreateSolidBrush, FakeCreateSolidBrush);
AMBREL_SEAM(CreateFontW, FakeCreateFont);
AMBREL_SEAM(LoadImageW, FakeLoadImage);
AMBREL_SEAM(DestroyIcon, FakeDestroyIcon);
AMBREL_SEAM(LoadIconW, FakeLoadIcon);
AMBREL_SEAM(LoadCursorW, FakeLoadCursor);
AMBREL_SEAM(RegisterClassExW, FakeRegisterClassEx);
AMBREL_SEAM(CreateWindowExW, FakeCreateWindowEx);
AMBREL_SEAM(GetDpiForWindow, FakeGetDpiForWindow);
AMBREL_SEAM(SetWindowPos, FakeSetWindowPos);
AMBREL_SEAM(ShowWindow, FakeShowWindow);
AMBREL_SEAM(MessageBoxW, FakeMessageBox);
AMBREL_SEAM(GetMessageW, FakeGetMessage);
AMBREL_SEAM(TranslateMessage, FakeTranslateMessage);
AMBREL_SEAM(DispatchMessageW, FakeDispatchMessage);

void ResetSystem() {
    g_app = AppState{};
    g_calls.clear();
    g_system = FakeSystem{};
    g_system.os = {L"Windows 11 Pro", L"23H2", L"3447", 10, 0, 22631};
    RemoveLibraries();
    InstallShcore();
    InstallDwm();
}

int Start(const wchar_t* commandLine) {
    return RunAmbrel(kInstance, commandLine);
}

CallRecord CallsStarting(const std::string& prefix) {
    CallRecord calls;
    std::copy_if(g_calls.begin(), g_calls.end(), std::back_inserter(calls),
                 [&](const std::string& call) { return call.starts_with(prefix); });
    return calls;
}

bool IsBefore(const std::string& earlier, const std::string& later) {
    const auto find = [](const std::string& prefix) {
        return std::find_if(g_calls.begin(), g_calls.end(),
                            [&](const std::string& call) { return call.starts_with(prefix); });
    };
    return find(later) != g_calls.end() && find(earlier) < find(later);
}

void InstallShcore() {
    InstallLibrary(L"Shcore.dll", {{"SetProcessDpiAwareness", EntryPoint(&FakeSetProcessDpiAwareness)}});
}

void InstallDwm() {
    InstallLibrary(L"dwmapi.dll", {{"DwmSetWindowAttribute", EntryPoint(&FakeDwmSetWindowAttribute)}});
}
