// When the sixteen system cursors are tinted, skipped and restored.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "app/state/app_state.h"
#include "filter/cursor_tint.h"
#include "filter/fake_cursors.h"
#include "support/call_record.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CursorTinting : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.filterOn = true;
        g_app.intensity = 0.5;
        g_app.brightness = 0.75;
        g_cursors = FakeCursors{};
        g_app.baseCursorsLoaded = true;
        for (int row = 0; row < 16; ++row) {
            g_app.baseCursors[row] = CursorHandle(kCopied, kIds[row]);
            g_cursors.cursors.insert(ValueOf(g_app.baseCursors[row]));
        }
        g_calls.clear();
    }

    void TearDown() override {
        EXPECT_THAT(g_cursors.bitmaps, IsEmpty()) << "bitmaps of GetIconInfo were kept";
        ReleaseCursorCopies();
        EXPECT_THAT(g_cursors.cursors, IsEmpty()) << "cursors were kept";
    }

    static std::string Number(HandleKind kind, int id) {
        return std::to_string(ValueOf(CursorHandle(kind, id)));
    }

    static CallRecord Setting(int id) {
        return {"ask " + Number(kCopied, id), "build " + Number(kCopied, id),
                "set " + Number(kTinted, id) + " for " + std::to_string(id)};
    }

    static CallRecord CallsOfOneTint() {
        g_calls.clear();
        TintSystemCursors();
        return g_calls;
    }

    static bool IsTintedAgain() { return !CallsOfOneTint().empty(); }

    static void ExpectCache(double intensity, double brightness) {
        EXPECT_EQ(g_app.lastCursorTint.intensity, intensity);
        EXPECT_EQ(g_app.lastCursorTint.brightness, brightness);
    }

    static std::set<int> AllIds() { return {std::begin(kIds), std::end(kIds)}; }

    // The calls for all rows except one; `instead` are the calls for that row.
    static CallRecord AllBut(int id, const CallRecord& instead) {
        CallRecord calls;
        for (const int each : kIds) {
            const CallRecord row = each == id ? instead : Setting(each);
            calls.insert(calls.end(), row.begin(), row.end());
        }
        return calls;
    }
};

}  // namespace

TEST_F(CursorTinting, StartsUntintedWithoutCachedValues) {
    const AppState fresh;
    EXPECT_FALSE(fresh.cursorsTinted);
    EXPECT_EQ(fresh.lastCursorTint.intensity, -1.0);
    EXPECT_EQ(fresh.lastCursorTint.brightness, -1.0);
    EXPECT_FALSE(fresh.baseCursorsLoaded);
    for (const HCURSOR copy : fresh.baseCursors)
        EXPECT_EQ(copy, nullptr);
}

TEST_F(CursorTinting, QueriesBuildsAndSetsEachRowInTheTablesOrderAndStoresTheTint) {
    EXPECT_EQ(CallsOfOneTint(), AllBut(0, {}));
    EXPECT_TRUE(g_app.cursorsTinted);
    ExpectCache(0.5, 0.75);
    for (const int id : kIds)
        EXPECT_EQ(g_cursors.current[id], ValueOf(CursorHandle(kTinted, id)));
}

TEST_F(CursorTinting, BuildsWithTheCurrentWarmthAndBrightness) {
    TintSystemCursors();
    g_app.intensity = 1.0;
    g_app.brightness = 0.1;
    TintSystemCursors();
    ASSERT_EQ(g_cursors.built.size(), 32U);
    for (std::size_t i = 0; i < 32; ++i)
        EXPECT_EQ(g_cursors.built[i], i < 16 ? WhiteAt(0.5, 0.75) : WhiteAt(1.0, 0.1));
    ExpectCache(1.0, 0.1);
}

TEST_F(CursorTinting, NeutralSettingsRebuildTheCursorsToo) {
    g_app.intensity = 0.0;
    g_app.brightness = 1.0;
    EXPECT_EQ(CallsOfOneTint(), AllBut(0, {}));
    EXPECT_TRUE(g_app.cursorsTinted);
    ExpectCache(0.0, 1.0);
}

TEST_F(CursorTinting, ARowWithoutACopyIsSkipped) {
    for (int row = 0; row < 16; ++row) {
        const HCURSOR copy = g_app.baseCursors[row];
        g_app.baseCursors[row] = nullptr;
        RestoreSystemCursors();
        EXPECT_EQ(CallsOfOneTint(), AllBut(kIds[row], {}));
        EXPECT_TRUE(g_app.cursorsTinted);
        g_app.baseCursors[row] = copy;
    }
}

TEST_F(CursorTinting, AMonochromeCursorKeepsItsSystemLook) {
    for (const int id : kIds) {
        g_cursors.monochrome = {id};
        g_cursors.current.clear();
        RestoreSystemCursors();
        EXPECT_EQ(CallsOfOneTint(), AllBut(id, {"ask " + Number(kCopied, id)}));
        EXPECT_EQ(g_cursors.current.count(id), 0U);
        EXPECT_THAT(g_cursors.bitmaps, IsEmpty());
    }
}

