// The properties of each display monitor for the support report.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/state/app_state.h"
#include "brightness/fake_monitors.h"
#include "diag/monitor_probe.h"
#include "support/call_record.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

class Probe : public testing::Test {
protected:
    void SetUp() override {
        StartWithoutMonitors();
        FakeMonitor monitor = {.device = L"\\\\.\\DISPLAY1", .physical = {{.handle = 11}}};
        monitor.mode.dmPelsWidth = 3840;
        monitor.mode.dmPelsHeight = 2160;
        monitor.mode.dmDisplayFrequency = 144;
        monitor.mode.dmBitsPerPel = 32;
        g_monitors = {monitor};
    }
    void TearDown() override {
        EXPECT_EQ(HandlesHeld(), 0);
        g_app = AppState{};
    }

    static MonitorProbeList Probes() {
        MonitorProbeList list;
        EnumDisplayMonitors(nullptr, nullptr, ProbeMonitor, reinterpret_cast<LPARAM>(&list));
        return list;
    }

    static MonitorProbe First() {
        const MonitorProbeList list = Probes();
        EXPECT_EQ(list.size(), 1U);
        return list.empty() ? MonitorProbe{} : list[0];
    }

    static bool IsInternal(const wchar_t* description) {
        g_monitors[0].physical[0].description = description;
        return First().internal;
    }
};

}  // namespace

TEST_F(Probe, ReadsEveryPropertyOfAMonitor) {
    g_monitors[0].physical[0] = {.handle = 11,
                                 .minimum = 10,
                                 .current = 55,
                                 .maximum = 90,
                                 .description = L"Dell U2720Q(DisplayPort)"};
    g_monitors[0].primary = true;
    const MonitorProbe probe = First();
    EXPECT_EQ(probe.deviceName, L"\\\\.\\DISPLAY1");
    EXPECT_EQ(probe.description, L"Dell U2720Q(DisplayPort)");
    EXPECT_EQ(probe.width, 3840U);
    EXPECT_EQ(probe.height, 2160U);
    EXPECT_EQ(probe.refresh, 144U);
    EXPECT_EQ(probe.bitsPerPixel, 32U);
    EXPECT_TRUE(probe.primary);
    EXPECT_FALSE(probe.internal);
    EXPECT_EQ(probe.minimum, 10U);
    EXPECT_EQ(probe.current, 55U);
    EXPECT_EQ(probe.maximum, 90U);
    EXPECT_TRUE(probe.brightnessCapable);
}

TEST_F(Probe, MakesEachCallOnce) {
    Probes();
    EXPECT_THAT(g_calls, ElementsAre("visit all", "info M1", "mode \\\\.\\DISPLAY1", "count M1",
                                     "fetch 1 of M1", "capabilities 11", "read 11", "destroy 1 of M1"));
}

TEST_F(Probe, QueriesOnlyTheFirstPhysicalMonitor) {
    g_monitors[0].physical = {{.handle = 11, .description = L"one"}, {.handle = 12, .description = L"two"}};
    EXPECT_EQ(First().description, L"one");
    EXPECT_THAT(g_calls, ElementsAre("visit all", "info M1", "mode \\\\.\\DISPLAY1", "count M1",
                                     "fetch 2 of M1", "capabilities 11", "read 11", "destroy 2 of M1"));
}

TEST_F(Probe, ListsTheDisplayMonitorsInOrder) {
    g_monitors.push_back({.device = L"\\\\.\\DISPLAY2", .physical = {{.handle = 21}}});
    g_monitors[1].primary = true;
    const MonitorProbeList list = Probes();
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].deviceName, L"\\\\.\\DISPLAY1");
    EXPECT_FALSE(list[0].primary);
    EXPECT_EQ(list[1].deviceName, L"\\\\.\\DISPLAY2");
    EXPECT_TRUE(list[1].primary);
}

TEST_F(Probe, AMonitorWithoutTheCapabilityIsListedAndNotRead) {
    g_monitors[0].physical[0].capabilities = static_cast<DWORD>(~MC_CAPS_BRIGHTNESS);
    const MonitorProbe probe = First();
    EXPECT_FALSE(probe.brightnessCapable);
    EXPECT_EQ(probe.description, L"Generic PnP Monitor");
    EXPECT_EQ(probe.minimum, 0U);
    EXPECT_EQ(probe.current, 0U);
    EXPECT_EQ(probe.maximum, 0U);
    EXPECT_THAT(g_calls, Not(Contains("read 11")));
}

TEST_F(Probe, AMonitorWhoseCapabilitiesCannotBeReadIsListedAndNotRead) {
    g_monitors[0].physical[0].capabilitiesReadable = false;
    EXPECT_FALSE(First().brightnessCapable);
    EXPECT_THAT(g_calls, Not(Contains("read 11")));
}

