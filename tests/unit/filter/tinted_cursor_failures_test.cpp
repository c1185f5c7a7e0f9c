// The calls of one tinted copy. Every failure returns no cursor and releases each object exactly once.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "filter/cursor_factory.h"
#include "filter/cursor_gdi_tracker.h"
#include "filter/tinted_cursor.h"
#include "support/call_record.h"
#include "support/gdi_counts.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// White, with a hot spot and one transparent pixel in each row.
CursorPicture Coloured(int width, int height) {
    CursorPicture picture = PlainPicture(width, height, 0xFFFFFFFF);
    picture.hotX = 3;
    picture.hotY = 5;
    for (int y = 0; y < height; ++y) {
        picture.pixels[static_cast<std::size_t>(y * width + y % width)] = 0;
        picture.mask[static_cast<std::size_t>(y * width + y % width)] = 1;
    }
    return picture;
}

// Columns of black, white, transparent and inverting pixels in turn.
CursorPicture Monochrome(int width, int height) {
    CursorPicture picture;
    picture.width = width;
    picture.height = height;
    picture.hotX = 3;
    picture.hotY = 5;
    picture.coloured = false;
    picture.mask.resize(static_cast<std::size_t>(2 * width * height));
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            picture.mask[static_cast<std::size_t>(y * width + x)] = x % 4 >= 2 ? 1 : 0;
            picture.mask[static_cast<std::size_t>((y + height) * width + x)] = x % 2 != 0 ? 1 : 0;
        }
    }
    return picture;
}

const std::string kAsk = "ask";

std::string Dib(int width, int height) {
    return "dib " + std::to_string(width) + "x" + std::to_string(-height) +
           " planes=1 bits=32 compression=0 header=40 usage=0";
}

std::string ReadMask(int width, int height) {
    const std::string lines = std::to_string(2 * height);
    return "read mask " + std::to_string(width) + "x-" + lines + " bits=1 lines 0+" + lines;
}

std::string Size(int width, int height) {
    return std::to_string(width) + "x" + std::to_string(height);
}

// DI_NORMAL is 3.
std::string Draw(int width, int height) {
    return "draw at 0,0 " + Size(width, height) + " step=0 brush=0 flags=3";
}

std::string NewMask(int width, int height) {
    return "mask " + Size(width, height) + " planes=1 bits=1";
}

std::string Make(const std::string& mask) {
    return "make icon=0 hot=3,5 mask=" + mask + " colour=dib";
}

class TintedCursorCalls : public testing::Test {
protected:
    void SetUp() override {
        // On the first use of a cursor Windows creates objects that it keeps for the entire run.
        Use(Coloured(2, 2));
        BuildTracked();
        StopTracking();
        Forget();
        before_ = CurrentGdiCounts();
    }

    void TearDown() override {
        StopTracking();
        EXPECT_THAT(g_tracker.errors, IsEmpty());
        if (tinted_ != nullptr) {
            EXPECT_EQ(g_tracker.open[tinted_], "cursor");
            g_tracker.open.erase(tinted_);
        }
        EXPECT_THAT(g_tracker.open, IsEmpty());
        Forget();
        EXPECT_EQ(CurrentGdiCounts(), before_);
    }

    void Use(const CursorPicture& picture) {
        Forget();
        source_ = MakeCursor(picture);
        ASSERT_NE(source_, nullptr);
        StartTracking();
    }

    // At the settings of the NIGHT button.
    HCURSOR BuildTracked() {
        tinted_ = BuildTintedCursor(source_, 1.0, 0.7);
        return tinted_;
    }

    void ExpectNothingBuilt(GdiCall failing) {
        g_tracker.failing = {failing};
        EXPECT_EQ(BuildTracked(), nullptr);
    }

    void Forget() {
        DestroyCreatedCursor(source_);
        DestroyCreatedCursor(tinted_);
        source_ = tinted_ = nullptr;
    }

    HCURSOR source_ = nullptr;
    HCURSOR tinted_ = nullptr;

private:
    GdiCounts before_ = {};
};

}  // namespace

TEST_F(TintedCursorCalls, ACursorWithColoursIsDrawnAndKeepsItsOwnMask) {
    Use(Coloured(48, 32));
    ASSERT_NE(BuildTracked(), nullptr);
    EXPECT_THAT(g_calls, ElementsAre(kAsk, Dib(48, 32), Draw(48, 32), Make("its own")));
}

