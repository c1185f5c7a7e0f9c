#include "ui/fonts.h"

#include "app/state/app_state.h"

namespace {

struct FontRow {
    FontRole role;
    const wchar_t* face;
    int height;  // of the character cell, in design units
    int weight;
    DWORD quality;
    DWORD pitchAndFamily;
    FontRole fallback;
};

constexpr DWORD kAnyPitch = DEFAULT_PITCH | FF_DONTCARE;

constexpr FontRow kFonts[kFontCount] = {
    {FontRole::Title, L"Segoe UI", 14, 900, CLEARTYPE_QUALITY, kAnyPitch, FontRole::Title},
    {FontRole::Caption, L"Segoe UI", 17, 900, CLEARTYPE_QUALITY, kAnyPitch, FontRole::Small},
    {FontRole::Small, L"Segoe UI", 12, 700, CLEARTYPE_QUALITY, kAnyPitch, FontRole::Small},
    {FontRole::Value, L"Consolas", 12, 700, CLEARTYPE_QUALITY, FIXED_PITCH | FF_MODERN, FontRole::Value},
    {FontRole::Label, L"Segoe UI", 13, 900, CLEARTYPE_QUALITY, kAnyPitch, FontRole::Label},
    {FontRole::Preset, L"Segoe UI", 12, 700, ANTIALIASED_QUALITY, kAnyPitch, FontRole::Label},
    {FontRole::Toggle, L"Segoe UI", 18, 900, ANTIALIASED_QUALITY, kAnyPitch, FontRole::Toggle},
    {FontRole::Glyph, L"Segoe MDL2 Assets", 18, 400, CLEARTYPE_QUALITY, kAnyPitch, FontRole::Label},
};

constexpr int IndexOf(FontRole role) {
    return static_cast<int>(role);
}

constexpr bool RowsAreInRoleOrder() {
    int expected = 0;
    for (const FontRow& row : kFonts) {
        if (IndexOf(row.role) != expected++) return false;
    }
    return true;
}
static_assert(RowsAreInRoleOrder(), "FontFor indexes the table by role");

}  // namespace

void CreateFonts() {
    for (const FontRow& row : kFonts) {
        g_app.fonts[IndexOf(row.role)] =
            CreateFontW(row.height, 0, 0, 0, row.weight, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                        OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, row.quality, row.pitchAndFamily, row.face);
    }
}

void DeleteFonts() {
    for (HFONT& font : g_app.fonts) {
        if (font != nullptr) DeleteObject(font);
        font = nullptr;
    }
}

HFONT FontFor(FontRole role) {
    HFONT font = g_app.fonts[IndexOf(role)];
    return font != nullptr ? font : g_app.fonts[IndexOf(kFonts[IndexOf(role)].fallback)];
}
