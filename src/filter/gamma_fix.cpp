#include "filter/gamma_fix.h"

#include <ctime>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "app/state/program_names.h"
#include "app/state/timers.h"
#include "filter/gamma_range.h"
#include "filter/gamma_range_helper.h"
#include "store/event_log.h"
#include "store/settings.h"
#include "win32/program_path.h"

namespace {

constexpr std::uint64_t kConfirmationTimeout = 120000;  // ms
constexpr INT_PTR kMaxShellError = 32;                  // ShellExecuteW returns more than this on success

bool AskForPermission() {
    return MessageBoxW(
               g_app.mainWindow,
               L"Some of your settings are being blocked by Windows.\n\nAmbrel can fix this with your "
               L"permission. A restart\nis needed afterwards.\n\nFix it now?",
               kProgramTitle, MB_YESNO | MB_ICONQUESTION) == IDYES;
}

// Returns the result of ShellExecuteW, or SE_ERR_FNF if the program's path is too long.
INT_PTR LaunchElevatedHelper() {
    const std::wstring path = ProgramPath();
    if (path.empty()) return SE_ERR_FNF;
    return reinterpret_cast<INT_PTR>(ShellExecuteW(g_app.mainWindow, L"runas", path.c_str(),
                                                   kExpandGammaRangeSwitch, nullptr, SW_SHOWNORMAL));
}

}  // namespace

void StartGammaRangeFix() {
    if (g_app.gammaRangeExpanded) {
        MessageBoxW(
            g_app.mainWindow,
            L"The fix is already done. Just restart your computer\nto finish. Use Restart, not Shut down.",
            kProgramTitle, MB_ICONINFORMATION);
        return;
    }
    if (!AskForPermission()) return;
    const INT_PTR result = LaunchElevatedHelper();
    if (result <= kMaxShellError) {
        LogEvent("Gamma-range fix helper failed to launch (rc=%d)", static_cast<int>(result));
        return;
    }
    g_app.gammaFixPending = true;
    g_app.gammaFixDeadline = GetTickCount64() + kConfirmationTimeout;
    StartTimer(TimerId::GammaFixPoll);
    LogEvent("Gamma-range fix helper launched (elevation requested)");
}

void OnGammaFixTimer() {
    PollGammaFix(static_cast<std::uint64_t>(std::time(nullptr)), GetTickCount64());
}

void PollGammaFix(std::uint64_t now, std::uint64_t tick) {
    if (IsGammaRangeExpanded()) {
        StopTimer(TimerId::GammaFixPoll);
        g_app.gammaRangeExpanded = true;
        g_app.gammaFixPending = false;
        g_app.gammaFixEpoch = now;
        SaveSettings();
        LogEvent("Gamma-range expansion confirmed in registry - restart pending");
        RefreshPopupAndTray();
    } else if (tick > g_app.gammaFixDeadline) {
        StopTimer(TimerId::GammaFixPoll);
        g_app.gammaFixPending = false;
        LogEvent("Gamma-range fix not confirmed (helper cancelled?)");
    }
}
