// The enumeration of external monitors: the calls for each monitor and the targets that they yield.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/state/app_state.h"
#include "brightness/ddc.h"
#include "brightness/fake_monitors.h"
#include "support/call_record.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DdcEnumeration : public testing::Test {
protected:
    void SetUp() override { StartWithoutMonitors(); }
    void TearDown() override {
        EXPECT_EQ(HandlesHeld(), 0);
        g_app = AppState{};
    }

    static DisplayTargetList Targets() {
        DisplayTargetList list;
        EnumDisplayMonitors(nullptr, nullptr, EnumerateDdcTargets, reinterpret_cast<LPARAM>(&list));
        return list;
    }

    static std::vector<std::wstring> Names() {
        std::vector<std::wstring> names;
        for (const DisplayTarget& target : Targets())
            names.push_back(target.name);
        return names;
    }
};

FakeMonitor MonitorOf(const wchar_t* device, std::vector<FakePhysical> physical) {
    FakeMonitor monitor;
    monitor.device = device;
    monitor.physical = std::move(physical);
    return monitor;
}

const std::wstring kFirst = L"DXVA2:\\\\.\\DISPLAY1#0";
const std::wstring kSecond = L"DXVA2:\\\\.\\DISPLAY2#0";

}  // namespace

TEST_F(DdcEnumeration, OneMonitorGetsEachCallOnceInOrder) {
    g_monitors = {MonitorOf(L"\\\\.\\DISPLAY1", {{.handle = 11}})};
    Targets();
    EXPECT_THAT(g_calls, ElementsAre("visit all", "count M1", "fetch 1 of M1", "info M1", "capabilities 11",
                                     "read 11", "destroy 1 of M1"));
}

TEST_F(DdcEnumeration, ATargetHasKindNameRangeAndPercent) {
    g_monitors = {
        MonitorOf(L"\\\\.\\DISPLAY1", {{.handle = 11, .minimum = 10, .current = 55, .maximum = 100}})};
    const DisplayTargetList list = Targets();
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].kind, TargetKind::DdcMonitor);
    EXPECT_EQ(static_cast<std::int32_t>(list[0].kind), 0);
    EXPECT_EQ(list[0].name, kFirst);
    EXPECT_EQ(list[0].minimum, 10U);
    EXPECT_EQ(list[0].maximum, 100U);
    EXPECT_EQ(list[0].percent, 50U);
}

TEST_F(DdcEnumeration, TwoMonitorsAreEnumeratedOneAfterTheOther) {
    g_monitors = {MonitorOf(L"\\\\.\\DISPLAY1", {{.handle = 11}}),
                  MonitorOf(L"\\\\.\\DISPLAY2", {{.handle = 21}})};
    EXPECT_THAT(Names(), ElementsAre(kFirst, kSecond));
    EXPECT_THAT(g_calls, ElementsAre("visit all", "count M1", "fetch 1 of M1", "info M1", "capabilities 11",
                                     "read 11", "destroy 1 of M1", "count M2", "fetch 1 of M2", "info M2",
                                     "capabilities 21", "read 21", "destroy 1 of M2"));
}

TEST_F(DdcEnumeration, PhysicalMonitorsOfOneDisplayMonitorAreNumbered) {
    g_monitors = {MonitorOf(L"\\\\.\\DISPLAY2", {{.handle = 21}, {.handle = 22}})};
    EXPECT_THAT(Names(), ElementsAre(kSecond, L"DXVA2:\\\\.\\DISPLAY2#1"));
    EXPECT_THAT(g_calls, ElementsAre("visit all", "count M1", "fetch 2 of M1", "info M1", "capabilities 21",
                                     "read 21", "capabilities 22", "read 22", "destroy 2 of M1"));
}

TEST_F(DdcEnumeration, ASkippedPhysicalMonitorKeepsItsNumber) {
    g_monitors = {MonitorOf(L"\\\\.\\DISPLAY2", {{.handle = 21, .capabilities = 0}, {.handle = 22}})};
    EXPECT_THAT(Names(), ElementsAre(L"DXVA2:\\\\.\\DISPLAY2#1"));
}

TEST_F(DdcEnumeration, IndexesOfTwoDigitsHaveNoLeadingZero) {
    g_monitors = {MonitorOf(L"D", std::vector<FakePhysical>(12, {.handle = 5}))};
    const std::vector<std::wstring> names = Names();
    ASSERT_EQ(names.size(), 12U);
    EXPECT_EQ(names[9], L"DXVA2:D#9");
    EXPECT_EQ(names[11], L"DXVA2:D#11");
}