TEST_F(TintedCursorCalls, AMonochromeCursorIsReadAndGetsANewMask) {
    Use(Monochrome(20, 12));
    ASSERT_NE(BuildTracked(), nullptr);
    EXPECT_THAT(g_calls, ElementsAre(kAsk, Dib(20, 12), ReadMask(20, 12), NewMask(20, 12), Make("new")));
    ASSERT_EQ(g_tracker.maskBits.size(), 48U) << "rows are padded to 16 bits";
    for (std::size_t row = 0; row < 12; ++row) {
        EXPECT_EQ(g_tracker.maskBits[row * 4], 0x22) << "the third and the seventh pixel";
        EXPECT_EQ(g_tracker.maskBits[row * 4 + 1], 0x22);
        EXPECT_EQ(g_tracker.maskBits[row * 4 + 2], 0x20);
        EXPECT_EQ(g_tracker.maskBits[row * 4 + 3], 0x00) << "the padding";
    }
}

TEST_F(TintedCursorCalls, ColoursWithoutAMaskGetOneBuiltFromWhatIsDrawn) {
    Use(Coloured(33, 8));
    g_tracker.withoutMask = true;
    ASSERT_NE(BuildTracked(), nullptr);
    EXPECT_THAT(g_calls, ElementsAre(kAsk, Dib(33, 8), Draw(33, 8), NewMask(33, 8), Make("new")));
    ASSERT_EQ(g_tracker.maskBits.size(), 48U);
    for (std::size_t row = 0; row < 8; ++row) {
        EXPECT_EQ(g_tracker.maskBits[row * 6], 0x80 >> row) << "the transparent pixel of row " << row;
        for (std::size_t byte = 1; byte < 6; ++byte)
            EXPECT_EQ(g_tracker.maskBits[row * 6 + byte], 0x00);
    }
    const CursorPicture result = ReadCursor(tinted_);
    EXPECT_EQ(result.PixelAt(0, 0), 0x00000000U);
    EXPECT_TRUE(result.MaskAt(0, 0));
    EXPECT_EQ(result.PixelAt(1, 0), 0xFFB30000U);
    EXPECT_FALSE(result.MaskAt(1, 0));
}

TEST_F(TintedCursorCalls, ColoursWithNeitherMaskNorAlphaBecomeOpaque) {
    CursorPicture picture = PlainPicture(16, 1, 0x00FFFFFF);
    picture.pixels[2] = 0;
    Use(picture);
    g_tracker.withoutMask = true;
    ASSERT_NE(BuildTracked(), nullptr);
    EXPECT_EQ(g_tracker.maskBits, (std::vector<unsigned char>{0x20, 0x00}));
    const CursorPicture result = ReadCursor(tinted_);
    EXPECT_EQ(result.PixelAt(1, 0), 0xFFB30000U);
    EXPECT_EQ(result.PixelAt(2, 0), 0x00000000U);
}

TEST_F(TintedCursorCalls, ACursorWithoutAnyBitmapIsDrawnInTheSizeOfTheSystem) {
    Use(Coloured(32, 32));
    g_tracker.withoutColour = g_tracker.withoutMask = true;
    g_tracker.cursorMetrics = {20, 12};
    ASSERT_NE(BuildTracked(), nullptr);
    EXPECT_THAT(g_calls, ElementsAre(kAsk, Dib(20, 12), Draw(20, 12), NewMask(20, 12), Make("new")));
    const CursorPicture result = ReadCursor(tinted_);
    EXPECT_EQ(result.width, 20);
    EXPECT_EQ(result.height, 12);
}

TEST_F(TintedCursorCalls, ACursorWithoutSizeIsNotBuilt) {
    Use(Coloured(32, 32));
    g_tracker.withoutColour = g_tracker.withoutMask = true;
    g_tracker.cursorMetrics = {20, 0};
    EXPECT_EQ(BuildTracked(), nullptr);
    EXPECT_THAT(g_calls, ElementsAre(kAsk));
}

