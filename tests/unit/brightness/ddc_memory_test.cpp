// Failed allocations of the array of physical monitors, and the release of these arrays.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "app/state/app_state.h"
#include "brightness/ddc.h"
#include "brightness/fake_monitors.h"
#include "diag/monitor_probe.h"
#include "support/call_record.h"

namespace {

using testing::ElementsAre;

// Arrays allocated with std::nothrow: in this program only those of physical monitors.
int g_arraysHeld = 0;
int g_arraysRefused = 0;
int g_arraysToRefuse = 0;
constexpr int kMaxArrays = 16;
void* g_arrays[kMaxArrays];

void Untrack(void* block) {
    for (void*& held : g_arrays) {
        if (block == nullptr || held != block) continue;
        held = nullptr;
        g_arraysHeld -= 1;
    }
}

class DdcMemory : public testing::Test {
protected:
    void SetUp() override {
        StartWithoutMonitors();
        g_monitors = {{.device = L"A", .physical = {{.handle = 11}}},
                      {.device = L"B", .physical = {{.handle = 21}, {.handle = 22}}}};
        ASSERT_EQ(g_arraysHeld, 0);
        g_arraysRefused = 0;
        g_arraysToRefuse = 0;
    }
    void TearDown() override {
        EXPECT_EQ(g_arraysHeld, 0);
        EXPECT_EQ(HandlesHeld(), 0);
        g_arraysToRefuse = 0;
        g_app = AppState{};
    }

    static DisplayTargetList Targets() {
        DisplayTargetList list;
        EnumDisplayMonitors(nullptr, nullptr, EnumerateDdcTargets, reinterpret_cast<LPARAM>(&list));
        return list;
    }
};

}  // namespace

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    if (g_arraysToRefuse > 0) {
        g_arraysToRefuse -= 1;
        g_arraysRefused += 1;
        return nullptr;
    }
    void* block = std::malloc(size);
    for (void*& held : g_arrays) {
        if (held != nullptr) continue;
        held = block;
        g_arraysHeld += 1;
        break;
    }
    return block;
}

void operator delete[](void* block) noexcept {
    Untrack(block);
    std::free(block);
}

void operator delete[](void* block, std::size_t) noexcept {
    Untrack(block);
    std::free(block);
}

TEST_F(DdcMemory, OutOfMemory_SkipsTheDisplayMonitorAndListsTheNext) {
    g_arraysToRefuse = 1;
    const DisplayTargetList list = Targets();
    EXPECT_EQ(g_arraysRefused, 1);
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].name, L"DXVA2:B#0");
    EXPECT_THAT(g_calls,
                ElementsAre("visit all", "count M1", "count M2", "fetch 2 of M2", "info M2",
                            "capabilities 21", "read 21", "capabilities 22", "read 22", "destroy 2 of M2"));
}

TEST_F(DdcMemory, OutOfMemory_TheMonitorIsNotSet) {
    g_arraysToRefuse = 1;
    EXPECT_FALSE(SetDdcBrightness(L"DXVA2:A#0", 100));
    EXPECT_THAT(g_calls, ElementsAre("visit all", "count M1", "count M2", "fetch 2 of M2", "info M2",
                                     "destroy 2 of M2"));
}

TEST_F(DdcMemory, OutOfMemory_TheMonitorIsProbedWithoutItsBrightness) {
    g_arraysToRefuse = 1;
    MonitorProbeList list;
    EnumDisplayMonitors(nullptr, nullptr, ProbeMonitor, reinterpret_cast<LPARAM>(&list));
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].deviceName, L"A");
    EXPECT_EQ(list[0].description, L"");
    EXPECT_FALSE(list[0].brightnessCapable);
    EXPECT_TRUE(list[1].brightnessCapable);
}

TEST_F(DdcMemory, ArraysAreFreedAfterListingSettingAndProbing) {
    Targets();
    EXPECT_EQ(g_arraysHeld, 0);
    EXPECT_TRUE(SetDdcBrightness(L"DXVA2:B#1", 100));
    EXPECT_EQ(g_arraysHeld, 0);
    MonitorProbeList list;
    EnumDisplayMonitors(nullptr, nullptr, ProbeMonitor, reinterpret_cast<LPARAM>(&list));
    EXPECT_EQ(g_arraysHeld, 0);
}

TEST_F(DdcMemory, AnArrayThatCannotBeFilledIsFreed) {
    g_monitors[0].fetchable = false;
    Targets();
    EXPECT_EQ(g_arraysHeld, 0);
}
