// A long drag over the real system cursors. The shipped files run with a SetSystemCursor that takes ownership
// of its cursor and destroys it, as Windows does (Wine's does not). However often the cursors are tinted, the
// process owns as many GDI objects and icons as before, and nothing is loaded or copied again.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "app/state/app_state.h"
#include "filter/cursor_factory.h"
#include "filter/cursor_tint.h"
#include "filter/tinted_cursor.h"
#include "support/gdi_counts.h"
#include "support/seam.h"

namespace {

constexpr int kRetints = 10000;  // of one cursor; the soak test of thirty days tints 200,000 times
constexpr int kRetintsOfAll = 120;

struct {
    std::map<std::string, int> calls;
    std::map<DWORD, int> set;             // by id
    std::map<DWORD, CursorPicture> seen;  // as it was set, while `looking`
    bool looking = false;
    int refuseEvery = 0;  // 0: never
} g_system;

BOOL WINAPI FakeSetSystemCursor(HCURSOR cursor, DWORD id) {
    const int count = ++g_system.calls["SetSystemCursor"];
    if (g_system.refuseEvery != 0 && count % g_system.refuseEvery == 0) return FALSE;
    g_system.set[id] += 1;
    if (g_system.looking) g_system.seen[id] = ReadCursor(cursor);
    DestroyCreatedCursor(cursor);
    return TRUE;
}

BOOL WINAPI FakeSystemParametersInfoW(UINT action, UINT, void*, UINT) {
    g_system.calls[action == SPI_SETCURSORS ? "SPI_SETCURSORS" : "another parameter"] += 1;
    return TRUE;
}

HANDLE WINAPI FakeLoadImageW(HINSTANCE module, LPCWSTR name, UINT type, int width, int height, UINT flags) {
    g_system.calls["LoadImageW"] += 1;
    return Real(&LoadImageW)(module, name, type, width, height, flags);
}

HCURSOR WINAPI FakeLoadCursorW(HINSTANCE module, LPCWSTR name) {
    g_system.calls["LoadCursorW"] += 1;
    return Real(&LoadCursorW)(module, name);
}

HANDLE WINAPI FakeCopyImage(HANDLE image, UINT type, int width, int height, UINT flags) {
    g_system.calls["CopyImage"] += 1;
    return Real(&CopyImage)(image, type, width, height, flags);
}

HICON WINAPI FakeCopyIcon(HICON icon) {
    g_system.calls["CopyIcon"] += 1;
    return Real(&CopyIcon)(icon);
}

constexpr DWORD kIds[] = {32512, 32513, 32514, 32515, 32516, 32640, 32641, 32642,
                          32643, 32644, 32645, 32646, 32648, 32649, 32650, 32651};

class CursorLeak : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.filterOn = true;
        g_app.intensity = 0.2;
        g_app.brightness = 0.9;
        g_system = {};
        TintSystemCursors();
        ASSERT_TRUE(g_app.cursorsTinted);
        // The second tint, after Windows has created the objects that it keeps for the process.
        TintAt(0.25);
        before_ = CurrentGdiCounts();
        for (int row = 0; row < 16; ++row) {
            if (ReadCursor(g_app.baseCursors[row]).coloured) coloured_.push_back(kIds[row]);
        }
        g_system = {};
    }

    void TearDown() override { ReleaseCursorCopies(); }

    static void TintAt(double intensity) {
        g_app.intensity = intensity;
        TintSystemCursors();
    }

    // Every step is outside the dead band of the previous one.
    static void Drag(int steps) {
        for (int step = 0; step < steps; ++step)
            TintAt(static_cast<double>(step % 250) / 250.0);
    }

    // Compares each colour cursor that was set with the pixels that Windows draws for its base copy.
    template <typename Expected>
    void ExpectSeen(Expected expected) {
        ASSERT_FALSE(coloured_.empty());
        EXPECT_EQ(g_system.seen.size(), coloured_.size());
        for (int row = 0; row < 16; ++row) {
            const CursorPicture copy = ReadCursor(g_app.baseCursors[row]);
            if (!copy.coloured) {
                EXPECT_EQ(g_system.seen.count(kIds[row]), 0U) << "monochrome";
                continue;
            }
            const CursorPicture& seen = g_system.seen[kIds[row]];
            EXPECT_EQ(seen.width, copy.width);
            EXPECT_EQ(seen.height, copy.height);
            EXPECT_EQ(seen.hotX, copy.hotX);
            EXPECT_EQ(seen.hotY, copy.hotY);
            EXPECT_EQ(seen.mask, copy.mask);
            std::vector<Argb> wanted = DrawnPixels(g_app.baseCursors[row], copy.width, copy.height);
            for (Argb& pixel : wanted)
                pixel = expected(pixel);
            EXPECT_EQ(seen.pixels == wanted, true) << kIds[row];
        }
    }

    void ExpectNothingKept() { EXPECT_EQ(CurrentGdiCounts(), before_); }

    GdiCounts before_ = {};
    std::vector<DWORD> coloured_;
};

}  // namespace

