#include "ui/strip_content.h"

#include "app/state/app_state.h"
#include "filter/gamma_banner.h"

namespace {

// The hint is lit below this software brightness.
constexpr double kHintBrightness = 0.9;

}  // namespace

StatusStrip CurrentStatusStrip() {
    if (IsBannerVisible()) return StatusStrip::Banner;
    return g_app.pwmTargetsPresent || g_app.pwmSafe ? StatusStrip::Card : StatusStrip::Hint;
}

const wchar_t* BannerText() {
    return g_app.gammaRangeExpanded ? L"\u26a0 FIX APPLIED. RESTART YOUR COMPUTER"
                                    : L"\u26a0 COLORS BLOCKED BY WINDOWS. CLICK TO FIX";
}

bool IsHintLit() {
    return g_app.brightness < kHintBrightness;
}
