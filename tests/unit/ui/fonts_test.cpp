#include "ui/fonts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "app/state/app_state.h"
#include "support/seam.h"

namespace {

struct Font {
    int height, width, escapement, orientation, weight;
    DWORD italic, underline, strikeOut, charset, quality, pitch;
    std::wstring face;

    bool operator==(const Font&) const = default;
};

std::vector<Font> g_createdFonts;
std::vector<HGDIOBJ> g_deleted;
int g_failFrom = 1000;  // calls from this one on return no font

HFONT HandleOf(int call) {
    return reinterpret_cast<HFONT>(static_cast<INT_PTR>(0x500 + call));
}

HFONT WINAPI FakeCreateFontW(int height, int width, int escapement, int orientation, int weight, DWORD italic,
                             DWORD underline, DWORD strikeOut, DWORD charset, DWORD, DWORD, DWORD quality,
                             DWORD pitchAndFamily, LPCWSTR face) {
    const int call = static_cast<int>(g_createdFonts.size());
    g_createdFonts.push_back({height, width, escapement, orientation, weight, italic, underline, strikeOut,
                              charset, quality, pitchAndFamily & 3, face});
    return call < g_failFrom ? HandleOf(call) : nullptr;
}

BOOL WINAPI FakeDeleteObject(HGDIOBJ object) {
    g_deleted.push_back(object);
    return TRUE;
}

Font Row(const wchar_t* face, int height, int weight, DWORD quality, DWORD pitch = DEFAULT_PITCH) {
    return {height, 0, 0, 0, weight, 0, 0, 0, DEFAULT_CHARSET, quality, pitch, face};
}

constexpr FontRole kRoles[] = {FontRole::Title, FontRole::Caption, FontRole::Small,  FontRole::Value,
                               FontRole::Label, FontRole::Preset,  FontRole::Toggle, FontRole::Glyph};

class Fonts : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_createdFonts.clear();
        g_deleted.clear();
        g_failFrom = 1000;
    }

    // The arguments that created the font of a role.
    static Font CreatedFor(FontRole role) {
        for (int call = 0; call < static_cast<int>(g_createdFonts.size()); ++call) {
            if (FontFor(role) == HandleOf(call)) return g_createdFonts[static_cast<std::size_t>(call)];
        }
        return {};
    }

    static void Lose(FontRole role) {
        HFONT lost = FontFor(role);
        std::replace(std::begin(g_app.fonts), std::end(g_app.fonts), lost, HFONT{});
    }
};

}  // namespace

AMBREL_SEAM(CreateFontW, FakeCreateFontW);
AMBREL_SEAM(DeleteObject, FakeDeleteObject);

TEST_F(Fonts, EachRoleHasItsFaceHeightWeightAndQuality) {
    CreateFonts();
    ASSERT_EQ(g_createdFonts.size(), 8U);
    EXPECT_EQ(CreatedFor(FontRole::Title), Row(L"Segoe UI", 14, 900, CLEARTYPE_QUALITY));
    EXPECT_EQ(CreatedFor(FontRole::Caption), Row(L"Segoe UI", 17, 900, CLEARTYPE_QUALITY));
    EXPECT_EQ(CreatedFor(FontRole::Small), Row(L"Segoe UI", 12, 700, CLEARTYPE_QUALITY));
    EXPECT_EQ(CreatedFor(FontRole::Value), Row(L"Consolas", 12, 700, CLEARTYPE_QUALITY, FIXED_PITCH));
    EXPECT_EQ(CreatedFor(FontRole::Label), Row(L"Segoe UI", 13, 900, CLEARTYPE_QUALITY));
    EXPECT_EQ(CreatedFor(FontRole::Preset), Row(L"Segoe UI", 12, 700, ANTIALIASED_QUALITY));
    EXPECT_EQ(CreatedFor(FontRole::Toggle), Row(L"Segoe UI", 18, 900, ANTIALIASED_QUALITY));
    EXPECT_EQ(CreatedFor(FontRole::Glyph), Row(L"Segoe MDL2 Assets", 18, 400, CLEARTYPE_QUALITY));
}

TEST_F(Fonts, HeightsAreDesignUnitsAtEveryDpi) {
    g_app.dpi = 192;
    CreateFonts();
    EXPECT_EQ(CreatedFor(FontRole::Title).height, 14);
    EXPECT_EQ(CreatedFor(FontRole::Toggle).height, 18);
}

TEST_F(Fonts, ARoleWhoseFontExistsUsesIt) {
    CreateFonts();
    std::vector<HFONT> fonts;
    for (FontRole role : kRoles)
        fonts.push_back(FontFor(role));
    std::sort(fonts.begin(), fonts.end());
    EXPECT_EQ(std::unique(fonts.begin(), fonts.end()), fonts.end());
    EXPECT_EQ(std::count(fonts.begin(), fonts.end(), nullptr), 0);
}

TEST_F(Fonts, WithoutItsFontTheCaptionUsesTheSmallOne) {
    CreateFonts();
    Lose(FontRole::Caption);
    EXPECT_NE(FontFor(FontRole::Caption), nullptr);
    EXPECT_EQ(FontFor(FontRole::Caption), FontFor(FontRole::Small));
}

TEST_F(Fonts, WithoutTheirFontsPresetsAndGlyphsUseTheLabelFont) {
    CreateFonts();
    Lose(FontRole::Preset);
    Lose(FontRole::Glyph);
    EXPECT_NE(FontFor(FontRole::Label), nullptr);
    EXPECT_EQ(FontFor(FontRole::Preset), FontFor(FontRole::Label));
    EXPECT_EQ(FontFor(FontRole::Glyph), FontFor(FontRole::Label));
}

TEST_F(Fonts, TheOtherRolesHaveNoFallback) {
    for (FontRole role :
         {FontRole::Title, FontRole::Small, FontRole::Value, FontRole::Label, FontRole::Toggle}) {
        g_app = AppState{};
        g_createdFonts.clear();
        CreateFonts();
        Lose(role);
        EXPECT_EQ(FontFor(role), nullptr) << static_cast<int>(role);
    }
}

TEST_F(Fonts, WithoutAnyFontEveryRoleIsNull) {
    g_failFrom = 0;
    CreateFonts();
    for (FontRole role : kRoles)
        EXPECT_EQ(FontFor(role), nullptr) << static_cast<int>(role);
}

TEST_F(Fonts, DeletingReleasesEachFontOnce) {
    CreateFonts();
    DeleteFonts();
    std::vector<HGDIOBJ> expected;
    for (int call = 0; call < 8; ++call)
        expected.push_back(HandleOf(call));
    std::sort(g_deleted.begin(), g_deleted.end());
    EXPECT_EQ(g_deleted, expected);
    for (HFONT font : g_app.fonts)
        EXPECT_EQ(font, nullptr);
    DeleteFonts();
    EXPECT_EQ(g_deleted.size(), 8U);
}

TEST_F(Fonts, FontsThatWereNotCreatedAreNotDeleted) {
    g_failFrom = 3;
    CreateFonts();
    DeleteFonts();
    EXPECT_EQ(g_deleted.size(), 3U);
    EXPECT_EQ(std::count(g_deleted.begin(), g_deleted.end(), nullptr), 0);
}