TEST_F(CursorTinting, ACursorWithoutAnyBitmapHasNoColourEither) {
    g_cursors.withoutBitmaps = {32649};
    EXPECT_EQ(CallsOfOneTint(), AllBut(32649, {"ask " + Number(kCopied, 32649)}));
}

TEST_F(CursorTinting, ACursorThatCannotBeQueriedIsStillBuilt) {
    g_cursors.noInfo = AllIds();
    EXPECT_EQ(CallsOfOneTint(), AllBut(0, {}));
    EXPECT_TRUE(g_app.cursorsTinted);
}

TEST_F(CursorTinting, AFailureHalfWayThroughTheQueryLeavesNothingToDelete) {
    g_cursors.noInfo = {32512};
    g_cursors.staleInfo = true;
    EXPECT_EQ(CallsOfOneTint(), AllBut(0, {}));
}

TEST_F(CursorTinting, ACursorThatCannotBeBuiltKeepsItsSystemFormAndTheOthersAreSet) {
    for (const int id : kIds) {
        g_cursors.notBuilt = {id};
        g_cursors.current.clear();
        RestoreSystemCursors();
        EXPECT_EQ(CallsOfOneTint(),
                  AllBut(id, {"ask " + Number(kCopied, id), "build " + Number(kCopied, id)}));
        EXPECT_EQ(g_cursors.current.size(), 15U);
        EXPECT_TRUE(g_app.cursorsTinted);
    }
}

TEST_F(CursorTinting, ACursorThatCannotBeSetIsDestroyedAndTheOthersAreSet) {
    for (const int id : kIds) {
        g_cursors.notSet = {id};
        g_cursors.current.clear();
        RestoreSystemCursors();
        EXPECT_EQ(CallsOfOneTint(),
                  AllBut(id, {"ask " + Number(kCopied, id), "build " + Number(kCopied, id),
                              "refuse " + Number(kTinted, id) + " for " + std::to_string(id),
                              "destroy " + Number(kTinted, id)}));
        EXPECT_EQ(g_cursors.current.size(), 15U);
        EXPECT_TRUE(g_app.cursorsTinted);
    }
}

TEST_F(CursorTinting, OneCursorThatWasSetIsEnough) {
    for (const int id : kIds) {
        RestoreSystemCursors();
        g_cursors.notSet = AllIds();
        g_cursors.notSet.erase(id);
        TintSystemCursors();
        EXPECT_TRUE(g_app.cursorsTinted) << id;
        ExpectCache(0.5, 0.75);
    }
}

TEST_F(CursorTinting, WithoutAnyCursorSetNothingIsTreatedAsTintedAndTheNextApplyTriesAgain) {
    g_cursors.notSet = AllIds();
    const CallRecord first = CallsOfOneTint();
    EXPECT_EQ(first.size(), 64U);
    EXPECT_FALSE(g_app.cursorsTinted);
    ExpectCache(-1.0, -1.0);
    EXPECT_EQ(CallsOfOneTint(), first);
    g_cursors.notSet.clear();
    EXPECT_EQ(CallsOfOneTint(), AllBut(0, {}));
    EXPECT_TRUE(g_app.cursorsTinted);
}

TEST_F(CursorTinting, WithoutAnyCursorBuiltNothingIsTreatedAsTinted) {
    g_cursors.notBuilt = AllIds();
    TintSystemCursors();
    EXPECT_FALSE(g_app.cursorsTinted);
    ExpectCache(-1.0, -1.0);
}

TEST_F(CursorTinting, ALaterTintThatSetsNothingLeavesTheEarlierOnesFlagAndValues) {
    TintSystemCursors();
    g_app.intensity = 0.9;
    g_app.brightness = 0.3;
    g_cursors.notSet = AllIds();
    TintSystemCursors();
    EXPECT_TRUE(g_app.cursorsTinted);
    ExpectCache(0.5, 0.75);
    EXPECT_TRUE(IsTintedAgain()) << "the current values are still the earlier ones";
}

TEST_F(CursorTinting, TheSameSettingsAgainCallNothing) {
    TintSystemCursors();
    EXPECT_THAT(CallsOfOneTint(), IsEmpty());
}

TEST_F(CursorTinting, TwoStepsOfAThousandthOfWarmthTintOnlyAtTheSecond) {
    TintSystemCursors();
    g_app.intensity = 0.501;
    EXPECT_FALSE(IsTintedAgain());
    ExpectCache(0.5, 0.75);
    g_app.intensity = 0.502;
    EXPECT_TRUE(IsTintedAgain());
    ExpectCache(0.502, 0.75);
    g_app.intensity = 0.503;
    EXPECT_FALSE(IsTintedAgain());
}

TEST_F(CursorTinting, TwoStepsOfAThousandthOfBrightnessTintOnlyAtTheSecond) {
    g_app.brightness = 0.5;
    TintSystemCursors();
    g_app.brightness = 0.501;
    EXPECT_FALSE(IsTintedAgain());
    g_app.brightness = 0.502;
    EXPECT_TRUE(IsTintedAgain());
    ExpectCache(0.5, 0.502);
}