TEST_F(TintedCursorCalls, AMonochromeMaskOfOneRowHasNoTwoHalves) {
    Use(PlainPicture(1, 1, 0xFFFFFFFF));
    g_tracker.withoutColour = true;
    EXPECT_EQ(BuildTracked(), nullptr);
    EXPECT_THAT(g_calls, ElementsAre(kAsk));
    EXPECT_EQ(g_tracker.created["info bitmap"], 1);
}

TEST_F(TintedCursorCalls, ANullCursorIsNotQueried) {
    StartTracking();
    EXPECT_EQ(BuildTintedCursor(nullptr, 1.0, 0.7), nullptr);
    EXPECT_THAT(g_calls, IsEmpty());
    EXPECT_THAT(g_tracker.created, IsEmpty());
}

TEST_F(TintedCursorCalls, ACursorThatCannotBeQueriedIsNotBuilt) {
    Use(Coloured(32, 32));
    ExpectNothingBuilt(GdiCall::GetIconInfo);
    EXPECT_THAT(g_calls, ElementsAre(kAsk));
    EXPECT_THAT(g_tracker.created, IsEmpty());
}

TEST_F(TintedCursorCalls, AFailureHalfWayThroughTheQueryLeavesNothingToDelete) {
    Use(Coloured(32, 32));
    g_tracker.staleOnFailure = true;
    ExpectNothingBuilt(GdiCall::GetIconInfo);
}

TEST_F(TintedCursorCalls, BitmapsThatCannotBeMeasuredAreReleased) {
    for (const CursorPicture& picture : {Coloured(32, 32), Monochrome(32, 32)}) {
        Use(picture);
        ExpectNothingBuilt(GdiCall::GetObjectW);
        EXPECT_THAT(g_calls, ElementsAre(kAsk));
        EXPECT_EQ(g_tracker.created["info bitmap"], picture.coloured ? 2 : 1);
        EXPECT_THAT(g_tracker.open, IsEmpty());
    }
}

TEST_F(TintedCursorCalls, WithoutAPictureToDrawIntoNothingIsBuilt) {
    for (const CursorPicture& picture : {Coloured(32, 32), Monochrome(32, 32)}) {
        Use(picture);
        ExpectNothingBuilt(GdiCall::CreateDIBSection);
        EXPECT_THAT(g_calls, ElementsAre(kAsk, Dib(32, 32)));
        EXPECT_THAT(g_tracker.open, IsEmpty());
    }
}

TEST_F(TintedCursorCalls, AMonochromeCursorThatCannotBeReadIsDrawnInstead) {
    Use(Monochrome(20, 12));
    g_tracker.failing = {GdiCall::GetDIBits};
    ASSERT_NE(BuildTracked(), nullptr);
    EXPECT_THAT(g_calls,
                ElementsAre(kAsk, Dib(20, 12), ReadMask(20, 12), Draw(20, 12), NewMask(20, 12), Make("new")));
    // Drawn on an empty bitmap, only white and inverting pixels leave a colour; all others are transparent.
    const CursorPicture result = ReadCursor(tinted_);
    ASSERT_EQ(result.width, 20);
    ASSERT_EQ(result.height, 12);
    for (int x = 0; x < 20; ++x) {
        EXPECT_EQ(result.PixelAt(x, 7), x % 2 != 0 ? 0xFFB30000U : 0U) << x;
        EXPECT_EQ(result.MaskAt(x, 7), x % 2 == 0) << x;
    }
}

TEST_F(TintedCursorCalls, AMonochromeCursorThatIsReadOnlyInPartIsDrawnInstead) {
    Use(Monochrome(20, 12));
    g_tracker.linesMissing = 1;
    ASSERT_NE(BuildTracked(), nullptr);
    EXPECT_THAT(g_calls,
                ElementsAre(kAsk, Dib(20, 12), ReadMask(20, 12), Draw(20, 12), NewMask(20, 12), Make("new")));
    EXPECT_EQ(ReadCursor(tinted_).PixelAt(0, 0), 0U);
}

TEST_F(TintedCursorCalls, ACursorThatCannotBeDrawnIsNotBuilt) {
    Use(Coloured(32, 32));
    ExpectNothingBuilt(GdiCall::DrawIconEx);
    EXPECT_THAT(g_calls, ElementsAre(kAsk, Dib(32, 32), Draw(32, 32)));
    EXPECT_EQ(g_tracker.created["memory context"], 1);
}

