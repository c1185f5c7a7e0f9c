#include "ui/settings_panel.h"

#include "app/state/app_state.h"
#include "ui/canvas.h"
#include "ui/drawing_kit.h"
#include "ui/palette.h"
#include "ui/panel_header.h"
#include "ui/panel_texts.h"
#include "ui/regions.h"
#include "ui/settings_rows.h"
#include "ui/support_copy.h"

namespace {

constexpr int kRowCornerDiameter = 12;
constexpr int kLabelLeft = 36;
constexpr int kLabelRight = 226;
constexpr int kValueRight = 284;

constexpr int kSupportRadius = 8;
constexpr RECT kCopiedLabelRect = {36, 468, 284, 490};
constexpr RECT kCopiedHintRect = {36, 490, 284, 510};

void DrawHeader(HDC dc) {
    FillHeaderBand(dc);
    DrawTextLine(dc, FontRole::Title, kColourText, kSettingsTitleRect, kAlignLeft, kSettingsTitle);
    DrawTextLine(dc, FontRole::Small, kColourRed, RegionRect(Region::Close), kAlignCentre, kCloseLabel);
}

void DrawRow(HDC dc, const SettingsRow& row) {
    const RECT box = RegionRect(row.region);
    DrawRoundBox(dc, box, kRowCornerDiameter, kColourRowSurface, 1, kColourRowOutline);
    DrawTextLine(dc, FontRole::Label, kColourText, {kLabelLeft, box.top, kLabelRight, box.bottom}, kAlignLeft,
                 row.label);
    DrawTextLine(dc, FontRole::Label, kColourText, {kLabelRight, box.top, kValueRight, box.bottom},
                 kAlignRight, g_app.*row.value ? L"ON" : L"OFF");
}

void DrawSupportSurface(HDC dc, COLORREF fill, COLORREF outline) {
    const RECT box = RegionRect(Region::Support);
    FillRoundRect(dc, box.left, box.top, box.right - box.left, box.bottom - box.top, kSupportRadius, fill,
                  outline);
}

void DrawSupportButton(HDC dc) {
    if (!ShowsCopied()) {
        DrawSupportSurface(dc, Hex(0x161616), Hex(0x0C0C0C));
        DrawTextLine(dc, FontRole::Label, kColourText, RegionRect(Region::Support), kAlignCentre,
                     kSupportLabel);
        return;
    }
    DrawSupportSurface(dc, Hex(0x122416), Hex(0x0A180E));
    DrawTextLine(dc, FontRole::Label, Hex(0x78E696), kCopiedLabelRect, kAlignLeft, kCopiedLabel);
    DrawTextLine(dc, FontRole::Small, Hex(0x6EC882), kCopiedHintRect, kAlignLeft, kCopiedHint);
}

}  // namespace

void DrawSettingsPanel(HDC dc) {
    DrawHeader(dc);
    for (const SettingsRow& row : kSettingsRows)
        DrawRow(dc, row);
    DrawSupportButton(dc);
}
