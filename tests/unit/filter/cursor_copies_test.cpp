// The copies of the system cursors that every tint is computed from: their creation, once per run, and their
// release.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "app/state/app_state.h"
#include "filter/cursor_tint.h"
#include "filter/fake_cursors.h"
#include "support/call_record.h"

namespace {

using testing::IsEmpty;

class CursorCopies : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.filterOn = true;
        g_cursors = FakeCursors{};
        g_calls.clear();
    }

    void TearDown() override {
        EXPECT_THAT(g_cursors.bitmaps, IsEmpty()) << "bitmaps of GetIconInfo were kept";
        ReleaseCursorCopies();
        EXPECT_THAT(g_cursors.cursors, IsEmpty()) << "cursors were kept";
    }

    static std::string Call(const char* what, HandleKind kind, int id) {
        return std::string(what) + std::to_string(ValueOf(CursorHandle(kind, id)));
    }

    static CallRecord CallsOf(const char* prefix) {
        CallRecord calls;
        for (const std::string& call : g_calls) {
            if (call.rfind(prefix, 0) == 0) calls.push_back(call);
        }
        return calls;
    }

    // The calls that create the copy of one row.
    static CallRecord CallsOfCopying(int id) {
        CallRecord calls;
        for (const std::string& call : g_calls) {
            const bool making = call.rfind("load", 0) == 0 || call.rfind("copy", 0) == 0;
            if (making && call.ends_with(std::to_string(id))) calls.push_back(call);
        }
        return calls;
    }

    static HCURSOR CopyOf(int row) { return g_app.baseCursors[row]; }
};

constexpr int kLastRow = 15;

}  // namespace

TEST_F(CursorCopies, ThereAreSixteenRows) {
    EXPECT_EQ(kSystemCursorCount, 16);
    EXPECT_EQ(std::size(kIds), 16U);
}

TEST_F(CursorCopies, AreCreatedForAllSixteenInTheTablesOrderBeforeAnythingIsTinted) {
    TintSystemCursors();
    CallRecord expected;
    for (const int id : kIds) {
        expected.push_back("load image " + std::to_string(id));
        expected.push_back(Call("copy image ", kFromImage, id));
    }
    ASSERT_GE(g_calls.size(), expected.size());
    EXPECT_EQ(CallRecord(g_calls.begin(), g_calls.begin() + static_cast<std::ptrdiff_t>(expected.size())),
              expected);
    EXPECT_TRUE(g_app.baseCursorsLoaded);
    for (int row = 0; row < 16; ++row)
        EXPECT_EQ(CopyOf(row), CursorHandle(kCopied, kIds[row])) << row;
}

TEST_F(CursorCopies, ACursorThatLoadImageRefusesIsLoadedWithLoadCursor) {
    for (int row = 0; row < 16; ++row) {
        const int id = kIds[row];
        g_cursors.noImage = {id};
        g_calls.clear();
        TintSystemCursors();
        EXPECT_EQ(CallsOfCopying(id),
                  (CallRecord{"load image " + std::to_string(id), "load cursor " + std::to_string(id),
                              Call("copy image ", kFromCursor, id)}));
        EXPECT_EQ(CopyOf(row), CursorHandle(kCopied, id));
        EXPECT_EQ(CallsOf("load cursor").size(), 1U);
        ReleaseCursorCopies();
    }
}

TEST_F(CursorCopies, ACursorThatCannotBeLoadedAtAllIsNeitherCopiedNorTinted) {
    for (int row = 0; row < 16; ++row) {
        const int id = kIds[row];
        g_cursors.noImage = g_cursors.noCursor = {id};
        g_cursors.current.clear();
        g_calls.clear();
        TintSystemCursors();
        EXPECT_EQ(CallsOfCopying(id),
                  (CallRecord{"load image " + std::to_string(id), "load cursor " + std::to_string(id)}));
        EXPECT_EQ(CopyOf(row), nullptr);
        EXPECT_EQ(g_cursors.current.size(), 15U);
        EXPECT_EQ(g_cursors.current.count(id), 0U);
        EXPECT_TRUE(g_app.cursorsTinted);
        ReleaseCursorCopies();
    }
}

TEST_F(CursorCopies, ACursorThatCannotBeCopiedAsAnImageIsCopiedAsAnIcon) {
    for (int row = 0; row < 16; ++row) {
        const int id = kIds[row];
        g_cursors.noCopyImage = {id};
        g_calls.clear();
        TintSystemCursors();
        EXPECT_EQ(CallsOfCopying(id),
                  (CallRecord{"load image " + std::to_string(id), Call("copy image ", kFromImage, id),
                              Call("copy icon ", kFromImage, id)}));
        EXPECT_EQ(CopyOf(row), CursorHandle(kIconCopied, id));
        EXPECT_EQ(CallsOf("copy icon").size(), 1U);
        ReleaseCursorCopies();
    }
}

