// Why not less:
// - SPI_SETCURSORS: a run that was killed leaves its tinted cursors to the session, and Windows has no call
//   that tells whether a cursor is the scheme's.
// - The notifications of a resume and of the display's state: on modern standby they reach only a window
//   that has registered for them, each separately. The filter must be applied again after both.
// - The settings are in two sections, each read with one call that returns all of its keys. The record of
//   an earlier run is in a third, which is read after the log is open because its recovery is logged.
// - The log records the machine and the permitted range of the gamma ramp, so these values of the registry
//   are read. The lines that are written before the log is open are kept and written together.
// - WMI needs COM with its security. The DPI awareness must be set before the first window is created.
// - A process of higher integrity receives the icon's clicks and a second instance's message only if each
//   is allowed. Each attribute of the window and of the icon is one call.
#include "floor_start.h"

#include "floor_files.h"
#include "floor_panel.h"
#include "floor_polls.h"
#include "floor_popup.h"

#include <objbase.h>
#include <shlobj.h>

#include <cwchar>
#include <initializer_list>

NOTIFYICONDATAW g_floorIcon;

namespace {

constexpr wchar_t kClass[] = L"FloorProgram";
constexpr GUID kDisplayState = {0x6FE69556, 0x704A, 0x47A0, {0x8F, 0x24, 0xC2, 0x8D, 0x93, 0x6F, 0xDA, 0x47}};

wchar_t g_folder[MAX_PATH];
unsigned long long g_settings;  // the sum, so that the compiler keeps the values

HMODULE Library(const wchar_t* name) {
    return LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
}

// Calls a function of a library that is needed only for this call.
template <typename Function, typename... Arguments>
void CallOnce(const wchar_t* library, const char* name, Arguments... arguments) {
    HMODULE module = Library(library);
    const auto function = reinterpret_cast<Function*>(GetProcAddress(module, name));
    if (function != nullptr) function(arguments...);
    FreeLibrary(module);
}

void ReadValues(HKEY root, const wchar_t* path, const wchar_t* const* names, int count) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path, 0, KEY_QUERY_VALUE | KEY_WOW64_64KEY, &key) != ERROR_SUCCESS) return;
    for (int i = 0; i < count; ++i) {
        BYTE value[2048];
        DWORD bytes = sizeof(value);
        RegQueryValueExW(key, names[i], nullptr, nullptr, value, &bytes);
    }
    RegCloseKey(key);
}

void ReadMachine() {
    static constexpr const wchar_t* kWindows[] = {L"ProductName", L"DisplayVersion", L"UBR"};
    static constexpr const wchar_t* kBios[] = {L"SystemManufacturer", L"SystemProductName"};
    static constexpr const wchar_t* kCpu[] = {L"ProcessorNameString"};
    OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    // Every process has loaded this library.
    const auto getVersion = reinterpret_cast<LONG(WINAPI*)(OSVERSIONINFOW*)>(
        GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion"));
    getVersion(&version);
    ReadValues(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", kWindows, 3);
    ReadValues(HKEY_LOCAL_MACHINE, L"HARDWARE\\DESCRIPTION\\System\\BIOS", kBios, 2);
    ReadValues(HKEY_LOCAL_MACHINE, L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0", kCpu, 1);
}

const wchar_t* File(const wchar_t* name) {
    static wchar_t path[MAX_PATH];
    lstrcpyW(path, g_folder);
    lstrcatW(path, name);
    return path;
}

// The number of a key; `section` consists of lines KEY=VALUE that end with a zero, the last with two.
unsigned long long ValueOf(const wchar_t* section, const wchar_t* key) {
    const std::size_t length = std::wcslen(key);
    for (const wchar_t* line = section; *line != L'\0'; line += std::wcslen(line) + 1) {
        if (_wcsnicmp(line, key, length) == 0 && line[length] == L'=')
            return std::wcstoull(line + length + 1, nullptr, 10);
    }
    return 0;
}

void ReadSettings() {
    static constexpr const wchar_t* kFilter[] = {L"Intensity", L"Brightness"};
    static constexpr const wchar_t* kSettings[] = {L"LaunchAtStart",  L"AllowExtremeDim",
                                                   L"UseLegacyGamma", L"LegacyModeAutoSet",
                                                   L"PWMSafeMode",    L"GammaFixEpoch"};
    SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, 0, g_folder);
    lstrcatW(g_folder, L"\\FloorProgram\\");
    CreateDirectoryW(g_folder, nullptr);
    wchar_t section[4096];
    GetPrivateProfileSectionW(L"Filter", section, 4096, File(L"settings.ini"));
    for (const wchar_t* key : kFilter)
        g_settings += ValueOf(section, key);
    GetPrivateProfileSectionW(L"Settings", section, 4096, File(L"settings.ini"));
    for (const wchar_t* key : kSettings)
        g_settings += ValueOf(section, key);
}

void WriteLog(int lines) {
    char text[1024] = {};
    for (int i = 0; i < lines; ++i)
        lstrcatA(text, "[21:04:07.031] Hardware: A manufacturer and a product / A processor of a name\r\n");
    FloorAppend(File(L"events.log"), text, static_cast<DWORD>(lstrlenA(text)));
}

}  // namespace

void FloorPrepareProcess() {
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
    ReadMachine();
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
    CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_DEFAULT,
                         RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE, nullptr);
    CallOnce<HRESULT WINAPI(int)>(L"Shcore.dll", "SetProcessDpiAwareness", 2);
    CreateMutexW(nullptr, TRUE, L"Global\\FloorProgram");
    RegisterWindowMessageW(L"TaskbarCreated");
    CreateSolidBrush(RGB(13, 13, 13));
    FloorCreateResources();
}

