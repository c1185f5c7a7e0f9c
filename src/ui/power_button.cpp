#include "ui/power_button.h"

#include <iterator>

#include "app/shell/header_icon.h"
#include "app/state/app_state.h"
#include "ui/drawing_kit.h"
#include "ui/palette.h"
#include "ui/panel_texts.h"
#include "ui/regions.h"
#include "win32/guards.h"

namespace {

constexpr int kIconGap = 8;
constexpr int kIconTop = 492;

constexpr ButtonColours kOn = {Hex(0x780000), Hex(0xCC0000), Hex(0x990000), Hex(0x500000)};
constexpr ButtonColours kOff = {Hex(0x222222), Hex(0x262626), Hex(0x1A1A1A), Hex(0x2D2D2D)};

int LabelWidth(HDC dc) {
    const SelectedObject selected(dc, FontFor(FontRole::Toggle));
    SIZE size = {};
    GetTextExtentPoint32W(dc, kPowerLabel, static_cast<int>(std::size(kPowerLabel) - 1), &size);
    return size.cx;
}

// Centres the icon and the label as one group.
void DrawContent(HDC dc, const RECT& button) {
    const int inner = button.right - button.left;
    const int width = LabelWidth(dc);
    LONG left = button.left;
    if (g_app.headerIcon != nullptr) {
        left += (inner - kHeaderIconUnits - kIconGap - width) / 2;
        DrawIconEx(dc, left, kIconTop, g_app.headerIcon, kHeaderIconUnits, kHeaderIconUnits, 0, nullptr,
                   DI_NORMAL);
        left += kHeaderIconUnits + kIconGap;
    } else {
        left += (inner - width) / 2;
    }
    DrawTextLine(dc, FontRole::Toggle, kColourText, {left, button.top, left + width + 6, button.bottom},
                 kAlignLeft, kPowerLabel);
}

}  // namespace

void DrawPowerButton(HDC dc) {
    const RECT button = RegionRect(Region::Power);
    const ButtonColours colours = g_app.filterOn ? kOn : kOff;
    DrawButtonSurface(dc, button, colours);
    DrawContent(dc, button);
}
