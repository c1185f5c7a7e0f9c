// The report and its subject contain the program's state and facts that were just read.
#include "diag/support_bundle.h"

#include <gtest/gtest.h>

#include "diag/report_fixture.h"
#include "diag/support_facts.h"
#include "support/seam.h"

namespace {

int g_readings = 0;

class SupportBundle : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_readings = 0;
    }

    void TearDown() override { g_app = AppState{}; }
};

}  // namespace

AMBREL_REPLACE(SupportFacts, ReadSupportFacts, ()) {
    SupportFacts facts = PlainFacts();
    facts.processorCount = static_cast<DWORD>(++g_readings);
    return facts;
}

TEST_F(SupportBundle, ContainsTheProgramsStateAndTheFacts) {
    g_app.intensity = 1.0;
    g_app.brightness = 0.25;
    SupportFacts facts = PlainFacts();
    facts.processorCount = 1;
    EXPECT_EQ(BuildSupportBundle(), SupportBundleText(g_app, facts));
    EXPECT_NE(BuildSupportBundle().find(L"\r\nBrightness:     0.250  (25%)\r\n"), std::wstring::npos);
}

TEST_F(SupportBundle, EachReportReadsTheFactsOnce) {
    EXPECT_NE(BuildSupportBundle().find(L"(x64, 1 cores)"), std::wstring::npos);
    EXPECT_NE(BuildSupportBundle().find(L"(x64, 2 cores)"), std::wstring::npos);
    EXPECT_EQ(g_readings, 2);
}

TEST_F(SupportBundle, HasTheSameSubjectAsTheSeparateFunction) {
    const std::wstring subject = BuildSupportSubject();
    EXPECT_TRUE(subject.ends_with(L" - Feedback (0123456789abcdef, Windows 11 Pro b22631)"));
    EXPECT_NE(BuildSupportBundle().find(L"\r\nSUBJECT: " + subject + L"\r\n"), std::wstring::npos);
}