TEST_F(TintedCursorCalls, AMonochromeCursorThatCanNeitherBeReadNorDrawnIsNotBuilt) {
    Use(Monochrome(32, 32));
    g_tracker.failing = {GdiCall::GetDIBits, GdiCall::DrawIconEx};
    EXPECT_EQ(BuildTracked(), nullptr);
    EXPECT_THAT(g_calls, ElementsAre(kAsk, Dib(32, 32), ReadMask(32, 32), Draw(32, 32)));
}

TEST_F(TintedCursorCalls, WithoutAContextToDrawInNothingIsBuilt) {
    Use(Coloured(32, 32));
    ExpectNothingBuilt(GdiCall::CreateCompatibleDC);
}

TEST_F(TintedCursorCalls, WithoutTheScreensContextACopyIsStillBuilt) {
    Use(Coloured(32, 32));
    g_tracker.failing = {GdiCall::GetDC};
    ASSERT_NE(BuildTracked(), nullptr);
    EXPECT_EQ(ReadCursor(tinted_).PixelAt(9, 0), 0xFFB30000U);
}

TEST_F(TintedCursorCalls, WithoutANewMaskNothingIsBuilt) {
    Use(Monochrome(32, 32));
    ExpectNothingBuilt(GdiCall::CreateBitmap);
    EXPECT_EQ(g_tracker.created["dib"], 1);
    EXPECT_EQ(g_tracker.created["mask"], 0);
}

TEST_F(TintedCursorCalls, ACursorThatCannotBeCreatedLeaksNoneOfItsParts) {
    for (const CursorPicture& picture : {Coloured(32, 32), Monochrome(32, 32)}) {
        Use(picture);
        ExpectNothingBuilt(GdiCall::CreateIconIndirect);
        EXPECT_EQ(g_calls.back(), Make(picture.coloured ? "its own" : "new"));
        EXPECT_EQ(g_tracker.created["info bitmap"], picture.coloured ? 2 : 1);
        EXPECT_EQ(g_tracker.created["dib"], 1);
        EXPECT_EQ(g_tracker.created["mask"], picture.coloured ? 0 : 1);
        EXPECT_THAT(g_tracker.open, IsEmpty());
    }
}

TEST_F(TintedCursorCalls, EveryObjectOfACopyIsReleasedExactlyOnce) {
    for (const int size : {1, 32, 48, 64, 96}) {
        for (const CursorPicture& picture : {Coloured(size, size), Monochrome(size, size)}) {
            Use(picture);
            ASSERT_NE(BuildTracked(), nullptr) << size;
            EXPECT_EQ(g_tracker.created["info bitmap"], picture.coloured ? 2 : 1);
            EXPECT_EQ(g_tracker.created["dib"], 1);
            EXPECT_EQ(g_tracker.created["mask"], picture.coloured ? 0 : 1);
            EXPECT_EQ(g_tracker.created["memory context"], 1);
            EXPECT_EQ(g_tracker.created["cursor"], 1);
            EXPECT_EQ(g_tracker.open.size(), 1U) << "the new cursor";
            EXPECT_THAT(g_tracker.errors, IsEmpty());
        }
    }
}

// The tracker itself must be able to detect leaks.
TEST_F(TintedCursorCalls, TheTrackerAndTheCountsDetectLeaks) {
    StartTracking();
    const HBITMAP kept = CreateBitmap(1, 1, 1, 1, nullptr);
    EXPECT_EQ(g_tracker.open.size(), 1U);
    const GdiCounts one = CurrentGdiCounts();
    DeleteObject(kept);
    EXPECT_THAT(g_tracker.open, IsEmpty());
    EXPECT_EQ(CurrentGdiCounts().gdiObjects, one.gdiObjects - 1);
    DeleteObject(kept);
    EXPECT_EQ(g_tracker.errors.size(), 1U);
    g_tracker.errors.clear();

    const HCURSOR cursor = MakeCursor(Coloured(8, 8));
    EXPECT_EQ(CurrentGdiCounts().icons, one.icons + 1);
    DestroyCreatedCursor(cursor);
    EXPECT_EQ(CurrentGdiCounts().icons, one.icons);
}
