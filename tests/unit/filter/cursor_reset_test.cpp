// How often a refused reset of the system cursors is tried.
#include <gtest/gtest.h>

#include "app/state/app_state.h"
#include "filter/cursor_tint.h"
#include "support/seam.h"

namespace {

int g_refusals = 0;
int g_resetCount = 0;

BOOL WINAPI FakeSystemParametersInfoW(UINT action, UINT parameter, PVOID data, UINT flags) {
    EXPECT_EQ(action, static_cast<UINT>(SPI_SETCURSORS));
    EXPECT_EQ(parameter, 0U);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(flags, 0U);
    return ++g_resetCount > g_refusals ? TRUE : FALSE;
}

class CursorReset : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.cursorsTinted = true;
        g_refusals = 0;
        g_resetCount = 0;
    }
    void TearDown() override { g_app = AppState{}; }

    static int ResetsAtTheEnd(int refusals) {
        g_app.ending = true;
        g_refusals = refusals;
        ReleaseCursorCopies();
        EXPECT_FALSE(g_app.cursorsTinted);
        return g_resetCount;
    }
};

}  // namespace

AMBREL_SEAM(SystemParametersInfoW, FakeSystemParametersInfoW);

TEST_F(CursorReset, AnAcceptedOneIsMadeOnceAtTheEnd) {
    EXPECT_EQ(ResetsAtTheEnd(0), 1);
}

TEST_F(CursorReset, ARefusedOneIsTriedOnceMoreAtTheEnd) {
    EXPECT_EQ(ResetsAtTheEnd(1), 2);
}

TEST_F(CursorReset, ItIsTriedNoMoreThanTwice) {
    EXPECT_EQ(ResetsAtTheEnd(5), 2);
}

TEST_F(CursorReset, ARefusedOneIsNotRepeatedBeforeTheEnd) {
    g_refusals = 5;
    RestoreSystemCursors();
    EXPECT_EQ(g_resetCount, 1);
}