void FloorReadFiles() {
    static constexpr const wchar_t* kRange[] = {L"GdiIcmGammaRange"};
    static constexpr const wchar_t* kRun[] = {L"FloorProgram"};
    ReadSettings();
    WriteLog(5);
    ReadValues(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ICM", kRange, 1);
    WriteLog(1);
    ReadValues(HKEY_CURRENT_USER, L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run", kRun, 1);
    wchar_t record[4096];
    GetPrivateProfileSectionW(L"Restore", record, 4096, File(L"settings.ini"));
}

void FloorLoadPipeline() {
    SystemParametersInfoW(SPI_SETCURSORS, 0, nullptr, 0);
    HMODULE magnification = Library(L"Magnification.dll");
    for (const char* name : {"MagUninitialize", "MagSetFullscreenColorEffect"})
        GetProcAddress(magnification, name);
    reinterpret_cast<BOOL(WINAPI*)()>(GetProcAddress(magnification, "MagInitialize"))();
}

HWND FloorCreateWindow(HINSTANCE instance, WNDPROC procedure) {
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = instance;
    windowClass.hIcon = LoadIconW(instance, MAKEINTRESOURCEW(101));
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.lpszClassName = kClass;
    RegisterClassW(&windowClass);
    HWND window = CreateWindowExW(WS_EX_TOPMOST | WS_EX_TOOLWINDOW, kClass, L"FloorProgram", WS_POPUP, 0, 0,
                                  320, 540, nullptr, nullptr, instance, nullptr);
    for (const UINT message : {WM_USER + 1U, WM_APP + 105U})
        ChangeWindowMessageFilterEx(window, message, MSGFLT_ALLOW, nullptr);
    RegisterSuspendResumeNotification(window, DEVICE_NOTIFY_WINDOW_HANDLE);
    RegisterPowerSettingNotification(window, &kDisplayState, DEVICE_NOTIFY_WINDOW_HANDLE);
    FloorPoll();
    WriteLog(1);
    const DWORD round = 2;
    CallOnce<HRESULT WINAPI(HWND, DWORD, const void*, DWORD)>(L"dwmapi.dll", "DwmSetWindowAttribute", window,
                                                              33U, &round, static_cast<DWORD>(sizeof(round)));
    return window;
}

void FloorAddIcon(HINSTANCE instance, HWND window) {
    g_floorIcon.cbSize = sizeof(g_floorIcon);
    g_floorIcon.hWnd = window;
    g_floorIcon.uID = 1;
    g_floorIcon.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP;
    g_floorIcon.uCallbackMessage = WM_USER + 1;
    g_floorIcon.hIcon = LoadIconW(instance, MAKEINTRESOURCEW(102));
    lstrcpyW(g_floorIcon.szTip, L"Ambrel");
    Shell_NotifyIconW(NIM_ADD, &g_floorIcon);
}
