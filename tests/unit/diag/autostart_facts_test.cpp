// The autostart entry in the report.
#include <gtest/gtest.h>

#include "diag/fake_machine.h"
#include "diag/fake_program.h"
#include "diag/support_facts.h"
#include "support/fake_libraries.h"

namespace {

class AutostartEntry : public testing::Test {
protected:
    void SetUp() override {
        ResetMachine();
        g_program = FakeProgram{};
        g_program.ownPath = L"C:\\Here\\Ambrel.exe";
    }

    void TearDown() override { RemoveLibraries(); }
};

}  // namespace

TEST_F(AutostartEntry, AMissingOneIsEmpty) {
    EXPECT_EQ(ReadSupportFacts().autostart.value, L"");
}

TEST_F(AutostartEntry, ThisProgramsExists) {
    g_program.autostartValue = L"C:\\Here\\Ambrel.exe";
    g_machine.existingFile = L"C:\\Here\\Ambrel.exe";
    const AutostartFacts autostart = ReadSupportFacts().autostart;
    EXPECT_EQ(autostart.value, L"C:\\Here\\Ambrel.exe");
    EXPECT_TRUE(autostart.targetExists);
    EXPECT_TRUE(autostart.isThisProgram);
}

TEST_F(AutostartEntry, AnotherCopysExists) {
    g_program.autostartValue = L"D:\\Copy\\Ambrel.exe";
    g_machine.existingFile = L"D:\\Copy\\Ambrel.exe";
    const AutostartFacts autostart = ReadSupportFacts().autostart;
    EXPECT_TRUE(autostart.targetExists);
    EXPECT_FALSE(autostart.isThisProgram);
}

TEST_F(AutostartEntry, AStaleOneNamesAMissingFile) {
    g_program.autostartValue = L"D:\\Gone\\Ambrel.exe";
    g_machine.existingFile = L"C:\\Here\\Ambrel.exe";
    const AutostartFacts autostart = ReadSupportFacts().autostart;
    EXPECT_EQ(autostart.value, L"D:\\Gone\\Ambrel.exe");
    EXPECT_FALSE(autostart.targetExists);
    EXPECT_FALSE(autostart.isThisProgram);
}

TEST_F(AutostartEntry, ThisProgramsMayBeMissingFromTheDisk) {
    g_program.autostartValue = L"C:\\Here\\Ambrel.exe";
    const AutostartFacts autostart = ReadSupportFacts().autostart;
    EXPECT_FALSE(autostart.targetExists);
    EXPECT_TRUE(autostart.isThisProgram);
}

TEST_F(AutostartEntry, OneOf1000CharactersIsReadCompletely) {
    g_program.autostartValue = L"C:\\" + std::wstring(996, L'p') + L"!";
    g_machine.existingFile = g_program.autostartValue;
    const AutostartFacts autostart = ReadSupportFacts().autostart;
    EXPECT_EQ(autostart.value, g_program.autostartValue);
    EXPECT_TRUE(autostart.targetExists);
}
