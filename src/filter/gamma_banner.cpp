#include "filter/gamma_banner.h"

#include "app/state/app_state.h"
#include "filter/gamma_restart.h"
#include "store/event_log.h"

namespace {

enum class Banner { NotNeeded, Visible, Demoted };

Banner CurrentBanner() {
    if (!g_app.useLegacyGamma || !g_app.lastApplyRejected) return Banner::NotNeeded;
    return IsRestartDoneSinceFix() ? Banner::Demoted : Banner::Visible;
}

}  // namespace

bool IsBannerVisible() {
    return CurrentBanner() == Banner::Visible;
}

void LogBannerDemotionOnce() {
    if (g_app.bannerDemotedLogged || CurrentBanner() != Banner::Demoted) return;
    g_app.bannerDemotedLogged = true;
    LogEvent(
        "Gamma fix exhausted: ramps still rejected after restart (driver level limit?) - banner demoted");
}
