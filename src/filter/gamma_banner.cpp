#include "filter/gamma_banner.h"

#include <ctime>

#include "app/state/app_state.h"
#include "store/event_log.h"
#include "win32/platform.h"

namespace {

enum class Banner { NotNeeded, Visible, Demoted };

Banner CurrentBanner() {
    if (!g_app.useLegacyGamma || !g_app.lastApplyRejected) return Banner::NotNeeded;
    return IsRestartDoneSinceFix() ? Banner::Demoted : Banner::Visible;
}

}  // namespace

bool WasStartedAfter(std::uint64_t epoch, std::uint64_t now, std::uint64_t tick) {
    if (epoch == 0) return false;
    // Signed: negative if the clock is set so close to 1970 that the uptime exceeds it.
    const auto bootTime = static_cast<std::int64_t>(now - tick / 1000);
    return bootTime > 0 && static_cast<std::uint64_t>(bootTime) > epoch;
}

bool IsRestartDoneSinceFix() {
    if (!g_app.gammaRangeExpanded) return false;
    return WasStartedAfter(g_app.gammaFixEpoch, static_cast<std::uint64_t>(std::time(nullptr)),
                           GetTickCount64());
}

bool IsBannerVisible() {
    return CurrentBanner() == Banner::Visible;
}

void LogBannerDemotionOnce() {
    if (g_app.bannerDemotedLogged || CurrentBanner() != Banner::Demoted) return;
    g_app.bannerDemotedLogged = true;
    LogEvent(
        "Gamma fix exhausted: ramps still rejected after restart (driver level limit?) - banner demoted");
}
