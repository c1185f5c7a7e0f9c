#include "faults/simulated_platform.h"

#include <shlobj.h>

#include <cstring>
#include <utility>

#include "app/state/app_state.h"
#include "brightness/physical_monitors.h"
#include "faults/fault_injector.h"
#include "faults/simulated_function.h"
#include "faults/simulated_panel.h"

#include <oleacc.h>
#include <wbemcli.h>
#include <wincodec.h>

SimulatedPlatform g_platform;

namespace {

constexpr int kMaxMessagesPerStep = 400;

// Not called through the import table, where a fault may be injected.
const auto g_peekMessage = RealFunction<decltype(&PeekMessageW)>(L"user32.dll", "PeekMessageW");
const auto g_getForegroundWindow =
    RealFunction<decltype(&GetForegroundWindow)>(L"user32.dll", "GetForegroundWindow");
const auto g_beginPaint = RealFunction<decltype(&BeginPaint)>(L"user32.dll", "BeginPaint");
const auto g_setClipboardData = RealFunction<decltype(&SetClipboardData)>(L"user32.dll", "SetClipboardData");
const auto g_coCreateInstance = RealFunction<decltype(&CoCreateInstance)>(L"ole32.dll", "CoCreateInstance");

struct ColourMatrix {
    float cells[5][5];
};

BOOL WINAPI FakeSystemParametersInfo(UINT action, UINT, void*, UINT) {
    if (action == SPI_SETCURSORS) g_platform.cursorsReplaced = false;
    return TRUE;
}

int WINAPI FakeMessageBox(HWND, const wchar_t*, const wchar_t*, UINT type) {
    g_platform.boxes += 1;
    return (type & MB_TYPEMASK) == MB_YESNO ? g_platform.answer : IDOK;
}

HWND WINAPI FakeGetForegroundWindow() {
    return g_platform.otherInForeground ? GetDesktopWindow() : g_getForegroundWindow();
}

BOOL WINAPI FakeAttachThreadInput(DWORD, DWORD, BOOL) {
    return TRUE;
}

BOOL WINAPI FakeIsHungAppWindow(HWND) {
    return FALSE;
}

HDC WINAPI FakeBeginPaint(HWND window, PAINTSTRUCT* paint) {
    return std::exchange(g_platform.refusesPainting, false) ? nullptr : g_beginPaint(window, paint);
}

HANDLE WINAPI FakeSetClipboardData(UINT format, HANDLE memory) {
    return std::exchange(g_platform.refusesClipboard, false) ? nullptr : g_setClipboardData(format, memory);
}

BOOL WINAPI FakeTrackPopupMenu(HMENU, UINT, int, int, int, HWND, const RECT*) {
    return static_cast<BOOL>(g_platform.menuChoice);
}

HINSTANCE WINAPI FakeShellExecute(HWND, const wchar_t*, const wchar_t*, const wchar_t*, const wchar_t*, INT) {
    return reinterpret_cast<HINSTANCE>(INT_PTR{42});
}

HANDLE WINAPI FakeCreateMutex(SECURITY_ATTRIBUTES*, BOOL, const wchar_t*) {
    HANDLE mutex = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    SetLastError(g_platform.isFirstInstance ? ERROR_SUCCESS : ERROR_ALREADY_EXISTS);
    return mutex;
}

BOOL WINAPI FakeReleaseMutex(HANDLE) {
    return TRUE;
}

BOOL WINAPI FakeShellNotifyIcon(DWORD, NOTIFYICONDATAW*) {
    return TRUE;
}

HRESULT WINAPI FakeCoCreateInstance(REFCLSID clsid, IUnknown* outer, DWORD context, REFIID iid,
                                    void** object) {
    *object = nullptr;
    if (!g_platform.isComplete) return REGDB_E_CLASSNOTREG;
    if (IsEqualGUID(clsid, CLSID_WbemLocator)) return CreateWmiLocator(iid, object);
    return g_coCreateInstance(clsid, outer, context, iid, object);
}

HRESULT WINAPI FakeCoSetProxyBlanket(IUnknown*, DWORD, DWORD, OLECHAR*, DWORD, DWORD,
                                     RPC_AUTH_IDENTITY_HANDLE, DWORD) {
    return S_OK;
}

UINT_PTR WINAPI FakeSetTimer(HWND, UINT_PTR id, UINT, TIMERPROC) {
    g_platform.timers.insert(id);
    return id;
}

BOOL WINAPI FakeKillTimer(HWND, UINT_PTR id) {
    return g_platform.timers.erase(id) != 0;
}

BOOL WINAPI FakeGetMessage(MSG* message, HWND, UINT, UINT) {
    for (;;) {
        if (g_peekMessage(message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
            if (message->message == WM_QUIT) return FALSE;
            if (++g_platform.messagesSinceStep <= kMaxMessagesPerStep) return TRUE;
            g_platform.busyLoop = true;
        }
        g_platform.messagesSinceStep = 0;
        if (g_platform.nextStep >= g_platform.script.size()) {
            g_platform.scriptRanOut = true;
            *message = {};
            return FALSE;
        }
        g_platform.script[g_platform.nextStep++]();
    }
}

HMODULE WINAPI FakeLoadLibrary(const wchar_t* name, HANDLE, DWORD) {
    (void)name;
    return GetModuleHandleW(L"kernel32.dll");
}

BOOL WINAPI FakeFreeLibrary(HMODULE) {
    return TRUE;
}

FARPROC WINAPI FakeGetProcAddress(HMODULE, const char* name) {
    if (void* stub = StubFor(name)) return reinterpret_cast<FARPROC>(stub);
    return reinterpret_cast<FARPROC>(SimulatedFunction(name));
}

// The functions that the program looks up.

BOOL WINAPI MagInitialize() {
    return TRUE;
}

BOOL WINAPI MagUninitialize() {
    g_platform.matrixIsIdentity = true;
    return TRUE;
}

BOOL WINAPI MagSetFullscreenColorEffect(const ColourMatrix* effect) {
    g_platform.matrixIsIdentity = true;
    for (int row = 0; row < 5; ++row) {
        for (int column = 0; column < 5; ++column) {
            const float expected = row == column ? 1.0F : 0.0F;
            if (effect->cells[row][column] < expected || effect->cells[row][column] > expected)
                g_platform.matrixIsIdentity = false;
        }
    }
    return TRUE;
}

BOOL WINAPI GetNumberOfPhysicalMonitors(HMONITOR, DWORD* found) {
    *found = g_platform.monitorConnected ? 1 : 0;
    return TRUE;
}

BOOL WINAPI GetPhysicalMonitors(HMONITOR, DWORD, PHYSICAL_MONITOR* monitors) {
    monitors[0] = {};
    return TRUE;
}

BOOL WINAPI DestroyMonitors(DWORD, PHYSICAL_MONITOR*) {
    return TRUE;
}

BOOL WINAPI GetCapabilities(HANDLE, DWORD* capabilities, DWORD* temperatures) {
    *capabilities = MC_CAPS_BRIGHTNESS;
    *temperatures = 0;
    return TRUE;
}

BOOL WINAPI GetBrightness(HANDLE, DWORD* minimum, DWORD* current, DWORD* maximum) {
    g_platform.monitorAnswers += 1;
    if (g_platform.monitorMissesAnswers && g_platform.monitorAnswers % 2 == 0) return FALSE;
    *minimum = 0;
    *current = g_platform.monitorPercent;
    *maximum = 100;
    return TRUE;
}

BOOL WINAPI SetBrightness(HANDLE, DWORD brightness) {
    g_platform.monitorPercent = brightness;
    return TRUE;
}

HRESULT WINAPI Succeed() {
    return S_OK;
}

HRESULT WINAPI SetDpiAwareness(int) {
    return g_platform.refusesDpiAwareness ? E_FAIL : S_OK;
}

HRESULT WINAPI IsCompositionEnabled(BOOL* enabled) {
    *enabled = TRUE;
    return S_OK;
}

HRESULT WINAPI DpiForMonitor(HMONITOR, int, UINT* x, UINT* y) {
    *x = *y = 96;
    return S_OK;
}

LONG WINAPI RtlGetVersion(OSVERSIONINFOW* version) {
    version->dwMajorVersion = 10;
    version->dwBuildNumber = 22631;
    return 0;
}

// Windows would keep a reference to the object until a client has retrieved it.
LRESULT WINAPI LresultFromObject(REFIID, WPARAM, IUnknown*) {
    return 1;
}

HRESULT WINAPI ObjectFromWindow(HWND, DWORD, REFIID, void** object) {
    *object = g_app.accessibleObject;
    g_app.accessibleObject->AddRef();
    return S_OK;
}

const SimulatedRow kLookedUp[] = {
    {"MagInitialize", Address(&MagInitialize)},
    {"MagUninitialize", Address(&MagUninitialize)},
    {"MagSetFullscreenColorEffect", Address(&MagSetFullscreenColorEffect)},
    {"GetNumberOfPhysicalMonitorsFromHMONITOR", Address(&GetNumberOfPhysicalMonitors)},
    {"GetPhysicalMonitorsFromHMONITOR", Address(&GetPhysicalMonitors)},
    {"DestroyPhysicalMonitors", Address(&DestroyMonitors)},
    {"GetMonitorCapabilities", Address(&GetCapabilities)},
    {"GetMonitorBrightness", Address(&GetBrightness)},
    {"SetMonitorBrightness", Address(&SetBrightness)},
    {"SetProcessDpiAwareness", Address(&SetDpiAwareness)},
    {"DwmSetWindowAttribute", Address(&Succeed)},
    {"DwmIsCompositionEnabled", Address(&IsCompositionEnabled)},
    {"GetDpiForMonitor", Address(&DpiForMonitor)},
    {"RtlGetVersion", Address(&RtlGetVersion)},
    {"LresultFromObject", Address(&LresultFromObject)},
    {"AccessibleObjectFromWindow", Address(&ObjectFromWindow)},
};

const SimulatedRow kImported[] = {
    {"GetForegroundWindow", Address(&FakeGetForegroundWindow)},
    {"AttachThreadInput", Address(&FakeAttachThreadInput)},
    {"IsHungAppWindow", Address(&FakeIsHungAppWindow)},
    {"BeginPaint", Address(&FakeBeginPaint)},
    {"SetClipboardData", Address(&FakeSetClipboardData)},
    {"CoSetProxyBlanket", Address(&FakeCoSetProxyBlanket)},
    {"SystemParametersInfoW", Address(&FakeSystemParametersInfo)},
    {"MessageBoxW", Address(&FakeMessageBox)},
    {"TrackPopupMenu", Address(&FakeTrackPopupMenu)},
    {"ShellExecuteW", Address(&FakeShellExecute)},
    {"CreateMutexW", Address(&FakeCreateMutex)},
    {"ReleaseMutex", Address(&FakeReleaseMutex)},
    {"Shell_NotifyIconW", Address(&FakeShellNotifyIcon)},
    {"CoCreateInstance", Address(&FakeCoCreateInstance)},
    {"SetTimer", Address(&FakeSetTimer)},
    {"KillTimer", Address(&FakeKillTimer)},
    {"GetMessageW", Address(&FakeGetMessage)},
    {"LoadLibraryExW", Address(&FakeLoadLibrary)},
    {"FreeLibrary", Address(&FakeFreeLibrary)},
    {"GetProcAddress", Address(&FakeGetProcAddress)},
};

}  // namespace

void* SimulatedFunction(const char* name) {
    for (const SimulatedRow& row : kLookedUp) {
        if (std::strcmp(row.name, name) == 0) return row.function;
    }
    return nullptr;
}

void InstallSimulatedPlatform() {
    for (const SimulatedRow& row : kImported)
        ReplaceImport(row.name, row.function);
    for (const SimulatedRow& row : SimulatedRamps())
        ReplaceImport(row.name, row.function);
    for (const SimulatedRow& row : SimulatedCursors())
        ReplaceImport(row.name, row.function);
}

void ResetSimulatedPlatform() {
    g_platform = {};
    DropRamps();
}
