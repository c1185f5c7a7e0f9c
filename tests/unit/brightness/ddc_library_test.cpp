// dxva2.dll is loaded at run time. A system where it is missing or incomplete has no external targets.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "app/state/app_state.h"
#include "brightness/ddc.h"
#include "brightness/fake_monitors.h"
#include "diag/monitor_probe.h"
#include "support/call_record.h"
#include "support/fake_libraries.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

const std::vector<std::string> kNames = {
    "GetNumberOfPhysicalMonitorsFromHMONITOR",
    "GetPhysicalMonitorsFromHMONITOR",
    "DestroyPhysicalMonitors",
    "GetMonitorCapabilities",
    "GetMonitorBrightness",
    "SetMonitorBrightness",
};

LibraryFunctions AllFunctions() {
    const MonitorFunctions fakes = FakeMonitorFunctions();
    return {{kNames[0], EntryPoint(fakes.getNumberOfPhysicalMonitorsFromHMONITOR)},
            {kNames[1], EntryPoint(fakes.getPhysicalMonitorsFromHMONITOR)},
            {kNames[2], EntryPoint(fakes.destroyPhysicalMonitors)},
            {kNames[3], EntryPoint(fakes.getMonitorCapabilities)},
            {kNames[4], EntryPoint(fakes.getMonitorBrightness)},
            {kNames[5], EntryPoint(fakes.setMonitorBrightness)}};
}

class MonitorLibrary : public testing::Test {
protected:
    void SetUp() override {
        StartWithoutMonitors();
        g_monitorFunctions = {};
        RemoveLibraries();
        g_monitors = {{.device = L"A", .physical = {{.handle = 11}}}};
    }
    void TearDown() override {
        RemoveLibraries();
        g_app = AppState{};
    }

    static DisplayTargetList Targets() {
        DisplayTargetList list;
        EnumDisplayMonitors(nullptr, nullptr, EnumerateDdcTargets, reinterpret_cast<LPARAM>(&list));
        return list;
    }

    static MonitorProbeList Probes() {
        MonitorProbeList list;
        EnumDisplayMonitors(nullptr, nullptr, ProbeMonitor, reinterpret_cast<LPARAM>(&list));
        return list;
    }

    static void ExpectNoExternalTargets() {
        EXPECT_TRUE(Targets().empty());
        EXPECT_FALSE(SetDdcBrightness(L"DXVA2:A#0", 100));
        const MonitorProbeList probes = Probes();
        ASSERT_EQ(probes.size(), 1U);
        EXPECT_EQ(probes[0].deviceName, L"A");
        EXPECT_EQ(probes[0].description, L"");
        EXPECT_FALSE(probes[0].brightnessCapable);
        for (const char* call : {"count", "fetch", "capabilities", "read", "write", "destroy"})
            EXPECT_THAT(g_calls, Not(Contains(StartsWith(call))));
    }
};

}  // namespace

TEST_F(MonitorLibrary, IsLoadedOnFirstUseAndNeverFreed) {
    InstallLibrary(L"dxva2.dll", AllFunctions());
    EXPECT_EQ(Targets().size(), 1U);
    EXPECT_TRUE(SetDdcBrightness(L"DXVA2:A#0", 100));
    EXPECT_EQ(Probes().size(), 1U);
    EXPECT_EQ(std::count(g_calls.begin(), g_calls.end(), "load dxva2.dll"), 1);
    EXPECT_THAT(g_calls, Not(Contains(StartsWith("free"))));
}

TEST_F(MonitorLibrary, SettingABrightnessLoadsItToo) {
    InstallLibrary(L"dxva2.dll", AllFunctions());
    EXPECT_TRUE(SetDdcBrightness(L"DXVA2:A#0", 100));
    EXPECT_THAT(g_calls, ElementsAre("visit all", "load dxva2.dll", "count M1", "fetch 1 of M1", "info M1",
                                     "read 11", "write 11 100", "destroy 1 of M1"));
}

TEST_F(MonitorLibrary, IsNotLoadedWithoutADisplayMonitor) {
    InstallLibrary(L"dxva2.dll", AllFunctions());
    g_monitors.clear();
    Targets();
    EXPECT_THAT(g_calls, ElementsAre("visit all"));
}

TEST_F(MonitorLibrary, ThereAreNoExternalTargetsIfItIsMissing) {
    ExpectNoExternalTargets();
    EXPECT_THAT(g_calls, Not(Contains(StartsWith("free"))));
}

TEST_F(MonitorLibrary, IfAnyFunctionIsMissingItIsFreedAndThereAreNoExternalTargets) {
    for (const std::string& missing : kNames) {
        SCOPED_TRACE(missing);
        SetUp();
        LibraryFunctions functions = AllFunctions();
        functions.erase(missing);
        InstallLibrary(L"dxva2.dll", functions);
        ExpectNoExternalTargets();
        EXPECT_EQ(std::count(g_calls.begin(), g_calls.end(), "load dxva2.dll"),
                  std::count(g_calls.begin(), g_calls.end(), "free dxva2.dll"));
        EXPECT_EQ(g_monitorFunctions.module, nullptr);
    }
}
