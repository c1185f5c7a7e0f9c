#include "ui/strip_content.h"

#include "app/state/app_state.h"
#include "filter/gamma_banner.h"

namespace {

// The hint is lit below this software brightness.
constexpr double kHintBrightness = 0.9;

}  // namespace

StripContent CurrentStripContent() {
    if (IsBannerVisible()) return StripContent::Banner;
    return g_app.pwmTargetsPresent || g_app.pwmSafe ? StripContent::Card : StripContent::Hint;
}

const wchar_t* BannerText() {
    return g_app.gammaRangeExpanded ? L"\u26a0 FIX APPLIED. RESTART YOUR COMPUTER"
                                    : L"\u26a0 COLORS BLOCKED BY WINDOWS. CLICK TO FIX";
}

bool IsHintLit() {
    return g_app.brightness < kHintBrightness;
}
