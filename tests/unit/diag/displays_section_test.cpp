#include "diag/report_fixture.h"

namespace {

class DisplaysSection : public SupportReport {
protected:
    MonitorProbe& monitor = facts.monitors[0];
};

}  // namespace

TEST_F(DisplaysSection, OneDisplayAndItsAdapter) {
    EXPECT_EQ(Section(L"DISPLAYS"),
              L"=== DISPLAYS ===\r\n"
              L"Total:          1\r\n"
              L"[0] Generic PnP Monitor  (PRIMARY)\r\n"
              L"    Device:        \\\\.\\DISPLAY1\r\n"
              L"    Mode:          1920x1080 @ 60Hz, 32-bit\r\n"
              L"    DDC/CI bright: not supported\r\n"
              L"Adapter:        Imaginary Graphics\r\n"
              L"\r\n");
}

TEST_F(DisplaysSection, ADisplayWithDdcCiHasItsBrightness) {
    monitor.brightnessCapable = true;
    monitor.current = 37;
    monitor.minimum = 5;
    monitor.maximum = 250;
    EXPECT_EQ(Section(L"DISPLAYS"),
              L"=== DISPLAYS ===\r\n"
              L"Total:          1\r\n"
              L"[0] Generic PnP Monitor  (PRIMARY)\r\n"
              L"    Device:        \\\\.\\DISPLAY1\r\n"
              L"    Mode:          1920x1080 @ 60Hz, 32-bit\r\n"
              L"    DDC/CI bright: supported\r\n"
              L"    HW brightness: 37 (range 5..250)\r\n"
              L"Adapter:        Imaginary Graphics\r\n"
              L"\r\n");
}

TEST_F(DisplaysSection, WithoutDdcCiThereIsNoBrightnessLine) {
    monitor.current = 37;
    monitor.maximum = 100;
    EXPECT_EQ(After(L"    DDC/CI bright: "), L"not supported");
    EXPECT_FALSE(HasLine(L"    HW brightness:"));
}

TEST_F(DisplaysSection, ARangeThatCouldNotBeReadIsZero) {
    monitor.brightnessCapable = true;
    EXPECT_EQ(After(L"    HW brightness: "), L"0 (range 0..0)");
}

TEST_F(DisplaysSection, AnInvalidRangeIsShownUnchanged) {
    monitor.brightnessCapable = true;
    monitor.current = 4294967295;
    monitor.minimum = 100;
    monitor.maximum = 0;
    EXPECT_EQ(After(L"    HW brightness: "), L"4294967295 (range 100..0)");
}

TEST_F(DisplaysSection, ADisplayWithoutANameIsIdentifiedByItsDevice) {
    monitor.description.clear();
    EXPECT_EQ(After(L"[0] "), L"\\\\.\\DISPLAY1  (PRIMARY)");
}

TEST_F(DisplaysSection, ADisplayThatIsNotPrimaryHasNoMark) {
    monitor.primary = false;
    EXPECT_EQ(After(L"[0] "), L"Generic PnP Monitor");
}

TEST_F(DisplaysSection, ABuiltInDisplayIsShownLikeAnyOther) {
    monitor.internal = true;
    EXPECT_EQ(After(L"[0] "), L"Generic PnP Monitor  (PRIMARY)");
}

TEST_F(DisplaysSection, DisplaysAreCountedFromZeroInTheirOrder) {
    const MonitorProbe first = monitor;
    facts.monitors.clear();
    for (int i = 0; i < 12; ++i) {
        MonitorProbe next = first;
        next.description = L"Display " + std::to_wstring(12 - i);
        next.primary = i == 11;
        facts.monitors.push_back(next);
    }
    EXPECT_EQ(After(L"Total:          "), L"12");
    EXPECT_EQ(After(L"[0] "), L"Display 12");
    EXPECT_EQ(After(L"[9] "), L"Display 3");
    EXPECT_EQ(After(L"[10] "), L"Display 2");
    EXPECT_EQ(After(L"[11] "), L"Display 1  (PRIMARY)");
    EXPECT_FALSE(HasLine(L"[12]"));
}

TEST_F(DisplaysSection, WithoutDisplaysOrAdaptersThereIsTheTotalOnly) {
    facts.monitors.clear();
    facts.adapters.clear();
    EXPECT_EQ(Section(L"DISPLAYS"), L"=== DISPLAYS ===\r\nTotal:          0\r\n\r\n");
}

TEST_F(DisplaysSection, EachAdapterHasALineAfterTheLastDisplay) {
    facts.adapters = {L"Imaginary Graphics", L"", L"Second Graphics"};
    EXPECT_TRUE(Section(L"DISPLAYS")
                    .ends_with(L"    DDC/CI bright: not supported\r\n"
                               L"Adapter:        Imaginary Graphics\r\n"
                               L"Adapter:        \r\n"
                               L"Adapter:        Second Graphics\r\n"
                               L"\r\n"));
}

TEST_F(DisplaysSection, ModesOfAnySizeAreShown) {
    monitor.width = 15360;
    monitor.height = 8640;
    monitor.refresh = 1000;
    monitor.bitsPerPixel = 64;
    EXPECT_EQ(After(L"    Mode:          "), L"15360x8640 @ 1000Hz, 64-bit");
}

TEST_F(DisplaysSection, NamesOfAnyLengthAreComplete) {
    monitor.description = std::wstring(3000, L'N') + L"n";
    monitor.deviceName = std::wstring(3000, L'D') + L"d";
    facts.adapters = {std::wstring(3000, L'A') + L"a"};
    EXPECT_EQ(After(L"[0] "), monitor.description + L"  (PRIMARY)");
    EXPECT_EQ(After(L"    Device:        "), monitor.deviceName);
    EXPECT_EQ(After(L"Adapter:        "), facts.adapters[0]);
}

TEST_F(DisplaysSection, PercentSignsInNamesArePlainText) {
    monitor.description = L"100% %s%n";
    facts.adapters = {L"%d %ls"};
    EXPECT_EQ(After(L"[0] "), L"100% %s%n  (PRIMARY)");
    EXPECT_EQ(After(L"Adapter:        "), L"%d %ls");
}
