#include "faults/simulated_platform.h"

#include <shlobj.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "app/state/app_state.h"
#include "brightness/physical_monitors.h"
#include "faults/fault_injector.h"

#include <oleacc.h>

SimulatedPlatform g_platform;

namespace {

constexpr int kMaxMessagesPerStep = 400;

// Not called through the import table, where a fault may be injected.
decltype(&PeekMessageW) g_peekMessage = nullptr;
decltype(&DestroyCursor) g_destroyCursor = nullptr;
decltype(&LoadImageW) g_loadImage = nullptr;
decltype(&LoadCursorW) g_loadCursor = nullptr;

struct ColourMatrix {
    float cells[5][5];
};

bool IsIdentity(const std::uint16_t (&ramp)[3][256]) {
    for (const auto& channel : ramp) {
        for (int i = 0; i < 256; ++i) {
            if (channel[i] != 257 * i) return false;
        }
    }
    return true;
}

BOOL WINAPI FakeSetDeviceGammaRamp(HDC, const std::uint16_t (*ramp)[3][256]) {
    if (g_platform.refusesRamps && !IsIdentity(*ramp)) return FALSE;
    std::memcpy(g_platform.ramp, ramp, sizeof(g_platform.ramp));
    return TRUE;
}

BOOL WINAPI FakeGetDeviceGammaRamp(HDC, void* ramp) {
    std::memcpy(ramp, g_platform.ramp, sizeof(g_platform.ramp));
    return TRUE;
}

BOOL WINAPI FakeSetSystemCursor(HCURSOR cursor, DWORD) {
    g_platform.cursorsReplaced = true;
    return g_destroyCursor(cursor);
}

// Most of a session's time goes to the cursors, so only arrow, beam and hourglass exist.
bool IsMissingCursor(const wchar_t* name) {
    if (!IS_INTRESOURCE(name)) return false;
    const auto id = static_cast<WORD>(reinterpret_cast<ULONG_PTR>(name));
    const WORD existing[] = {32512, 32513, 32514};
    return std::find(std::begin(existing), std::end(existing), id) == std::end(existing);
}

HANDLE WINAPI FakeLoadImage(HINSTANCE instance, const wchar_t* name, UINT type, int width, int height,
                            UINT flags) {
    if (instance == nullptr && type == IMAGE_CURSOR && IsMissingCursor(name)) return nullptr;
    return g_loadImage(instance, name, type, width, height, flags);
}

HCURSOR WINAPI FakeLoadCursor(HINSTANCE instance, const wchar_t* name) {
    return instance == nullptr && IsMissingCursor(name) ? nullptr : g_loadCursor(instance, name);
}

BOOL WINAPI FakeSystemParametersInfo(UINT action, UINT, void*, UINT) {
    if (action == SPI_SETCURSORS) g_platform.cursorsReplaced = false;
    return TRUE;
}

int WINAPI FakeMessageBox(HWND, const wchar_t*, const wchar_t*, UINT type) {
    g_platform.boxes += 1;
    return (type & MB_TYPEMASK) == MB_YESNO ? IDNO : IDOK;
}

BOOL WINAPI FakeTrackPopupMenu(HMENU, UINT, int, int, int, HWND, const RECT*) {
    return static_cast<BOOL>(g_platform.menuChoice);
}

HINSTANCE WINAPI FakeShellExecute(HWND, const wchar_t*, const wchar_t*, const wchar_t*, const wchar_t*, INT) {
    return reinterpret_cast<HINSTANCE>(INT_PTR{42});
}

// Every start is that of the first instance.
HANDLE WINAPI FakeCreateMutex(SECURITY_ATTRIBUTES*, BOOL, const wchar_t*) {
    HANDLE mutex = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    SetLastError(ERROR_SUCCESS);
    return mutex;
}

BOOL WINAPI FakeReleaseMutex(HANDLE) {
    return TRUE;
}

BOOL WINAPI FakeShellNotifyIcon(DWORD, NOTIFYICONDATAW*) {
    return TRUE;
}

HRESULT WINAPI FakeCoCreateInstance(REFCLSID, IUnknown*, DWORD, REFIID, void** object) {
    if (object != nullptr) *object = nullptr;
    return REGDB_E_CLASSNOTREG;
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

struct Simulated {
    const char* name;
    void* function;
};

template <typename Function>
void* Address(Function* function) {
    return reinterpret_cast<void*>(function);
}

const Simulated kLookedUp[] = {
    {"MagInitialize", Address(&MagInitialize)},
    {"MagUninitialize", Address(&MagUninitialize)},
    {"MagSetFullscreenColorEffect", Address(&MagSetFullscreenColorEffect)},
    {"GetNumberOfPhysicalMonitorsFromHMONITOR", Address(&GetNumberOfPhysicalMonitors)},
    {"GetPhysicalMonitorsFromHMONITOR", Address(&GetPhysicalMonitors)},
    {"DestroyPhysicalMonitors", Address(&DestroyMonitors)},
    {"GetMonitorCapabilities", Address(&GetCapabilities)},
    {"GetMonitorBrightness", Address(&GetBrightness)},
    {"SetMonitorBrightness", Address(&SetBrightness)},
    {"SetProcessDpiAwareness", Address(&Succeed)},
    {"DwmSetWindowAttribute", Address(&Succeed)},
    {"DwmIsCompositionEnabled", Address(&IsCompositionEnabled)},
    {"GetDpiForMonitor", Address(&DpiForMonitor)},
    {"RtlGetVersion", Address(&RtlGetVersion)},
    {"LresultFromObject", Address(&LresultFromObject)},
    {"AccessibleObjectFromWindow", Address(&ObjectFromWindow)},
};

const Simulated kImported[] = {
    {"SetDeviceGammaRamp", Address(&FakeSetDeviceGammaRamp)},
    {"GetDeviceGammaRamp", Address(&FakeGetDeviceGammaRamp)},
    {"LoadImageW", Address(&FakeLoadImage)},
    {"LoadCursorW", Address(&FakeLoadCursor)},
    {"SetSystemCursor", Address(&FakeSetSystemCursor)},
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

template <typename Function>
void FindReal(const char* name, Function* function) {
    *function = reinterpret_cast<Function>(GetProcAddress(GetModuleHandleW(L"user32.dll"), name));
}

}  // namespace

void* SimulatedFunction(const char* name) {
    for (const Simulated& row : kLookedUp) {
        if (std::strcmp(row.name, name) == 0) return row.function;
    }
    return nullptr;
}

void InstallSimulatedPlatform() {
    FindReal("PeekMessageW", &g_peekMessage);
    FindReal("DestroyCursor", &g_destroyCursor);
    FindReal("LoadImageW", &g_loadImage);
    FindReal("LoadCursorW", &g_loadCursor);
    for (const Simulated& row : kImported)
        ReplaceImport(row.name, row.function);
}

void ResetSimulatedPlatform() {
    g_platform = {};
    for (auto& channel : g_platform.ramp) {
        for (int i = 0; i < 256; ++i)
            channel[i] = static_cast<std::uint16_t>(257 * i);
    }
}

bool IsRampIdentity() {
    return IsIdentity(g_platform.ramp);
}
