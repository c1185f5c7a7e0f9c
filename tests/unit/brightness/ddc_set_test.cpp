// Setting one external monitor, which is found by its name.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/state/app_state.h"
#include "brightness/ddc.h"
#include "brightness/fake_monitors.h"
#include "support/call_record.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

class DdcSet : public testing::Test {
protected:
    void SetUp() override {
        StartWithoutMonitors();
        g_monitors = {{.device = L"A", .physical = {{.handle = 11}}},
                      {.device = L"B", .physical = {{.handle = 21}, {.handle = 22}}}};
    }
    void TearDown() override {
        EXPECT_EQ(HandlesHeld(), 0);
        g_app = AppState{};
    }
};

}  // namespace

TEST_F(DdcSet, OnlyTheNamedMonitorIsReadAndWritten) {
    EXPECT_TRUE(SetDdcBrightness(L"DXVA2:B#1", 100));
    EXPECT_THAT(g_calls, ElementsAre("visit all", "count M1", "fetch 1 of M1", "info M1", "destroy 1 of M1",
                                     "count M2", "fetch 2 of M2", "info M2", "read 22", "write 22 100",
                                     "destroy 2 of M2"));
    EXPECT_EQ(g_monitors[1].physical[1].current, 100U);
}

TEST_F(DdcSet, NoFurtherMonitorIsReadOnceOneIsSet) {
    EXPECT_TRUE(SetDdcBrightness(L"DXVA2:A#0", 30));
    EXPECT_THAT(g_calls,
                ElementsAre("visit all", "count M1", "fetch 1 of M1", "info M1", "read 11", "write 11 30",
                            "destroy 1 of M1", "count M2", "fetch 2 of M2", "info M2", "destroy 2 of M2"));
}

TEST_F(DdcSet, TheCurrentRangeIsUsed) {
    g_monitors[0].physical[0].maximum = 80;
    EXPECT_TRUE(SetDdcBrightness(L"DXVA2:A#0", 100));
    EXPECT_EQ(g_monitors[0].physical[0].current, 80U);
    EXPECT_TRUE(SetDdcBrightness(L"DXVA2:A#0", 50));
    EXPECT_EQ(g_monitors[0].physical[0].current, 40U);
    g_monitors[0].physical[0].minimum = 40;
    EXPECT_TRUE(SetDdcBrightness(L"DXVA2:A#0", 50));
    EXPECT_EQ(g_monitors[0].physical[0].current, 60U);
}

TEST_F(DdcSet, MoreThan100PercentIsTreatedAs100) {
    EXPECT_TRUE(SetDdcBrightness(L"DXVA2:A#0", 101));
    EXPECT_EQ(g_monitors[0].physical[0].current, 100U);
    g_monitors[0].physical[0].current = 1;
    EXPECT_TRUE(SetDdcBrightness(L"DXVA2:A#0", 0xFFFFFFFF));
    EXPECT_EQ(g_monitors[0].physical[0].current, 100U);
}

TEST_F(DdcSet, TheCapabilityIsNotCheckedAgain) {
    g_monitors[0].physical[0].capabilities = 0;
    g_monitors[0].physical[0].capabilitiesReadable = false;
    EXPECT_TRUE(SetDdcBrightness(L"DXVA2:A#0", 100));
    EXPECT_EQ(g_monitors[0].physical[0].current, 100U);
    EXPECT_THAT(g_calls, Not(Contains(StartsWith("capabilities"))));
}

TEST_F(DdcSet, TheMaximumOfAnEmptyRangeIsWritten) {
    g_monitors[0].physical[0] = {.handle = 11, .minimum = 60, .current = 60, .maximum = 60};
    EXPECT_TRUE(SetDdcBrightness(L"DXVA2:A#0", 20));
    EXPECT_THAT(g_calls, Contains("write 11 60"));
}

TEST_F(DdcSet, TheMaximumOfAReversedRangeIsWritten) {
    g_monitors[0].physical[0] = {.handle = 11, .minimum = 90, .current = 40, .maximum = 10};
    EXPECT_TRUE(SetDdcBrightness(L"DXVA2:A#0", 100));
    EXPECT_THAT(g_calls, Contains("write 11 10"));
}

TEST_F(DdcSet, ACurrentBelowTheMinimumDoesNotMatter) {
    g_monitors[0].physical[0] = {.handle = 11, .minimum = 20, .current = 3, .maximum = 70};
    EXPECT_TRUE(SetDdcBrightness(L"DXVA2:A#0", 50));
    EXPECT_THAT(g_calls, Contains("write 11 45"));
}

TEST_F(DdcSet, TheWidestRangeDoesNotOverflow) {
    g_monitors[0].physical[0] = {.handle = 11, .minimum = 0, .current = 0, .maximum = 0xFFFFFFFF};
    EXPECT_TRUE(SetDdcBrightness(L"DXVA2:A#0", 100));
    EXPECT_THAT(g_calls, Contains("write 11 4294967295"));
}

TEST_F(DdcSet, AHandleOfZeroIsSet) {
    g_monitors[0].physical[0].handle = 0;
    EXPECT_TRUE(SetDdcBrightness(L"DXVA2:A#0", 100));
    EXPECT_THAT(g_calls, Contains("write 0 100"));
}

TEST_F(DdcSet, ARefusedWriteIsAFailureAndIsNotRetried) {
    g_monitors[0].physical[0].settable = false;
    EXPECT_FALSE(SetDdcBrightness(L"DXVA2:A#0", 100));
    EXPECT_THAT(g_calls,
                ElementsAre("visit all", "count M1", "fetch 1 of M1", "info M1", "read 11", "write 11 100",
                            "destroy 1 of M1", "count M2", "fetch 2 of M2", "info M2", "destroy 2 of M2"));
}