TEST_F(DdcEnumeration, AMonitorWithoutADeviceNameIsNamedUnknown) {
    g_monitors = {MonitorOf(L"", {{.handle = 11}, {.handle = 12}})};
    EXPECT_THAT(Names(), ElementsAre(L"DXVA2:UNKNOWN#0", L"DXVA2:UNKNOWN#1"));
}

TEST_F(DdcEnumeration, AMonitorWhoseInformationCannotBeReadIsNamedUnknown) {
    g_monitors = {MonitorOf(L"\\\\.\\DISPLAY1", {{.handle = 11}})};
    g_monitors[0].infoReadable = false;
    EXPECT_THAT(Names(), ElementsAre(L"DXVA2:UNKNOWN#0"));
}

TEST_F(DdcEnumeration, TheLongestDeviceNameIsNotTruncated) {
    const std::wstring longest(CCHDEVICENAME - 1, L'D');
    g_monitors = {MonitorOf(longest.c_str(), {{.handle = 11}})};
    EXPECT_THAT(Names(), ElementsAre(L"DXVA2:" + longest + L"#0"));
}

TEST_F(DdcEnumeration, CharactersOutsideTheBasicPlaneAreKept) {
    g_monitors = {MonitorOf(L"\xD83D\xDE00\x00E9", {{.handle = 11}})};
    EXPECT_THAT(Names(), ElementsAre(L"DXVA2:\xD83D\xDE00\x00E9#0"));
}

TEST_F(DdcEnumeration, NoFurtherCallFollowsWhenThePhysicalMonitorsCannotBeCounted) {
    g_monitors = {MonitorOf(L"A", {{.handle = 11}}), MonitorOf(L"B", {{.handle = 21}})};
    g_monitors[0].countable = false;
    EXPECT_THAT(Names(), ElementsAre(L"DXVA2:B#0"));
    EXPECT_THAT(g_calls, ElementsAre("visit all", "count M1", "count M2", "fetch 1 of M2", "info M2",
                                     "capabilities 21", "read 21", "destroy 1 of M2"));
}

TEST_F(DdcEnumeration, NoFurtherCallFollowsForADisplayMonitorWithoutPhysicalMonitors) {
    g_monitors = {MonitorOf(L"A", {}), MonitorOf(L"B", {{.handle = 21}})};
    EXPECT_THAT(Names(), ElementsAre(L"DXVA2:B#0"));
    EXPECT_THAT(g_calls, ElementsAre("visit all", "count M1", "count M2", "fetch 1 of M2", "info M2",
                                     "capabilities 21", "read 21", "destroy 1 of M2"));
}

TEST_F(DdcEnumeration, AnImplausibleCountIsIgnored) {
    g_monitors = {MonitorOf(L"A", {{.handle = 11}}), MonitorOf(L"B", {{.handle = 21}})};
    for (const DWORD count : {0xFFFFFFFFU, 0x7FFFFFFFU, 0x01000000U}) {
        g_monitors[0].reportedCount = count;
        g_calls.clear();
        EXPECT_THAT(Names(), ElementsAre(L"DXVA2:B#0")) << count;
        EXPECT_THAT(g_calls, ElementsAre("visit all", "count M1", "count M2", "fetch 1 of M2", "info M2",
                                         "capabilities 21", "read 21", "destroy 1 of M2"));
    }
}

TEST_F(DdcEnumeration, NothingIsDestroyedIfThePhysicalMonitorsCannotBeFetched) {
    g_monitors = {MonitorOf(L"A", {{.handle = 11}}), MonitorOf(L"B", {{.handle = 21}})};
    g_monitors[0].fetchable = false;
    EXPECT_THAT(Names(), ElementsAre(L"DXVA2:B#0"));
    EXPECT_THAT(g_calls, ElementsAre("visit all", "count M1", "fetch 1 of M1", "count M2", "fetch 1 of M2",
                                     "info M2", "capabilities 21", "read 21", "destroy 1 of M2"));
}

TEST_F(DdcEnumeration, AMonitorWithoutTheCapabilityIsNotRead) {
    g_monitors = {MonitorOf(
        L"A", {{.handle = 11, .capabilities = static_cast<DWORD>(~MC_CAPS_BRIGHTNESS)}, {.handle = 12}})};
    EXPECT_THAT(Names(), ElementsAre(L"DXVA2:A#1"));
    EXPECT_THAT(g_calls, ElementsAre("visit all", "count M1", "fetch 2 of M1", "info M1", "capabilities 11",
                                     "capabilities 12", "read 12", "destroy 2 of M1"));
}

