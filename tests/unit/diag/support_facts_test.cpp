// Each system query in turn, and the effect of its failure.
#include "diag/support_facts.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "diag/fake_machine.h"
#include "diag/fake_program.h"
#include "support/call_record.h"
#include "support/fake_libraries.h"

namespace {

class Facts : public testing::Test {
protected:
    void SetUp() override {
        ResetMachine();
        g_program = FakeProgram{};
        g_calls.clear();
    }

    void TearDown() override { RemoveLibraries(); }
};

}  // namespace

TEST_F(Facts, TheTimeIsTheLocalTime) {
    const SupportFacts facts = ReadSupportFacts();
    EXPECT_EQ(facts.now.wYear, 2026);
    EXPECT_EQ(facts.now.wMonth, 3);
    EXPECT_EQ(facts.now.wDay, 7);
    EXPECT_EQ(facts.now.wHour, 9);
    EXPECT_EQ(facts.now.wMinute, 5);
    EXPECT_EQ(facts.now.wSecond, 2);
}

TEST_F(Facts, TheTickHas64Bits) {
    EXPECT_EQ(ReadSupportFacts().tick, 123456789012u);
}

TEST_F(Facts, TheProbesResultsAreUsedUnchanged) {
    g_program.os = {L"Windows 11 Pro", L"23H2", L"4037", 10, 1, 22631};
    g_program.cpuName = L"Imaginary CPU 3000";
    g_program.hardwareName = L"LENOVO 20XW";
    const SupportFacts facts = ReadSupportFacts();
    EXPECT_EQ(facts.os.productName, L"Windows 11 Pro");
    EXPECT_EQ(facts.os.displayVersion, L"23H2");
    EXPECT_EQ(facts.os.updateRevision, L"4037");
    EXPECT_EQ(facts.os.major, 10u);
    EXPECT_EQ(facts.os.minor, 1u);
    EXPECT_EQ(facts.os.build, 22631u);
    EXPECT_EQ(facts.cpuName, L"Imaginary CPU 3000");
    EXPECT_EQ(facts.hardwareName, L"LENOVO 20XW");
}

TEST_F(Facts, TheMachineTagIsThatOfTheMachineGuid) {
    g_program.machineGuid = L"\u6F66\u626F\u7261";
    EXPECT_EQ(ReadSupportFacts().machineTag, 0x85944171F73967E8u);
}

TEST_F(Facts, WithoutAMachineGuidTheTagIsZero) {
    EXPECT_EQ(ReadSupportFacts().machineTag, 0u);
}

TEST_F(Facts, TheProcessorsAreTheMachinesOwn) {
    const SupportFacts facts = ReadSupportFacts();
    EXPECT_EQ(facts.architecture, 12);
    EXPECT_EQ(facts.processorCount, 12u);
}

TEST_F(Facts, TheMemoryIsThatOfTheMachine) {
    EXPECT_EQ(ReadSupportFacts().memoryBytes, 17179869184u);
}

TEST_F(Facts, MemoryThatCannotBeReadIsNone) {
    g_machine.memoryKnown = false;
    EXPECT_EQ(ReadSupportFacts().memoryBytes, 0u);
}

TEST_F(Facts, TheLocaleIsTheUsers) {
    EXPECT_EQ(ReadSupportFacts().localeName, L"en-GB");
}

TEST_F(Facts, TheLongestLocaleNameIsComplete) {
    g_machine.localeName = std::wstring(83, L'l') + L"L";
    g_machine.localeAnswer = 85;
    EXPECT_EQ(ReadSupportFacts().localeName, g_machine.localeName);
}

TEST_F(Facts, ALocaleLengthBelowOneIsUnknown) {
    for (const int answer : {0, -1}) {
        g_machine.localeAnswer = answer;
        EXPECT_EQ(ReadSupportFacts().localeName, L"unknown") << answer;
    }
}

TEST_F(Facts, ALocaleLengthOfOneIsAnEmptyName) {
    g_machine.localeName.clear();
    g_machine.localeAnswer = 1;
    EXPECT_EQ(ReadSupportFacts().localeName, L"");
}

TEST_F(Facts, TheTimeZoneIsItsStandardNameInSummerToo) {
    for (const DWORD answer : {0u, 1u, 2u}) {
        g_machine.timeZoneAnswer = answer;
        EXPECT_EQ(ReadSupportFacts().timeZoneName, L"GMT Standard Time") << answer;
    }
}