TEST_F(CursorCopies, ACursorThatCannotBeCopiedKeepsItsSystemForm) {
    for (int row = 0; row < 16; ++row) {
        const int id = kIds[row];
        g_cursors.noCopyImage = g_cursors.noCopyIcon = {id};
        g_cursors.current.clear();
        g_calls.clear();
        TintSystemCursors();
        EXPECT_EQ(CopyOf(row), nullptr);
        EXPECT_EQ(g_cursors.current.size(), 15U);
        EXPECT_EQ(g_cursors.current.count(id), 0U);
        ReleaseCursorCopies();
    }
}

TEST_F(CursorCopies, TheHandleThatWindowsSharesIsNeverDestroyed) {
    g_cursors.noCopyImage = {32512};
    g_cursors.noImage = {32513};
    TintSystemCursors();
    ReleaseCursorCopies();
    EXPECT_THAT(CallsOf("destroy 1"), IsEmpty());
    EXPECT_THAT(CallsOf("destroy 2"), IsEmpty());
}

TEST_F(CursorCopies, AreCreatedOncePerRunEvenWhenRowsAreMissing) {
    g_cursors.noImage = g_cursors.noCursor = {32514, 32651};
    g_cursors.noCopyImage = g_cursors.noCopyIcon = {32512};
    TintSystemCursors();
    EXPECT_TRUE(g_app.baseCursorsLoaded);
    // Windows would provide them now.
    for (std::set<int>* failing :
         {&g_cursors.noImage, &g_cursors.noCursor, &g_cursors.noCopyImage, &g_cursors.noCopyIcon})
        failing->clear();
    g_app.intensity += 0.1;
    g_calls.clear();
    TintSystemCursors();
    EXPECT_THAT(CallsOf("load"), IsEmpty());
    EXPECT_THAT(CallsOf("copy"), IsEmpty());
    EXPECT_EQ(CallsOf("set").size(), 13U);
}

TEST_F(CursorCopies, AreCreatedOncePerRunEvenWhenAllRowsAreMissing) {
    for (const int id : kIds) {
        g_cursors.noImage.insert(id);
        g_cursors.noCursor.insert(id);
    }
    TintSystemCursors();
    EXPECT_TRUE(g_app.baseCursorsLoaded);
    EXPECT_FALSE(g_app.cursorsTinted);
    EXPECT_EQ(g_calls.size(), 32U);
    g_calls.clear();
    TintSystemCursors();
    EXPECT_THAT(g_calls, IsEmpty());
}

TEST_F(CursorCopies, ArePreservedWhenTheCursorsAreRestored) {
    TintSystemCursors();
    RestoreSystemCursors();
    EXPECT_TRUE(g_app.baseCursorsLoaded);
    EXPECT_EQ(CopyOf(kLastRow), CursorHandle(kCopied, 32651));
    ResetSystemCursors();
    EXPECT_TRUE(g_app.baseCursorsLoaded);
    EXPECT_EQ(CopyOf(0), CursorHandle(kCopied, 32512));
    g_calls.clear();
    TintSystemCursors();
    EXPECT_THAT(CallsOf("load"), IsEmpty());
    EXPECT_EQ(CallsOf("set").size(), 16U);
}

TEST_F(CursorCopies, AreReleasedAfterTheCursorsAreRestoredEachOnce) {
    g_cursors.noCopyImage = {32513};
    g_cursors.noImage = g_cursors.noCursor = {32514};
    TintSystemCursors();
    g_calls.clear();
    ReleaseCursorCopies();
    CallRecord expected = {"system cursors"};
    for (const int id : kIds) {
        if (id != 32514) expected.push_back(Call("destroy ", id == 32513 ? kIconCopied : kCopied, id));
    }
    EXPECT_EQ(g_calls, expected);
    EXPECT_FALSE(g_app.baseCursorsLoaded);
    EXPECT_FALSE(g_app.cursorsTinted);
    for (const HCURSOR copy : g_app.baseCursors)
        EXPECT_EQ(copy, nullptr);

    g_calls.clear();
    ReleaseCursorCopies();
    EXPECT_THAT(g_calls, IsEmpty());
}

TEST_F(CursorCopies, AreReleasedEvenWhenNothingIsTinted) {
    TintSystemCursors();
    RestoreSystemCursors();
    g_calls.clear();
    ReleaseCursorCopies();
    EXPECT_EQ(g_calls.size(), 16U);
    EXPECT_EQ(CallsOf("destroy").size(), 16U);
}

TEST_F(CursorCopies, AreNotReleasedIfTheyWereNeverCreated) {
    ReleaseCursorCopies();
    EXPECT_THAT(g_calls, IsEmpty());
}

TEST_F(CursorCopies, AreCreatedAgainAfterARelease) {
    TintSystemCursors();
    ReleaseCursorCopies();
    g_calls.clear();
    TintSystemCursors();
    EXPECT_EQ(CallsOf("load image").size(), 16U);
    EXPECT_EQ(CallsOf("set").size(), 16U);
}