TEST_F(DdcSet, AMonitorThatCannotBeReadIsNotWritten) {
    g_monitors[0].physical[0].readable = false;
    EXPECT_FALSE(SetDdcBrightness(L"DXVA2:A#0", 100));
    EXPECT_THAT(g_calls,
                ElementsAre("visit all", "count M1", "fetch 1 of M1", "info M1", "read 11", "destroy 1 of M1",
                            "count M2", "fetch 2 of M2", "info M2", "destroy 2 of M2"));
}

TEST_F(DdcSet, TheFirstOfTwoMonitorsWithTheSameNameIsSet) {
    g_monitors[1].device = L"A";
    EXPECT_TRUE(SetDdcBrightness(L"DXVA2:A#0", 100));
    EXPECT_EQ(g_monitors[0].physical[0].current, 100U);
    EXPECT_EQ(g_monitors[1].physical[0].current, 50U);
    EXPECT_THAT(g_calls, Not(Contains("read 21")));
}

TEST_F(DdcSet, IfTheFirstOfTwoMonitorsWithTheSameNameRefusesTheSecondIsSet) {
    g_monitors[1].device = L"A";
    g_monitors[0].physical[0].settable = false;
    EXPECT_TRUE(SetDdcBrightness(L"DXVA2:A#0", 100));
    EXPECT_THAT(g_calls, ElementsAre("visit all", "count M1", "fetch 1 of M1", "info M1", "read 11",
                                     "write 11 100", "destroy 1 of M1", "count M2", "fetch 2 of M2",
                                     "info M2", "read 21", "write 21 100", "destroy 2 of M2"));
}

TEST_F(DdcSet, IfTheFirstOfTwoMonitorsWithTheSameNameCannotBeReadTheSecondIsSet) {
    g_monitors[1].device = L"A";
    g_monitors[0].physical[0].readable = false;
    EXPECT_TRUE(SetDdcBrightness(L"DXVA2:A#0", 100));
    EXPECT_EQ(g_monitors[1].physical[0].current, 100U);
}

TEST_F(DdcSet, AnUnknownNameSetsNothing) {
    for (const wchar_t* name : {L"DXVA2:C#0", L"DXVA2:A#1", L"DXVA2:a#0", L"dxva2:A#0", L"DXVA2:A#", L"A",
                                L"DXVA2:A#00", L"DXVA2:A#0 ", L""}) {
        g_calls.clear();
        EXPECT_FALSE(SetDdcBrightness(name, 100)) << Narrow(name);
        EXPECT_THAT(g_calls,
                    ElementsAre("visit all", "count M1", "fetch 1 of M1", "info M1", "destroy 1 of M1",
                                "count M2", "fetch 2 of M2", "info M2", "destroy 2 of M2"));
    }
}

TEST_F(DdcSet, NamesAreComparedToTheLastCharacter) {
    EXPECT_FALSE(SetDdcBrightness(std::wstring(L"DXVA2:A#0\0x", 11), 100));
    EXPECT_FALSE(SetDdcBrightness(std::wstring(L"DXVA2:A#0\0", 10), 100));
}

TEST_F(DdcSet, AnUnpluggedMonitorIsNotFound) {
    g_monitors.pop_back();
    EXPECT_FALSE(SetDdcBrightness(L"DXVA2:B#1", 100));
}

TEST_F(DdcSet, AMonitorThatMovedToAnotherIndexIsNotFound) {
    g_monitors[1].physical.pop_back();
    EXPECT_FALSE(SetDdcBrightness(L"DXVA2:B#1", 100));
    EXPECT_EQ(g_monitors[1].physical[0].current, 50U);
}

TEST_F(DdcSet, NothingIsSetWithoutMonitors) {
    g_monitors.clear();
    EXPECT_FALSE(SetDdcBrightness(L"DXVA2:A#0", 100));
    EXPECT_THAT(g_calls, ElementsAre("visit all"));
}

TEST_F(DdcSet, AMonitorWithoutADeviceNameIsFoundAsUnknown) {
    g_monitors[0].device = L"";
    EXPECT_TRUE(SetDdcBrightness(L"DXVA2:UNKNOWN#0", 100));
    EXPECT_EQ(g_monitors[0].physical[0].current, 100U);
}

TEST_F(DdcSet, AMonitorWhoseInformationCannotBeReadIsFoundAsUnknown) {
    g_monitors[0].infoReadable = false;
    EXPECT_FALSE(SetDdcBrightness(L"DXVA2:A#0", 100));
    EXPECT_TRUE(SetDdcBrightness(L"DXVA2:UNKNOWN#0", 100));
}

TEST_F(DdcSet, DisplayMonitorsWhosePhysicalMonitorsCannotBeCountedOrFetchedAreSkipped) {
    g_monitors.insert(g_monitors.begin(), 4, {.device = L"A", .physical = {{.handle = 1}}});
    g_monitors[0].countable = false;
    g_monitors[1].fetchable = false;
    g_monitors[2].reportedCount = 0;
    g_monitors[3].reportedCount = 0xFFFFFFFF;
    EXPECT_TRUE(SetDdcBrightness(L"DXVA2:A#0", 100));
    EXPECT_THAT(g_calls,
                ElementsAre("visit all", "count M1", "count M2", "fetch 1 of M2", "count M3", "count M4",
                            "count M5", "fetch 1 of M5", "info M5", "read 11", "write 11 100",
                            "destroy 1 of M5", "count M6", "fetch 2 of M6", "info M6", "destroy 2 of M6"));
}
