#include "app/startup.h"

#include <cwchar>

#include "app/crash_guard.h"
#include "app/message_loop.h"
#include "app/popup_window.h"
#include "app/shell/ensure_tray_icon.h"
#include "app/shell/header_icon.h"
#include "app/single_instance.h"
#include "app/state/app_state.h"
#include "app/state/program_names.h"
#include "app/state/timers.h"
#include "diag/system_probe.h"
#include "filter/cursor_tint.h"
#include "filter/gamma_range.h"
#include "filter/gamma_range_helper.h"
#include "filter/legacy_gamma.h"
#include "filter/magnification.h"
#include "res/version.h"
#include "store/autostart.h"
#include "store/event_log.h"
#include "store/settings.h"
#include "ui/fonts.h"
#include "ui/palette.h"
#include "win32/system_library.h"

#include <objbase.h>
#include <shellscalingapi.h>

namespace {

void LogStartLines() {
    LogEvent("Ambrel Windows v%ls starting", L"" AMBREL_VERSION);
    const OsInfo os = ReadOsInfo();
    LogEvent("OS: %ls %ls (%lu.%lu.%lu)", os.productName.empty() ? L"Windows" : os.productName.c_str(),
             os.displayVersion.c_str(), os.major, os.minor, os.build);
    LogEvent("Hardware: %ls / %ls", ReadHardwareName().c_str(), ReadCpuName().c_str());
}

// WMI calls require these security settings.
void PrepareCom() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
    CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_DEFAULT,
                         RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE, nullptr);
}

void BecomeDpiAware() {
    const SystemLibrary shcore(L"Shcore.dll");
    const auto setAwareness = shcore.Find<decltype(&SetProcessDpiAwareness)>("SetProcessDpiAwareness");
    if (setAwareness == nullptr) {
        SetProcessDPIAware();
        return;
    }
    // Access denied: the awareness is already set, by the manifest or a compatibility setting.
    const HRESULT result = setAwareness(PROCESS_PER_MONITOR_DPI_AWARE);
    if (FAILED(result) && result != E_ACCESSDENIED) SetProcessDPIAware();
}

void CreateDrawingResources() {
    g_app.backgroundBrush = CreateSolidBrush(kColourBackground);
    CreateFonts();
    RebuildScaledResources();
}

// The log file is located next to settings.ini. Without a settings path the log is kept in memory only.
void OpenLogNextToSettings() {
    if (g_app.settingsPath.empty()) return;
    const std::size_t lastBackslash = g_app.settingsPath.rfind(L'\\');
    const std::wstring folder = lastBackslash == std::wstring::npos
                                    ? std::wstring()
                                    : g_app.settingsPath.substr(0, lastBackslash + 1);
    OpenEventLogFile(folder + L"events.log");
}

void ReadGammaRange() {
    g_app.gammaRangeExpanded = IsGammaRangeExpanded();
    LogEvent("Gamma range: %ls",
             g_app.gammaRangeExpanded ? L"expanded (GdiIcmGammaRange)" : L"Windows default");
}

void AddFirstTrayIcon() {
    if (EnsureTrayIcon()) return;
    LogEvent("Tray icon add failed (taskbar not ready?) - retry timer armed");
    g_app.trayRetryCount = 0;
    StartTimer(TimerId::TrayRetry);
}

int ReportStartFailure(const wchar_t* text) {
    MessageBoxW(nullptr, text, kProgramTitle, MB_ICONERROR);
    return 1;
}

void PrepareProcess() {
    g_app.startTick = GetTickCount64();
    LogStartLines();
    PrepareCom();
    BecomeDpiAware();
    g_app.dpi = kDesignDpi;
}

void PrepareState(HINSTANCE instance) {
    InstallCrashGuard();
    g_app.instance = instance;
    g_app.taskbarCreatedMessage = RegisterWindowMessageW(L"TaskbarCreated");
    CreateDrawingResources();
    LoadSettings();
    OpenLogNextToSettings();
    ReadGammaRange();
    RepairAutostartEntry();
    // An earlier run may have terminated without restoring the screen.
    ResetSystemCursors();
    ResetRampOfLastRun();
    InitMagnification();
}

}  // namespace

int RunAmbrel(HINSTANCE instance, const wchar_t* commandLine) {
    if (std::wcsstr(commandLine, kExpandGammaRangeSwitch) != nullptr) return RunGammaRangeHelper();
    PrepareProcess();
    if (!ClaimSingleInstance()) {
        SignalFirstInstance();
        CoUninitialize();
        return 0;
    }
    PrepareState(instance);
    if (!RegisterPopupClass()) return ReportStartFailure(L"Failed to register window class");
    if (!CreatePopupWindow()) {
        // While the displays were queried, an installer may have ended the program.
        return g_app.windowDestroyed ? 0 : ReportStartFailure(L"Failed to create window");
    }
    AddFirstTrayIcon();
    ShowWindow(g_app.mainWindow, SW_HIDE);
    const int exitCode = RunMessageLoop();
    CoUninitialize();
    return exitCode;
}