TEST_F(DdcEnumeration, TheCapabilityIsTheBit0x2) {
    g_monitors = {
        MonitorOf(L"A", {{.handle = 11, .capabilities = 0x2}, {.handle = 12, .capabilities = 0xFF}})};
    EXPECT_THAT(Names(), ElementsAre(L"DXVA2:A#0", L"DXVA2:A#1"));
}

TEST_F(DdcEnumeration, AMonitorWhoseCapabilitiesCannotBeReadIsNotRead) {
    g_monitors = {MonitorOf(L"A", {{.handle = 11, .capabilitiesReadable = false}, {.handle = 12}})};
    EXPECT_THAT(Names(), ElementsAre(L"DXVA2:A#1"));
    EXPECT_THAT(g_calls, ElementsAre("visit all", "count M1", "fetch 2 of M1", "info M1", "capabilities 11",
                                     "capabilities 12", "read 12", "destroy 2 of M1"));
}

TEST_F(DdcEnumeration, AMonitorWhoseBrightnessCannotBeReadIsSkippedAndNotRetried) {
    g_monitors = {MonitorOf(L"A", {{.handle = 11, .readable = false}, {.handle = 12}})};
    EXPECT_THAT(Names(), ElementsAre(L"DXVA2:A#1"));
    EXPECT_THAT(g_calls, ElementsAre("visit all", "count M1", "fetch 2 of M1", "info M1", "capabilities 11",
                                     "read 11", "capabilities 12", "read 12", "destroy 2 of M1"));
}

TEST_F(DdcEnumeration, AHandleOfZeroIsValid) {
    g_monitors = {MonitorOf(L"A", {{.handle = 0, .current = 30}})};
    const DisplayTargetList list = Targets();
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].percent, 30U);
    EXPECT_THAT(g_calls, ElementsAre("visit all", "count M1", "fetch 1 of M1", "info M1", "capabilities 0",
                                     "read 0", "destroy 1 of M1"));
}

TEST_F(DdcEnumeration, TargetsWithFaultyRangesAreListed) {
    g_monitors = {MonitorOf(L"A", {{.handle = 11, .minimum = 20, .current = 5, .maximum = 100},
                                   {.handle = 12, .minimum = 50, .current = 50, .maximum = 50},
                                   {.handle = 13, .minimum = 90, .current = 20, .maximum = 10},
                                   {.handle = 14, .minimum = 0, .current = 0xFFFFFFFF, .maximum = 100}})};
    const DisplayTargetList list = Targets();
    ASSERT_EQ(list.size(), 4U);
    EXPECT_EQ(list[0].percent, 0U);
    EXPECT_EQ(list[1].percent, 100U);
    EXPECT_EQ(list[2].percent, 100U);
    EXPECT_EQ(list[2].minimum, 90U);
    EXPECT_EQ(list[2].maximum, 10U);
    EXPECT_EQ(list[3].percent, 100U);
}

TEST_F(DdcEnumeration, TwoMonitorsWithTheSameNameAreBothListed) {
    g_monitors = {MonitorOf(L"A", {{.handle = 11, .current = 10}}), MonitorOf(L"A", {{.handle = 21}})};
    EXPECT_THAT(Names(), ElementsAre(L"DXVA2:A#0", L"DXVA2:A#0"));
}

TEST_F(DdcEnumeration, SixtyFourMonitorsAreListedInOrder) {
    for (int i = 0; i < 64; ++i)
        g_monitors.push_back(MonitorOf(std::to_wstring(i).c_str(), {{.handle = 7}}));
    const std::vector<std::wstring> names = Names();
    ASSERT_EQ(names.size(), 64U);
    for (std::size_t i = 0; i < 64; ++i)
        EXPECT_EQ(names[i], L"DXVA2:" + std::to_wstring(i) + L"#0");
    EXPECT_EQ(g_calls.size(), 1U + 64U * 6U);
}

TEST_F(DdcEnumeration, NoMonitorIsQueriedWithoutAList) {
    g_monitors = {MonitorOf(L"A", {{.handle = 11}})};
    EXPECT_TRUE(EnumerateDdcTargets(MakeHandle<HMONITOR>(0x100), nullptr, nullptr, 0));
    EXPECT_THAT(g_calls, IsEmpty());
}

TEST_F(DdcEnumeration, TargetsAreAppendedToTheList) {
    g_monitors = {MonitorOf(L"A", {{.handle = 11}})};
    DisplayTargetList list = {{TargetKind::WmiPanel, L"panel", 0, 100, 5}};
    EnumDisplayMonitors(nullptr, nullptr, EnumerateDdcTargets, reinterpret_cast<LPARAM>(&list));
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].name, L"panel");
    EXPECT_EQ(list[1].name, L"DXVA2:A#0");
}
