#include "filter/gamma_range.h"

#include <ctime>

#include "app/app_state.h"
#include "store/event_log.h"

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
