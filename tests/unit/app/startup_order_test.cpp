#include <gtest/gtest.h>

#include <algorithm>

#include "app/startup_fakes.h"
#include "app/state/app_state.h"
#include "support/fake_libraries.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_log_file);

namespace {

class StartupOrder : public testing::Test {
protected:
    void SetUp() override { ResetSystem(); }
};

}  // namespace

TEST_F(StartupOrder, TheStepsRunInOrder) {
    EXPECT_EQ(Start(), 0);
    EXPECT_EQ(g_calls, (CallRecord{
                           "log: Ambrel Windows v2.23 starting",
                           "log: OS: Windows 11 Pro 23H2 (10.0.22631)",
                           "log: Hardware: Contoso Slate 7 / Contoso CPU @ 2.00GHz",
                           "co initialize 6",
                           "co security -1 0 3 0",
                           "load Shcore.dll",
                           "set awareness 2",
                           "free Shcore.dll",
                           "create mutex Global\\Ambrel2SingleInstance",
                           "install crash guard",
                           "register message TaskbarCreated",
                           "brush 855309",
                           "font",
                           "font",
                           "font",
                           "font",
                           "font",
                           "font",
                           "font",
                           "font",
                           "load icon 103 22x22",
                           "load settings",
                           "open log C:\\Users\\Ada\\AppData\\Roaming\\Ambrel2\\events.log",
                           "read gamma range",
                           "log: Gamma range: Windows default",
                           "repair autostart entry",
                           "reset cursors",
                           "init magnification",
                           "register class",
                           "create window 320x540",
                           "window procedure 1",
                           "dpi of window 500",
                           "resize 500 320x540",
                           "load dwmapi.dll",
                           "dwm 500 33 2",
                           "free dwmapi.dll",
                           "add tray icon",
                           "show window 500 0",
                           "quit message",
                           "co uninitialize",
                       }));
}

TEST_F(StartupOrder, TheStateContainsTheResultsOfStartUp) {
    Start();
    EXPECT_EQ(g_app.startTick, 987654U);
    EXPECT_EQ(g_app.instance, kInstance);
    EXPECT_EQ(g_app.taskbarCreatedMessage, 0xC0DEU);
    EXPECT_EQ(g_app.singleInstanceMutex, kMutex);
    EXPECT_EQ(g_app.mainWindow, kWindow);
    EXPECT_EQ(g_app.dpi, 96U);
    EXPECT_TRUE(g_app.trayIconAdded);
    EXPECT_TRUE(g_app.scaledResourcesBuilt);
    EXPECT_FALSE(g_app.filterOn);
    EXPECT_FALSE(g_app.popupShown);
}

TEST_F(StartupOrder, ASystemWithoutANameIsCalledWindows) {
    g_system.os.productName.clear();
    g_system.os.displayVersion = L"22H2";
    g_system.os.build = 19045;
    Start();
    EXPECT_EQ(g_calls[1], "log: OS: Windows 22H2 (10.0.19045)");
}

TEST_F(StartupOrder, TheMachineComesBeforeItsProcessor) {
    g_system.hardware = L"unknown";
    g_system.processor = L"Some CPU";
    Start();
    EXPECT_EQ(g_calls[2], "log: Hardware: unknown / Some CPU");
}

TEST_F(StartupOrder, TheLogIsLocatedNextToTheSettings) {
    g_system.settingsPath = L"D:\\a\\b\\settings.ini";
    Start();
    EXPECT_EQ(CallsStarting("open log"), (CallRecord{"open log D:\\a\\b\\events.log"}));
}

TEST_F(StartupOrder, ASettingsPathWithoutABackslashGivesABareLogName) {
    g_system.settingsPath = L"settings.ini";
    Start();
    EXPECT_EQ(CallsStarting("open log"), (CallRecord{"open log events.log"}));
}

TEST_F(StartupOrder, WithoutASettingsPathThereIsNoLogFileAndTheProgramRuns) {
    g_system.settingsPath.clear();
    EXPECT_EQ(Start(), 0);
    EXPECT_TRUE(CallsStarting("open log").empty());
    EXPECT_EQ(CallsStarting("add tray icon").size(), 1U);
}

TEST_F(StartupOrder, TheMessageLoopTranslatesAndDispatchesUntilQuit) {
    g_system.messages = {{kWindow, WM_PAINT, 0, 0, 0, {}}, {nullptr, WM_APP + 1, 0, 0, 0, {}}};
    g_system.quitCode = 7;
    EXPECT_EQ(Start(), 7);
    const CallRecord end(g_calls.end() - 6, g_calls.end());
    EXPECT_EQ(end, (CallRecord{"translate 15", "dispatch 15", "translate 32769", "dispatch 32769",
                               "quit message", "co uninitialize"}));
}

TEST_F(StartupOrder, TheGammaRangeIsStoredAndLogged) {
    g_app.gammaRangeExpanded = true;
    Start();
    EXPECT_FALSE(g_app.gammaRangeExpanded);
    EXPECT_EQ(CallsStarting("log: Gamma range"), (CallRecord{"log: Gamma range: Windows default"}));

    ResetSystem();
    g_system.gammaRangeExpanded = true;
    Start();
    EXPECT_TRUE(g_app.gammaRangeExpanded);
    EXPECT_EQ(CallsStarting("log: Gamma range"),
              (CallRecord{"log: Gamma range: expanded (GdiIcmGammaRange)"}));
    EXPECT_EQ(g_app.gammaFixEpoch, 0U) << "a range that is expanded already is no fix of ours";
}

TEST_F(StartupOrder, WithoutASettingsPathTheOptionsAreStillProcessed) {
    g_system.settingsPath.clear();
    Start();
    const auto from = std::find(g_calls.begin(), g_calls.end(), "load settings");
    ASSERT_GE(g_calls.end() - from, 6);
    EXPECT_EQ(CallRecord(from, from + 6),
              (CallRecord{"load settings", "read gamma range", "log: Gamma range: Windows default",
                          "repair autostart entry", "reset cursors", "init magnification"}));
}

TEST_F(StartupOrder, StartUpSavesNothing) {
    Start();
    EXPECT_TRUE(CallsStarting("save settings").empty());
}
