// Panels and external monitors in one list: its order, its counts, and the function that sets each kind.
#include "brightness/display_targets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/state/app_state.h"
#include "brightness/fake_monitors.h"
#include "brightness/wmi.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

DisplayTargetList g_panels;
bool g_panelsSettable;

DisplayTarget BuiltIn(const wchar_t* name, std::uint32_t percent) {
    return {TargetKind::WmiPanel, name, 0, 100, percent};
}

DisplayTarget External(const wchar_t* name, std::uint32_t percent) {
    return {TargetKind::DdcMonitor, name, 0, 100, percent};
}

class DisplayTargets : public testing::Test {
protected:
    void SetUp() override {
        StartWithoutMonitors();
        g_panels.clear();
        g_panelsSettable = true;
    }
    void TearDown() override { g_app = AppState{}; }

    static std::vector<std::wstring> Names() {
        DisplayTargetList list;
        EnumerateTargets(&list);
        std::vector<std::wstring> names;
        for (const DisplayTarget& target : list)
            names.push_back(target.name);
        return names;
    }

    // "present 1, 2 targets, 1 at full, built in only 0"; "at full" means at 100 percent.
    static std::string CountsOf(const DisplayTargetList& list) {
        CountTargets(list);
        std::ostringstream text;
        text << "present " << g_app.pwmTargetsPresent << ", " << g_app.pwmTargetCount << " targets, "
             << g_app.pwmTargetsAt100 << " at full, built in only " << g_app.pwmBuiltInOnly;
        return text.str();
    }
};

}  // namespace

AMBREL_REPLACE(void, EnumerateWmiTargets, (DisplayTargetList * list)) {
    Record("list panels");
    list->insert(list->end(), g_panels.begin(), g_panels.end());
}

AMBREL_REPLACE(bool, SetWmiBrightness, (const std::wstring& name, std::uint32_t percent)) {
    Record("panel ", Narrow(name), " := ", percent);
    return g_panelsSettable;
}

TEST_F(DisplayTargets, PanelsAreListedBeforeExternalMonitors) {
    g_panels = {BuiltIn(L"panel 2", 10), BuiltIn(L"panel 1", 20)};
    g_monitors = {{.device = L"B", .physical = {{.handle = 11}, {.handle = 12}}},
                  {.device = L"A", .physical = {{.handle = 21}}}};
    EXPECT_THAT(Names(), ElementsAre(L"panel 2", L"panel 1", L"DXVA2:B#0", L"DXVA2:B#1", L"DXVA2:A#0"));
}

TEST_F(DisplayTargets, EachIsQueriedOnce) {
    g_panels = {BuiltIn(L"panel", 10)};
    g_monitors = {{.device = L"A", .physical = {{.handle = 11}}}};
    Names();
    EXPECT_THAT(g_calls, ElementsAre("list panels", "visit all", "count M1", "fetch 1 of M1", "info M1",
                                     "capabilities 11", "read 11", "destroy 1 of M1"));
}

TEST_F(DisplayTargets, ALaptopWithAMonitorYieldsThePanelAndTheMonitor) {
    g_panels = {BuiltIn(L"DISPLAY\\SDC4147\\4&1a2b&0&UID8388688_0", 45)};
    g_monitors = {{.device = L"\\\\.\\DISPLAY1", .physical = {{.handle = 11, .capabilities = 0}}},
                  {.device = L"\\\\.\\DISPLAY2", .physical = {{.handle = 21, .current = 70}}}};
    DisplayTargetList list;
    EnumerateTargets(&list);
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(static_cast<std::int32_t>(list[0].kind), 1);
    EXPECT_EQ(list[0].name, L"DISPLAY\\SDC4147\\4&1a2b&0&UID8388688_0");
    EXPECT_EQ(list[0].percent, 45U);
    EXPECT_EQ(static_cast<std::int32_t>(list[1].kind), 0);
    EXPECT_EQ(list[1].name, L"DXVA2:\\\\.\\DISPLAY2#0");
    EXPECT_EQ(list[1].percent, 70U);
}

