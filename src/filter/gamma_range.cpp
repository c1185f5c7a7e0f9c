#include "filter/gamma_range.h"

#include <ctime>

#include "app/state/app_state.h"
#include "app/state/program_names.h"
#include "store/event_log.h"
#include "win32/guards.h"

namespace {

constexpr wchar_t kKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ICM";
constexpr wchar_t kValue[] = L"GdiIcmGammaRange";
constexpr DWORD kExpanded = 256;  // this or more

}  // namespace

bool IsGammaRangeExpanded() {
    RegistryKey icm;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kKey, 0, KEY_QUERY_VALUE | KEY_WOW64_64KEY, icm.Out()) !=
        ERROR_SUCCESS) {
        return false;
    }
    DWORD type = 0;
    DWORD range = 0;
    DWORD bytes = sizeof(range);
    const LSTATUS status =
        RegQueryValueExW(icm.key, kValue, nullptr, &type, reinterpret_cast<BYTE*>(&range), &bytes);
    return status == ERROR_SUCCESS && type == REG_DWORD && range >= kExpanded;
}

bool ExpandGammaRange() {
    RegistryKey icm;
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, kKey, 0, nullptr, REG_OPTION_NON_VOLATILE,
                        KEY_SET_VALUE | KEY_WOW64_64KEY, nullptr, icm.Out(), nullptr) != ERROR_SUCCESS) {
        return false;
    }
    return RegSetValueExW(icm.key, kValue, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&kExpanded),
                          sizeof(kExpanded)) == ERROR_SUCCESS;
}

int RunGammaRangeHelper() {
    if (ExpandGammaRange()) {
        MessageBoxW(
            nullptr,
            L"Done. The limit has been removed.\n\nNow restart your computer (click Restart, not Shut "
            L"down).\nEverything should work after the restart.",
            kProgramTitle, MB_ICONINFORMATION);
        return 0;
    }
    MessageBoxW(
        nullptr,
        L"Windows did not allow the change. Ambrel will keep\nworking with mild settings only.\n\nNeed help? "
        L"Email " AMBREL_SUPPORT_ADDRESS L".",
        kProgramTitle, MB_ICONERROR);
    return 1;
}

bool WasStartedAfter(std::uint64_t epoch, std::uint64_t now, std::uint64_t tick) {
    if (epoch == 0) return false;
    // Signed, for a clock set back below the time that the machine has been running.
    const auto bootTime = static_cast<std::int64_t>(now - tick / 1000);
    return bootTime > 0 && static_cast<std::uint64_t>(bootTime) > epoch;
}

bool IsRestartDoneSinceFix() {
    if (!g_app.gammaRangeExpanded) return false;
    return WasStartedAfter(g_app.gammaFixEpoch, static_cast<std::uint64_t>(std::time(nullptr)),
                           GetTickCount64());
}

bool IsBannerVisible() {
    if (!g_app.useLegacyGamma || !g_app.lastApplyRejected) return false;
    if (!IsRestartDoneSinceFix()) return true;
    if (!g_app.bannerDemotedLogged) {
        g_app.bannerDemotedLogged = true;
        LogEvent(
            "Gamma fix exhausted: ramps still rejected after restart (driver level limit?) - banner demoted");
    }
    return false;
}
