#include "faults/fault_table.h"

namespace {

// Documented failures.
constexpr Failure kNothing = {0, ERROR_ACCESS_DENIED};  // FALSE, null, 0
constexpr Failure kNoMemory = {0, ERROR_NOT_ENOUGH_MEMORY};
constexpr Failure kMinusOne = {-1, ERROR_INVALID_HANDLE};
constexpr Failure kErrorCode = {ERROR_ACCESS_DENIED, ERROR_ACCESS_DENIED};
constexpr Failure kErrno = {13, ERROR_ACCESS_DENIED};                                      // EACCES
constexpr Failure kFailed = {static_cast<std::int32_t>(0x80004005), ERROR_ACCESS_DENIED};  // E_FAIL
constexpr Failure kParameter = {0, ERROR_INVALID_PARAMETER};
constexpr Failure kTimeout = {WAIT_TIMEOUT, ERROR_SUCCESS};
constexpr Failure kMoreData = {ERROR_MORE_DATA, ERROR_MORE_DATA};
// One character, byte or line of what was requested.
constexpr Failure kShort = {1, ERROR_INSUFFICIENT_BUFFER};

// Success, but the output has not been written.
constexpr Failure kNoOutput = {TRUE, ERROR_SUCCESS};
constexpr Failure kNoOutputCode = {S_OK, ERROR_SUCCESS};

struct Group {
    Failure failure;
    std::vector<const char*> functions;
};

const std::vector<Group>& Imported() {
    static const std::vector<Group> groups = {
        {kErrorCode,
         {"RegCloseKey", "RegCreateKeyExW", "RegDeleteValueW", "RegOpenKeyExW", "RegQueryValueExW",
          "RegSetValueExW"}},
        {kNothing,
         {"BitBlt",
          "CreateBitmap",
          "CreateCompatibleBitmap",
          "CreateCompatibleDC",
          "CreateDCW",
          "CreateDIBSection",
          "CreateFontW",
          "CreatePen",
          "CreateRectRgn",
          "CreateRoundRectRgn",
          "CreateSolidBrush",
          "DeleteDC",
          "DeleteObject",
          "GdiFlush",
          "GdiGradientFill",
          "GetClipRgn",
          "GetDeviceGammaRamp",
          "GetObjectW",
          "GetStockObject",
          "GetTextExtentPoint32W",
          "LineTo",
          "MoveToEx",
          "RoundRect",
          "SelectClipRgn",
          "SelectObject",
          "SetBkMode",
          "SetDeviceGammaRamp",
          "SetMapMode",
          "SetViewportExtEx",
          "SetViewportOrgEx",
          "SetWindowExtEx"}},
        {kMinusOne,
         {"GetClipRgn", "SetDCBrushColor", "SetTextColor", "GetMessageW", "GetFileAttributesW",
          "WaitForSingleObject", "CreateFileW"}},
        {kNothing,
         {"CloseHandle",
          "CompareStringOrdinal",
          "CreateDirectoryW",
          "CreateMutexW",
          "DeleteFileW",
          "FlushFileBuffers",
          "FreeLibrary",
          "GetModuleFileNameW",
          "GetPrivateProfileIntW",
          "GetPrivateProfileSectionNamesW",
          "GetPrivateProfileStringW",
          "GetProcAddress",
          "GetTimeZoneInformation",
          "GetUserDefaultLocaleName",
          "GlobalAlloc",
          "GlobalFree",
          "GlobalLock",
          "GlobalMemoryStatusEx",
          "GlobalUnlock",
          "LoadLibraryExW",
          "MoveFileExW",
          "MulDiv",
          "MultiByteToWideChar",
          "ReadProcessMemory",
          "ReleaseMutex",
          "SetThreadStackGuarantee",
          "VirtualAlloc",
          "VirtualFree",
          "WideCharToMultiByte",
          "WritePrivateProfileStringW"}},
        {kNoMemory, {"GlobalAlloc", "CreateThread"}},
        {kTimeout, {"WaitForSingleObject"}},
        {kErrno, {"_wfopen_s"}},
        {kNothing, {"fread", "fwrite"}},
        {kMinusOne, {"fclose", "fflush", "fgetpos", "fsetpos", "_commit", "_filelengthi64", "_time64"}},
        {kNothing, {"SysAllocString"}},
        {kFailed, {"VariantClear"}},
        {kFailed,
         {
             "CoCreateInstance",
             "CoInitializeEx",
             "CoInitializeSecurity",
             "CoSetProxyBlanket",
         }},
        {kFailed, {"SHGetFolderPathW"}},
        {kNothing, {"ShellExecuteW", "Shell_NotifyIconW"}},
        {kNothing,
         {"AllowSetForegroundWindow",
          "AppendMenuW",
          "AttachThreadInput",
          "BeginPaint",
          "BringWindowToTop",
          "ChangeWindowMessageFilterEx",
          "ClientToScreen",
          "CloseClipboard",
          "CopyIcon",
          "CopyImage",
          "CreateIconIndirect",
          "CreatePopupMenu",
          "CreateWindowExW",
          "DestroyCursor",
          "DestroyIcon",
          "DestroyMenu",
          "DestroyWindow",
          "DrawIconEx",
          "DrawTextW",
          "EmptyClipboard",
          "EndPaint",
          "EnumDisplayDevicesW",
          "EnumDisplayMonitors",
          "EnumDisplaySettingsW",
          "EqualRect",
          "FillRect",
          "FindWindowW",
          "GetAsyncKeyState",
          "GetClientRect",
          "GetCursorPos",
          "GetDC",
          "GetDpiForWindow",
          "GetForegroundWindow",
          "GetIconInfo",
          "GetMessageW",
          "GetMonitorInfoW",
          "GetSystemMetrics",
          "GetWindow",
          "GetWindowRect",
          "GetWindowThreadProcessId",
          "InflateRect",
          "InvalidateRect",
          "InSendMessageEx",
          "IsHungAppWindow",
          "IsIconic",
          "IsWindowEnabled",
          "IsWindowVisible",
          "KillTimer",
          "LoadCursorW",
          "LoadIconW",
          "LoadImageW",
          "MapWindowPoints",
          "MessageBoxW",
          "MonitorFromPoint",
          "OpenClipboard",
          "PeekMessageW",
          "PostMessageW",
          "PtInRect",
          "RegisterClassExW",
          "RegisterPowerSettingNotification",
          "RegisterSuspendResumeNotification",
          "RegisterWindowMessageW",
          "ReleaseCapture",
          "ReleaseDC",
          "SetCapture",
          "SetClipboardData",
          "SetForegroundWindow",
          "SetProcessDPIAware",
          "SetSystemCursor",
          "SetTimer",
          "SetWindowPos",
          "ShowWindow",
          "SystemParametersInfoW",
          "TrackPopupMenu",
          "TranslateMessage",
          "UnregisterPowerSettingNotification",
          "UnregisterSuspendResumeNotification",
          "ValidateRect"}},
        {kMoreData, {"RegQueryValueExW"}},
        {kShort,
         {"fread", "fwrite", "GetModuleFileNameW", "GetObjectW", "GetPrivateProfileSectionNamesW",
          "GetPrivateProfileStringW", "GetUserDefaultLocaleName", "MultiByteToWideChar",
          "WideCharToMultiByte"}},
        {kNoOutput,
         {"EnumDisplayDevicesW", "EnumDisplayMonitors", "EnumDisplaySettingsW", "GetClientRect",
          "GetCursorPos", "GetDeviceGammaRamp", "GetIconInfo", "GetMonitorInfoW", "GetTextExtentPoint32W",
          "GetWindowRect", "GlobalMemoryStatusEx", "ReadProcessMemory", "SystemParametersInfoW"}},
        {kNoOutputCode,
         {"_wfopen_s", "CoCreateInstance", "RegCreateKeyExW", "RegOpenKeyExW", "RegQueryValueExW",
          "SHGetFolderPathW"}},
    };
    return groups;
}

const std::vector<Group>& LookedUp() {
    static const std::vector<Group> groups = {
        {kNothing,
         {"MagInitialize", "MagUninitialize", "MagSetFullscreenColorEffect",
          "GetNumberOfPhysicalMonitorsFromHMONITOR", "GetPhysicalMonitorsFromHMONITOR",
          "DestroyPhysicalMonitors", "GetMonitorCapabilities", "GetMonitorBrightness",
          "SetMonitorBrightness"}},
        {kParameter, {"MagSetFullscreenColorEffect"}},
        {kNothing, {"LresultFromObject"}},
        {kFailed,
         {"SetProcessDpiAwareness", "DwmSetWindowAttribute", "DwmIsCompositionEnabled", "GetDpiForMonitor",
          "RtlGetVersion", "LresultFromObject", "AccessibleObjectFromWindow"}},
        {kNoOutput,
         {"GetNumberOfPhysicalMonitorsFromHMONITOR", "GetPhysicalMonitorsFromHMONITOR",
          "GetMonitorCapabilities", "GetMonitorBrightness"}},
        {kNoOutputCode,
         {"DwmIsCompositionEnabled", "GetDpiForMonitor", "RtlGetVersion", "AccessibleObjectFromWindow"}},
    };
    return groups;
}

struct NotReached {
    const char* reason;
    std::vector<const char*> functions;
};

const std::vector<NotReached>& NoSessionCalls() {
    static const std::vector<NotReached> reasons = {
        {"no panel draws the logo",
         {"CreateStreamOnHGlobal", "FindResourceW", "GdiAlphaBlend", "LoadResource", "LockResource",
          "SetStretchBltMode", "SizeofResource"}},
        {"no panel draws the dot of its header", {"Ellipse"}},
        {"no monochrome cursor is tinted", {"GetDIBits"}},
    };
    return reasons;
}

void Append(const std::vector<Group>& groups, bool lookedUp, std::vector<FaultRow>* rows) {
    for (const Group& group : groups) {
        for (const char* function : group.functions)
            rows->push_back({function, lookedUp, group.failure});
    }
}

}  // namespace

std::vector<FaultRow> AllFaults() {
    std::vector<FaultRow> rows;
    Append(Imported(), false, &rows);
    Append(LookedUp(), true, &rows);
    for (const NotReached& row : NoSessionCalls()) {
        for (const char* function : row.functions)
            rows.push_back({function, false, kNothing, row.reason});
    }
    return rows;
}