TEST_F(DisplayTargets, ExternalMonitorsAreListedWithoutPanels) {
    g_monitors = {{.device = L"A", .physical = {{.handle = 11}}}};
    EXPECT_THAT(Names(), ElementsAre(L"DXVA2:A#0"));
}

TEST_F(DisplayTargets, PanelsAreListedWithoutExternalMonitors) {
    g_panels = {BuiltIn(L"panel", 10)};
    EXPECT_THAT(Names(), ElementsAre(L"panel"));
}

TEST_F(DisplayTargets, TheListIsEmptyWithoutDisplays) {
    EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(DisplayTargets, TheListIsRebuiltEachTime) {
    g_monitors = {{.device = L"A", .physical = {{.handle = 11}}}};
    EXPECT_THAT(Names(), ElementsAre(L"DXVA2:A#0"));
    g_monitors[0].device = L"B";
    g_panels = {BuiltIn(L"panel", 10)};
    EXPECT_THAT(Names(), ElementsAre(L"panel", L"DXVA2:B#0"));
}

TEST_F(DisplayTargets, EveryKindOfListIsCounted) {
    EXPECT_EQ(CountsOf({}), "present 0, 0 targets, 0 at full, built in only 0");
    EXPECT_EQ(CountsOf({External(L"A", 50)}), "present 1, 1 targets, 0 at full, built in only 0");
    EXPECT_EQ(CountsOf({BuiltIn(L"P", 50)}), "present 1, 1 targets, 0 at full, built in only 1");
    EXPECT_EQ(CountsOf({BuiltIn(L"P", 100), BuiltIn(L"Q", 0)}),
              "present 1, 2 targets, 1 at full, built in only 1");
    EXPECT_EQ(CountsOf({BuiltIn(L"P", 100), External(L"A", 100)}),
              "present 1, 2 targets, 2 at full, built in only 0");
    EXPECT_EQ(CountsOf({External(L"A", 1), BuiltIn(L"P", 100)}),
              "present 1, 2 targets, 1 at full, built in only 0");
}

TEST_F(DisplayTargets, NinetyNinePercentIsTreatedAs100AndNinetyEightIsNot) {
    EXPECT_EQ(CountsOf({External(L"A", 99), External(L"B", 100)}),
              "present 1, 2 targets, 2 at full, built in only 0");
    EXPECT_EQ(CountsOf({External(L"A", 98), BuiltIn(L"P", 99)}),
              "present 1, 2 targets, 1 at full, built in only 0");
}

TEST_F(DisplayTargets, AnEmptyListResetsTheCounts) {
    CountTargets({BuiltIn(L"P", 100), BuiltIn(L"Q", 100)});
    EXPECT_EQ(CountsOf({}), "present 0, 0 targets, 0 at full, built in only 0");
}

TEST_F(DisplayTargets, TwoTargetsWithTheSameNameAreCountedTwice) {
    EXPECT_EQ(CountsOf({External(L"A", 100), External(L"A", 100)}),
              "present 1, 2 targets, 2 at full, built in only 0");
}

TEST_F(DisplayTargets, AChangeOfTheCountIsLoggedWithThePreviousCount) {
    CountTargets({External(L"A", 50)});
    CountTargets({External(L"A", 50), External(L"B", 50)});
    CountTargets({});
    EXPECT_THAT(g_calls, ElementsAre("log: PWM-safe targets: 1 controllable (was 0)",
                                     "log: PWM-safe targets: 2 controllable (was 1)",
                                     "log: PWM-safe targets: 0 controllable (was 2)"));
}

TEST_F(DisplayTargets, AnUnchangedCountIsNotLoggedRegardlessOfOtherChanges) {
    CountTargets({External(L"A", 50)});
    g_calls.clear();
    CountTargets({BuiltIn(L"P", 100)});
    CountTargets({External(L"A", 99)});
    EXPECT_THAT(g_calls, IsEmpty());
}

TEST_F(DisplayTargets, NoTargetAtStartUpIsNotLogged) {
    CountTargets({});
    EXPECT_THAT(g_calls, IsEmpty());
}

TEST_F(DisplayTargets, AChangeOfPresenceAloneIsLogged) {
    g_app.pwmTargetsPresent = true;
    CountTargets({});
    EXPECT_THAT(g_calls, ElementsAre("log: PWM-safe targets: 0 controllable (was 0)"));
}

TEST_F(DisplayTargets, AChangeOfTheCountAloneIsLogged) {
    g_app.pwmTargetsPresent = true;
    g_app.pwmTargetCount = 3;
    CountTargets({External(L"A", 50)});
    EXPECT_THAT(g_calls, ElementsAre("log: PWM-safe targets: 1 controllable (was 3)"));
}

TEST_F(DisplayTargets, CountingNeitherQueriesNorSetsADisplay) {
    CountTargets({External(L"A", 50), BuiltIn(L"P", 50)});
    EXPECT_THAT(g_calls, ElementsAre("log: PWM-safe targets: 2 controllable (was 0)"));
}

TEST_F(DisplayTargets, APanelIsSetThroughWmi) {
    EXPECT_TRUE(SetTargetBrightness(BuiltIn(L"P", 50), 73));
    EXPECT_THAT(g_calls, ElementsAre("panel P := 73"));
    g_panelsSettable = false;
    EXPECT_FALSE(SetTargetBrightness(BuiltIn(L"P", 50), 73));
}

TEST_F(DisplayTargets, AnExternalMonitorIsSetThroughDdc) {
    g_monitors = {{.device = L"A", .physical = {{.handle = 11}}}};
    EXPECT_TRUE(SetTargetBrightness(External(L"DXVA2:A#0", 50), 73));
    EXPECT_THAT(g_calls, ElementsAre("visit all", "count M1", "fetch 1 of M1", "info M1", "read 11",
                                     "write 11 73", "destroy 1 of M1"));
    g_monitors[0].physical[0].settable = false;
    EXPECT_FALSE(SetTargetBrightness(External(L"DXVA2:A#0", 50), 73));
}

TEST_F(DisplayTargets, AnyOtherKindIsSetThroughDdc) {
    g_monitors = {{.device = L"A", .physical = {{.handle = 11}}}};
    EXPECT_TRUE(SetTargetBrightness({static_cast<TargetKind>(7), L"DXVA2:A#0", 0, 100, 50}, 20));
    EXPECT_THAT(g_calls, Contains("write 11 20"));
}

TEST_F(DisplayTargets, AnExternalMonitorIsSetToAtMost100) {
    g_monitors = {{.device = L"A", .physical = {{.handle = 11}}}};
    EXPECT_TRUE(SetTargetBrightness(External(L"DXVA2:A#0", 50), 500));
    EXPECT_THAT(g_calls, Contains("write 11 100"));
}

TEST_F(DisplayTargets, OnlyKindAndNameOfTheTargetAreUsed) {
    g_monitors = {{.device = L"A", .physical = {{.handle = 11, .maximum = 80}}}};
    EXPECT_TRUE(SetTargetBrightness({TargetKind::DdcMonitor, L"DXVA2:A#0", 1000, 2000, 3000}, 100));
    EXPECT_THAT(g_calls, Contains("write 11 80"));
}

TEST_F(DisplayTargets, SettingAnUnpluggedMonitorFails) {
    g_monitors = {{.device = L"A", .physical = {{.handle = 11}}}};
    DisplayTargetList list;
    EnumerateTargets(&list);
    ASSERT_EQ(list.size(), 1U);
    g_monitors.clear();
    EXPECT_FALSE(SetTargetBrightness(list[0], 100));
}