TEST_F(Facts, ATimeZoneThatCannotBeReadIsUnknown) {
    g_machine.timeZoneAnswer = TIME_ZONE_ID_INVALID;
    EXPECT_EQ(ReadSupportFacts().timeZoneName, L"unknown");
}

TEST_F(Facts, ATimeZoneNameThatFillsItsBufferEndsThere) {
    g_machine.timeZoneName = std::wstring(31, L'T') + L"t";
    EXPECT_EQ(ReadSupportFacts().timeZoneName, g_machine.timeZoneName);
}

TEST_F(Facts, CompositionIsThatOfTheDesktopWindowManager) {
    EXPECT_TRUE(ReadSupportFacts().composition);
    g_machine.composition = FALSE;
    EXPECT_FALSE(ReadSupportFacts().composition);
}

TEST_F(Facts, AFailedCompositionQueryIsNone) {
    g_machine.compositionStatus = E_FAIL;
    EXPECT_FALSE(ReadSupportFacts().composition);
}

TEST_F(Facts, WithoutTheLibraryOrItsCallThereIsNoComposition) {
    RemoveLibraries();
    EXPECT_FALSE(ReadSupportFacts().composition);
    g_machine.compositionCallExists = false;
    InstallCompositionLibrary();
    EXPECT_FALSE(ReadSupportFacts().composition);
}

TEST_F(Facts, TheLibraryIsFreed) {
    ReadSupportFacts();
    EXPECT_EQ(std::count(g_calls.begin(), g_calls.end(), "load dwmapi.dll"), 1);
    EXPECT_EQ(std::count(g_calls.begin(), g_calls.end(), "free dwmapi.dll"), 1);
}

TEST_F(Facts, TheRestartIsTheGammaFixs) {
    EXPECT_FALSE(ReadSupportFacts().restartDoneSinceFix);
    g_program.restartDone = true;
    EXPECT_TRUE(ReadSupportFacts().restartDoneSinceFix);
}

TEST_F(Facts, TheLogsAreUsedUnchanged) {
    g_program.ring = {L"one", L"two"};
    g_program.tail = {L"yesterday", L"", L"today"};
    const SupportFacts facts = ReadSupportFacts();
    EXPECT_EQ(facts.recentLines, (std::vector<std::wstring>{L"one", L"two"}));
    EXPECT_EQ(facts.persistedLines, (std::vector<std::wstring>{L"yesterday", L"", L"today"}));
}

TEST_F(Facts, TheRingIsCopiedBeforeTheMachineIsQueried) {
    ReadSupportFacts();
    ASSERT_FALSE(g_calls.empty());
    EXPECT_EQ(g_calls[0], "read ring");
    EXPECT_EQ(std::count(g_calls.begin(), g_calls.end(), "read ring"), 1);
}

TEST_F(Facts, TheDisplaysBacklightIsNotQueriedAgain) {
    ReadSupportFacts();
    EXPECT_EQ(std::count(g_calls.begin(), g_calls.end(), "ENUMERATE TARGETS"), 0);
}

TEST_F(Facts, WhenEveryQueryFailsTheRestIsStillRead) {
    g_machine.memoryKnown = false;
    g_machine.localeAnswer = 0;
    g_machine.timeZoneAnswer = TIME_ZONE_ID_INVALID;
    g_machine.enumerationWorks = false;
    RemoveLibraries();
    g_program.cpuName = L"unknown";
    g_program.hardwareName = L"unknown";
    g_program.ring = {L"still here"};
    const SupportFacts facts = ReadSupportFacts();
    EXPECT_EQ(facts.now.wYear, 2026);
    EXPECT_EQ(facts.machineTag, 0u);
    EXPECT_EQ(facts.os.productName, L"");
    EXPECT_EQ(facts.memoryBytes, 0u);
    EXPECT_EQ(facts.localeName, L"unknown");
    EXPECT_EQ(facts.timeZoneName, L"unknown");
    EXPECT_FALSE(facts.composition);
    EXPECT_TRUE(facts.monitors.empty());
    EXPECT_TRUE(facts.adapters.empty());
    EXPECT_EQ(facts.autostart.value, L"");
    EXPECT_EQ(facts.recentLines, std::vector<std::wstring>{L"still here"});
}