// From 0 the difference is the number itself, so the subtraction is exact.
TEST_F(CursorTinting, TheDeadBandEndsExactlyAtTwoThousandths) {
    g_app.intensity = 0.0;
    TintSystemCursors();
    g_app.intensity = std::nextafter(0.002, 0.0);
    EXPECT_FALSE(IsTintedAgain());
    g_app.intensity = 0.002;
    EXPECT_TRUE(IsTintedAgain());
    g_app.intensity = 0.0001;
    EXPECT_FALSE(IsTintedAgain()) << "in the other direction too";
    g_app.intensity = 0.0;
    EXPECT_TRUE(IsTintedAgain());

    g_app.brightness = 0.0;
    TintSystemCursors();
    g_app.brightness = std::nextafter(0.002, 0.0);
    EXPECT_FALSE(IsTintedAgain());
    g_app.brightness = 0.002;
    EXPECT_TRUE(IsTintedAgain());
    g_app.brightness = 0.0001;
    EXPECT_FALSE(IsTintedAgain());
    g_app.brightness = 0.0;
    EXPECT_TRUE(IsTintedAgain());
}

TEST_F(CursorTinting, AChangeOfEitherValueAloneLeavesTheDeadBand) {
    TintSystemCursors();
    g_app.intensity = 0.49;
    EXPECT_TRUE(IsTintedAgain());
    g_app.brightness = 0.76;
    EXPECT_TRUE(IsTintedAgain());
    g_app.intensity = 0.4905;
    g_app.brightness = 0.7605;
    EXPECT_FALSE(IsTintedAgain());
}

TEST_F(CursorTinting, TheDeadBandAppliesOnlyWhileTheCursorsAreTinted) {
    TintSystemCursors();
    g_app.cursorsTinted = false;
    EXPECT_TRUE(IsTintedAgain());
    RestoreSystemCursors();
    EXPECT_TRUE(IsTintedAgain());
}

TEST_F(CursorTinting, ADragTintsAtEveryStepAndLoadsAndCopiesNothing) {
    TintSystemCursors();
    for (int step = 1; step <= 40; ++step) {
        g_app.intensity = 0.5 + step / 198.0;
        ASSERT_EQ(CallsOfOneTint(), AllBut(0, {})) << step;
    }
}

// Steps of 1/2048, which add up exactly: four stay below 0.002, the fifth does not.
TEST_F(CursorTinting, ASlowDragTintsOnlyWhereItLeavesTheDeadBandOfTheLastTint) {
    g_app.intensity = 0.0;
    TintSystemCursors();
    for (int step = 1; step <= 100; ++step) {
        g_app.intensity = step / 2048.0;
        EXPECT_EQ(IsTintedAgain(), step % 5 == 0) << step;
    }
}

TEST_F(CursorTinting, WithTheFilterOffTheCursorsAreOnlyRestored) {
    TintSystemCursors();
    g_app.filterOn = false;
    g_app.intensity = 0.9;
    EXPECT_THAT(CallsOfOneTint(), ElementsAre("system cursors"));
    EXPECT_FALSE(g_app.cursorsTinted);
    ExpectCache(-1.0, -1.0);
    EXPECT_THAT(CallsOfOneTint(), IsEmpty());
}

TEST_F(CursorTinting, WithTheFilterOffNoCopiesAreCreated) {
    ReleaseCursorCopies();
    g_app.filterOn = false;
    EXPECT_THAT(CallsOfOneTint(), IsEmpty());
    EXPECT_FALSE(g_app.baseCursorsLoaded);
}

TEST_F(CursorTinting, RestoringClearsTheStoredTintSoThatTheSameSettingsTintAgain) {
    TintSystemCursors();
    g_calls.clear();
    RestoreSystemCursors();
    EXPECT_THAT(g_calls, ElementsAre("system cursors"));
    EXPECT_FALSE(g_app.cursorsTinted);
    ExpectCache(-1.0, -1.0);
    EXPECT_EQ(CallsOfOneTint(), AllBut(0, {}));
}

TEST_F(CursorTinting, RestoringUntintedCursorsCallsAndChangesNothing) {
    g_app.lastCursorTint = {0.25, 0.5};
    RestoreSystemCursors();
    EXPECT_THAT(g_calls, IsEmpty());
    ExpectCache(0.25, 0.5);
    TintSystemCursors();
    RestoreSystemCursors();
    g_calls.clear();
    RestoreSystemCursors();
    EXPECT_THAT(g_calls, IsEmpty());
}

TEST_F(CursorTinting, ResettingRestoresTheSystemCursorsRegardlessOfTheState) {
    ResetSystemCursors();
    EXPECT_THAT(g_calls, ElementsAre("system cursors"));
    g_app.cursorsTinted = true;
    g_app.lastCursorTint = {0.5, 0.75};
    ResetSystemCursors();
    EXPECT_THAT(g_calls, ElementsAre("system cursors", "system cursors"));
    EXPECT_FALSE(g_app.cursorsTinted);
    ExpectCache(-1.0, -1.0);
    EXPECT_TRUE(IsTintedAgain());
}