TEST_F(Probe, ACapableMonitorThatCannotBeReadHasBrightnessZero) {
    g_monitors[0].physical[0].readable = false;
    const MonitorProbe probe = First();
    EXPECT_TRUE(probe.brightnessCapable);
    EXPECT_EQ(probe.minimum, 0U);
    EXPECT_EQ(probe.current, 0U);
    EXPECT_EQ(probe.maximum, 0U);
}

TEST_F(Probe, AModeThatCannotBeReadIsZero) {
    g_monitors[0].modeReadable = false;
    const MonitorProbe probe = First();
    EXPECT_EQ(probe.width, 0U);
    EXPECT_EQ(probe.height, 0U);
    EXPECT_EQ(probe.refresh, 0U);
    EXPECT_EQ(probe.bitsPerPixel, 0U);
    EXPECT_TRUE(probe.brightnessCapable);
}

TEST_F(Probe, ADisplayMonitorWithoutPhysicalMonitorsIsListed) {
    g_monitors[0].physical.clear();
    const MonitorProbe probe = First();
    EXPECT_EQ(probe.deviceName, L"\\\\.\\DISPLAY1");
    EXPECT_EQ(probe.description, L"");
    EXPECT_EQ(probe.width, 3840U);
    EXPECT_FALSE(probe.brightnessCapable);
    EXPECT_THAT(g_calls, ElementsAre("visit all", "info M1", "mode \\\\.\\DISPLAY1", "count M1"));
}

TEST_F(Probe, ADisplayMonitorWhosePhysicalMonitorsCannotBeCountedIsListed) {
    g_monitors[0].countable = false;
    EXPECT_EQ(First().description, L"");
    EXPECT_THAT(g_calls, ElementsAre("visit all", "info M1", "mode \\\\.\\DISPLAY1", "count M1"));
}

TEST_F(Probe, ADisplayMonitorWithAnImplausibleCountIsListed) {
    g_monitors[0].reportedCount = 0xFFFFFFFF;
    EXPECT_EQ(First().description, L"");
    EXPECT_THAT(g_calls, ElementsAre("visit all", "info M1", "mode \\\\.\\DISPLAY1", "count M1"));
}

TEST_F(Probe, ADisplayMonitorWhosePhysicalMonitorsCannotBeFetchedIsListed) {
    g_monitors[0].fetchable = false;
    EXPECT_EQ(First().description, L"");
    EXPECT_THAT(g_calls,
                ElementsAre("visit all", "info M1", "mode \\\\.\\DISPLAY1", "count M1", "fetch 1 of M1"));
}

TEST_F(Probe, ADisplayMonitorWhoseInformationCannotBeReadHasNoName) {
    g_monitors[0].infoReadable = false;
    g_monitors[0].primary = true;
    const MonitorProbe probe = First();
    EXPECT_EQ(probe.deviceName, L"");
    EXPECT_FALSE(probe.primary);
    EXPECT_TRUE(probe.brightnessCapable);
}

TEST_F(Probe, AHandleOfZeroIsQueried) {
    g_monitors[0].physical[0] = {.handle = 0, .current = 42};
    EXPECT_EQ(First().current, 42U);
}

TEST_F(Probe, ADescriptionOfFullLengthIsTerminated) {
    g_monitors[0].physical[0].description = std::wstring(PHYSICAL_MONITOR_DESCRIPTION_SIZE, L'd');
    EXPECT_EQ(First().description, std::wstring(PHYSICAL_MONITOR_DESCRIPTION_SIZE, L'd'));
}

TEST_F(Probe, InternalIsRecognisedInThatSpellingOnly) {
    EXPECT_TRUE(IsInternal(L"Internal"));
    EXPECT_TRUE(IsInternal(L"Internal Display"));
    EXPECT_TRUE(IsInternal(L"Generic (Internal)"));
    EXPECT_TRUE(IsInternal(L"NonInternal"));
    EXPECT_FALSE(IsInternal(L"internal display"));
    EXPECT_FALSE(IsInternal(L"INTERNAL DISPLAY"));
    EXPECT_FALSE(IsInternal(L"Interna"));
    EXPECT_FALSE(IsInternal(L"Inter nal display"));
    EXPECT_FALSE(IsInternal(L""));
}

TEST_F(Probe, NoMonitorIsQueriedWithoutAList) {
    EXPECT_TRUE(ProbeMonitor(MakeHandle<HMONITOR>(0x100), nullptr, nullptr, 0));
    EXPECT_THAT(g_calls, IsEmpty());
}
