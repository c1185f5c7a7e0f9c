#include "ui/status_strip.h"

#include "app/state/app_state.h"
#include "filter/gamma_banner.h"
#include "ui/drawing_kit.h"
#include "ui/palette.h"
#include "ui/panel_texts.h"
#include "ui/pwm_card_label.h"
#include "ui/regions.h"
#include "ui/strip_content.h"

namespace {

constexpr RECT kCardTitleRect = {36, 387, 226, 402};
constexpr RECT kCardStatusRect = {36, 400, 226, 414};
constexpr RECT kCardSwitchRect = {234, 384, 284, 418};

struct CardColours {
    COLORREF accent;
    COLORREF top;
    COLORREF bottom;
};

constexpr CardColours kCardWarning = {kColourAmber, Hex(0x1C180C), Hex(0x120F08)};
constexpr CardColours kCardNeutral = {Hex(0x6E6E6E), Hex(0x161616), Hex(0x0C0C0C)};
constexpr CardColours kCardLocked = {kColourGreen, Hex(0x122016), Hex(0x0A140E)};

CardColours CurrentCardColours() {
    if (g_app.pwmSafe) return g_app.pwmLockConfirmed ? kCardLocked : kCardWarning;
    return g_app.pwmTargetsAt100 < g_app.pwmTargetCount ? kCardWarning : kCardNeutral;
}

void DrawBanner(HDC dc) {
    DrawTextLine(dc, FontRole::Small, kColourRed, kHintRect, kAlignTopCentre, BannerText());
}

void DrawCard(HDC dc) {
    const RECT card = RegionRect(Region::PwmCard);
    const CardColours colours = CurrentCardColours();
    FillRoundedGradient(dc, card, 8, colours.top, colours.bottom);
    DrawEdgeLines(dc, card, 8, g_app.pwmSafe ? Hex(0x787878) : Hex(0x505050), kColourBlack);
    OutlineRoundRect(dc, card, 16, colours.accent);
    DrawTextLine(dc, FontRole::Label, kColourText, kCardTitleRect, kAlignLeft, kCardTitle);
    DrawTextLine(dc, FontRole::Small, colours.accent, kCardStatusRect, kAlignLeft, PwmCardLabel());
    DrawTextLine(dc, FontRole::Label, g_app.pwmSafe ? kColourText : kColourDimmed, kCardSwitchRect,
                 kAlignRight, g_app.pwmSafe ? L"ON" : L"OFF");
}

// The unlit colour is barely visible by design.
void DrawHint(HDC dc) {
    DrawTextLine(dc, FontRole::Small, IsHintLit() ? kColourAmber : kColourHintUnlit, kHintRect,
                 kAlignTopCentre, kHintText);
}

}  // namespace

void DrawStatusStrip(HDC dc) {
    LogBannerDemotionOnce();
    switch (CurrentStripContent()) {
        case StripContent::Banner: DrawBanner(dc); return;
        case StripContent::Card: DrawCard(dc); return;
        case StripContent::Hint: DrawHint(dc); return;
    }
}