AMBREL_SEAM(SetSystemCursor, FakeSetSystemCursor);
AMBREL_SEAM(SystemParametersInfoW, FakeSystemParametersInfoW);
AMBREL_SEAM(LoadImageW, FakeLoadImageW);
AMBREL_SEAM(LoadCursorW, FakeLoadCursorW);
AMBREL_SEAM(CopyImage, FakeCopyImage);
AMBREL_SEAM(CopyIcon, FakeCopyIcon);

// Only one cursor, so that ten thousand tints take seconds.
TEST_F(CursorLeak, TenThousandRetintsDoNotChangeTheCounts) {
    HCURSOR others[kSystemCursorCount];
    std::copy(std::begin(g_app.baseCursors), std::end(g_app.baseCursors), others);
    std::fill(std::begin(g_app.baseCursors) + 1, std::end(g_app.baseCursors), nullptr);
    Drag(kRetints);
    std::copy(std::begin(others), std::end(others), g_app.baseCursors);
    EXPECT_EQ(g_system.set, (std::map<DWORD, int>{{32512, kRetints}}));
    ExpectNothingKept();
}

TEST_F(CursorLeak, ManyRetintsOfAllSixteenDoNotChangeTheCountsAndLoadAndCopyNothing) {
    Drag(kRetintsOfAll);
    std::map<DWORD, int> expected;
    for (const DWORD id : coloured_)
        expected[id] = kRetintsOfAll;
    EXPECT_EQ(g_system.set, expected);
    // In particular neither LoadImageW, LoadCursorW, CopyImage nor CopyIcon.
    EXPECT_EQ(g_system.calls, (std::map<std::string, int>{
                                  {"SetSystemCursor", kRetintsOfAll * static_cast<int>(coloured_.size())}}));
    ExpectNothingKept();
}

TEST_F(CursorLeak, CursorsThatWindowsRefusesAreDestroyedByTheProgram) {
    g_system.refuseEvery = 3;
    Drag(30);
    EXPECT_GT(g_system.calls["SetSystemCursor"], 30);
    ExpectNothingKept();
    g_system.refuseEvery = 1;
    Drag(30);
    ExpectNothingKept();
}

TEST_F(CursorLeak, AThousandCopiesOfAMonochromeCursorDoNotChangeTheCounts) {
    CursorPicture picture;
    picture.width = picture.height = 32;
    picture.coloured = false;
    picture.mask.assign(2 * 32 * 32, 1);
    const HCURSOR source = MakeCursor(picture);
    const GdiCounts withSource = CurrentGdiCounts();
    for (int i = 0; i < 1000; ++i)
        DestroyCreatedCursor(BuildTintedCursor(source, i / 1000.0, 0.5));
    EXPECT_EQ(CurrentGdiCounts(), withSource);
    DestroyCreatedCursor(source);
    ExpectNothingKept();
}

TEST_F(CursorLeak, RestoringAndReleasingManyTimesDoesNotChangeTheCounts) {
    ReleaseCursorCopies();
    const GdiCounts released = CurrentGdiCounts();
    for (int i = 0; i < 20; ++i) {
        TintAt(0.5);
        RestoreSystemCursors();
        TintAt(0.5);
        ReleaseCursorCopies();
    }
    EXPECT_EQ(CurrentGdiCounts(), released);
    EXPECT_EQ(g_system.calls["LoadImageW"], 20 * 16);
    EXPECT_EQ(g_system.calls["SPI_SETCURSORS"], 41);
}

TEST_F(CursorLeak, ALeakedCursorIsDetected) {
    HCURSOR kept = BuildTintedCursor(g_app.baseCursors[0], 0.5, 0.5);
    EXPECT_EQ(CurrentGdiCounts().icons, before_.icons + 1);
    EXPECT_GT(CurrentGdiCounts().gdiObjects, before_.gdiObjects);
    DestroyCreatedCursor(kept);
    ExpectNothingKept();
}

TEST_F(CursorLeak, NeutralSettingsRebuildTheColourCursorsWithUnchangedColours) {
    g_app.brightness = 1.0;
    g_system.looking = true;
    TintAt(0.0);
    ExpectSeen([](Argb drawn) { return drawn; });
}

TEST_F(CursorLeak, NightLeavesOnlySeventyPercentOfTheRedAndTheMonochromeOneItsSystemLook) {
    g_app.brightness = 0.7;
    g_system.looking = true;
    TintAt(1.0);
    ExpectSeen([](Argb drawn) {
        const auto red = static_cast<Argb>(std::lround((drawn >> 16 & 0xFF) * 0.7));
        return (drawn & 0xFF000000) | red << 16;
    });
}
