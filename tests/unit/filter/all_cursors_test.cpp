// A tint of all sixteen cursors with the shipped files: they are built one after the other in the same device
// contexts, and a cursor that fails does not spoil the next one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>

#include "app/state/app_state.h"
#include "filter/cursor_factory.h"
#include "filter/cursor_gdi_tracker.h"
#include "filter/cursor_tint.h"
#include "support/call_record.h"
#include "support/seam.h"

namespace {

using testing::IsEmpty;

std::map<DWORD, CursorPicture> g_set;

// Takes the cursor over, as Windows does.
BOOL WINAPI TakeSystemCursor(HCURSOR cursor, DWORD id) {
    g_set[id] = ReadCursor(cursor);
    g_tracker.open.erase(cursor);
    DestroyCreatedCursor(cursor);
    return TRUE;
}

// The size of each row differs from its neighbours', so that the remains of one would show in the next.
CursorPicture PictureOf(int row) {
    CursorPicture picture = PlainPicture(24 + row, 40 - row, 0xFFFFFFFF);
    picture.hotX = static_cast<DWORD>(row);
    return picture;
}

class AllCursors : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.filterOn = true;
        g_app.intensity = 1.0;
        g_app.brightness = 0.7;
        for (int row = 0; row < kSystemCursorCount; ++row)
            g_app.baseCursors[row] = MakeCursor(PictureOf(row));
        g_app.baseCursorsLoaded = true;
        g_set.clear();
        StartTracking();
    }

    void TearDown() override {
        StopTracking();
        EXPECT_THAT(g_tracker.errors, IsEmpty());
        EXPECT_THAT(g_tracker.open, IsEmpty());
        for (HCURSOR cursor : g_app.baseCursors)
            DestroyCreatedCursor(cursor);
        g_app = AppState{};
    }

    static int Queries() { return static_cast<int>(std::count(g_calls.begin(), g_calls.end(), "ask")); }

    // At the settings of the NIGHT button, white becomes this red.
    static void ExpectTinted(DWORD id, int row) {
        const CursorPicture& seen = g_set[id];
        const CursorPicture base = PictureOf(row);
        EXPECT_EQ(seen.width, base.width) << row;
        EXPECT_EQ(seen.height, base.height) << row;
        EXPECT_EQ(seen.hotX, base.hotX) << row;
        const auto pixels = static_cast<std::size_t>(base.width * base.height);
        EXPECT_EQ(seen.pixels == std::vector<Argb>(pixels, 0xFFB30000), true) << row;
    }
};

constexpr DWORD kRows[kSystemCursorCount] = {32512, 32513, 32514, 32515, 32516, 32640, 32641, 32642,
                                             32643, 32644, 32645, 32646, 32648, 32649, 32650, 32651};

}  // namespace

AMBREL_SEAM(SetSystemCursor, TakeSystemCursor);

TEST_F(AllCursors, AreEachQueriedOnceAndBuiltInOneContext) {
    TintSystemCursors();
    EXPECT_EQ(Queries(), kSystemCursorCount);
    EXPECT_EQ(g_tracker.created["screen context"], 1);
    EXPECT_EQ(g_tracker.created["memory context"], 1);
    EXPECT_EQ(g_tracker.created["dib"], kSystemCursorCount);
    EXPECT_EQ(g_tracker.created["cursor"], kSystemCursorCount);
    for (int row = 0; row < kSystemCursorCount; ++row)
        ExpectTinted(kRows[row], row);
}

// The contexts, the picture and the drawing are what the cursors share or what follows a shared call.
TEST_F(AllCursors, AreStillBuiltInTheSameContextAfterOneThatFails) {
    for (const GdiCall call : {GdiCall::GetIconInfo, GdiCall::CreateDIBSection, GdiCall::DrawIconEx,
                               GdiCall::CreateIconIndirect}) {
        for (int failing = 0; failing < kSystemCursorCount; ++failing) {
            StartTracking();
            g_set.clear();
            g_app.cursorsTinted = false;
            g_tracker.failing = {call};
            g_tracker.failingTime = failing + 1;
            TintSystemCursors();
            EXPECT_EQ(g_tracker.created["memory context"], 1);
            EXPECT_EQ(g_set.size(), static_cast<std::size_t>(kSystemCursorCount - 1));
            EXPECT_EQ(g_set.count(kRows[failing]), 0U);
            for (int row = 0; row < kSystemCursorCount; ++row) {
                if (row != failing) ExpectTinted(kRows[row], row);
            }
            EXPECT_THAT(g_tracker.errors, IsEmpty());
            EXPECT_THAT(g_tracker.open, IsEmpty());
        }
    }
}
