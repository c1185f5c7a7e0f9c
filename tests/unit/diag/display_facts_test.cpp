// The displays and adapters in the report.
#include <gtest/gtest.h>

#include "diag/fake_machine.h"
#include "diag/fake_program.h"
#include "diag/support_facts.h"
#include "support/call_record.h"
#include "support/fake_libraries.h"

namespace {

using Names = std::vector<std::wstring>;

class DisplayFacts : public testing::Test {
protected:
    void SetUp() override {
        ResetMachine();
        g_program = FakeProgram{};
        g_calls.clear();
    }

    void TearDown() override { RemoveLibraries(); }
};

}  // namespace

TEST_F(DisplayFacts, EachDisplayMonitorIsProbedInWindowsOrder) {
    g_machine.displays = 3;
    const SupportFacts facts = ReadSupportFacts();
    ASSERT_EQ(facts.monitors.size(), 3u);
    EXPECT_EQ(facts.monitors[0].deviceName, L"DISPLAY1");
    EXPECT_EQ(facts.monitors[1].deviceName, L"DISPLAY2");
    EXPECT_EQ(facts.monitors[2].deviceName, L"DISPLAY3");
}

TEST_F(DisplayFacts, WithoutDisplayMonitorsThereAreNone) {
    EXPECT_TRUE(ReadSupportFacts().monitors.empty());
}

TEST_F(DisplayFacts, AnEnumerationThatFailsKeepsTheDisplaysFoundSoFar) {
    g_machine.displays = 1;
    g_machine.enumerationWorks = false;
    EXPECT_EQ(ReadSupportFacts().monitors.size(), 1u);
}

TEST_F(DisplayFacts, AdaptersAreInWindowsOrder) {
    g_machine.adapters = {{L"Zeta Graphics"}, {L"Alpha Graphics"}};
    EXPECT_EQ(ReadSupportFacts().adapters, (Names{L"Zeta Graphics", L"Alpha Graphics"}));
}

TEST_F(DisplayFacts, AnAdapterWithSeveralOutputsIsNamedOnce) {
    g_machine.adapters = {{L"Alpha"}, {L"Beta"}, {L"Alpha"}, {L"Beta"}, {L"alpha"}};
    EXPECT_EQ(ReadSupportFacts().adapters, (Names{L"Alpha", L"Beta", L"alpha"}));
}

TEST_F(DisplayFacts, ADeviceThatIsNotPartOfTheDesktopIsSkipped) {
    g_machine.adapters = {{L"Alpha"}, {L"Mirror", false}, {L"Beta"}};
    EXPECT_EQ(ReadSupportFacts().adapters, (Names{L"Alpha", L"Beta"}));
}

TEST_F(DisplayFacts, ADeviceDetachedFirstAndAttachedLaterIsNamed) {
    g_machine.adapters = {{L"Alpha", false}, {L"Alpha"}};
    EXPECT_EQ(ReadSupportFacts().adapters, Names{L"Alpha"});
}

TEST_F(DisplayFacts, DevicesAreQueriedFromZeroUntilOneFails) {
    g_machine.adapters = {{L"Alpha", false}, {L"Beta"}};
    ReadSupportFacts();
    CallRecord asked;
    for (const std::string& call : g_calls) {
        if (call.starts_with("adapter ")) asked.push_back(call);
    }
    EXPECT_EQ(asked, (CallRecord{"adapter 0", "adapter 1", "adapter 2"}));
}

TEST_F(DisplayFacts, WithoutDevicesThereAreNoAdapters) {
    EXPECT_TRUE(ReadSupportFacts().adapters.empty());
}

TEST_F(DisplayFacts, TheLongestAdapterNameIsCompleteAndDoesNotAffectAShorterOneAfterIt) {
    g_machine.adapters = {{std::wstring(127, L'A')}, {L"B"}};
    EXPECT_EQ(ReadSupportFacts().adapters, (Names{std::wstring(127, L'A'), L"B"}));
}
