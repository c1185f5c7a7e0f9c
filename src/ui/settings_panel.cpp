#include "ui/settings_panel.h"

#include "app/state/app_state.h"
#include "app/state/program_names.h"
#include "ui/canvas.h"
#include "ui/drawing_kit.h"
#include "ui/palette.h"
#include "ui/regions.h"

namespace {

constexpr RECT kTitle = {22, 0, 240, kHeaderHeight};

constexpr int kRowCornerDiameter = 12;
constexpr int kLabelLeft = 36;
constexpr int kLabelRight = 226;
constexpr int kValueRight = 284;

constexpr int kSupportRadius = 8;
constexpr RECT kCopiedTitle = {36, 468, 284, 490};
constexpr RECT kCopiedHint = {36, 490, 284, 510};

struct SettingsRow {
    Region region;
    const wchar_t* label;
    bool AppState::*value;
};

constexpr SettingsRow kRows[] = {
    {Region::LaunchRow, L"LAUNCH AT STARTUP", &AppState::launchAtStart},
    {Region::ExtremeDimRow, L"ALLOW EXTREME DIM", &AppState::allowExtremeDim},
    {Region::LegacyRow, L"LEGACY MODE", &AppState::useLegacyGamma},
};

void DrawHeader(HDC dc) {
    FillHeaderBand(dc);
    DrawTextLine(dc, FontRole::Title, kColourText, kTitle, kAlignLeft, L"SETTINGS");
    DrawTextLine(dc, FontRole::Small, kColourRed, RegionRect(Region::Close), kAlignCentre, L"CLOSE");
}

void DrawRow(HDC dc, const SettingsRow& row) {
    const RECT box = RegionRect(row.region);
    DrawRoundBox(dc, box, kRowCornerDiameter, kColourRowSurface, 1, kColourRowOutline);
    DrawTextLine(dc, FontRole::Label, kColourText, {kLabelLeft, box.top, kLabelRight, box.bottom}, kAlignLeft,
                 row.label);
    DrawTextLine(dc, FontRole::Label, kColourText, {kLabelRight, box.top, kValueRight, box.bottom},
                 kAlignRight, g_app.*row.value ? L"ON" : L"OFF");
}

bool ShowsCopied() {
    return g_app.copiedUntil != 0 && GetTickCount64() < g_app.copiedUntil;
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
                     L"COPY FEEDBACK FOR SUPPORT");
        return;
    }
    DrawSupportSurface(dc, Hex(0x122416), Hex(0x0A180E));
    DrawTextLine(dc, FontRole::Label, Hex(0x78E696), kCopiedTitle, kAlignLeft, L"COPIED");
    DrawTextLine(dc, FontRole::Small, Hex(0x6EC882), kCopiedHint, kAlignLeft,
                 L"PASTE INTO AN EMAIL TO " AMBREL_SUPPORT_ADDRESS_CAPITALS);
}

}  // namespace

void DrawSettingsPanel(HDC dc) {
    DrawHeader(dc);
    for (const SettingsRow& row : kRows)
        DrawRow(dc, row);
    DrawSupportButton(dc);
}
