// The elevated run: one registry value, one box, one exit code.
#include <gtest/gtest.h>

#include "app/state/app_state.h"
#include "app/state/program_names.h"
#include "filter/gamma_range.h"
#include "filter/gamma_range_helper.h"
#include "store/settings.h"
#include "support/call_record.h"
#include "support/recorded_registry.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);

namespace {

int WINAPI FakeMessageBox(HWND owner, const wchar_t* text, const wchar_t* title, UINT type) {
    EXPECT_EQ(owner, nullptr) << "it has no window to own the box";
    EXPECT_EQ(g_registry.openKeys, 0) << "the key is closed while the box waits";
    Record("box ", type, " ", Narrow(title), ": ", Narrow(text));
    return IDOK;
}

const std::string kCreate =
    "create HKLM SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ICM options 0 access 0x102";
const std::string kSet256 = "set GdiIcmGammaRange type 4 00010000";
const std::string kDone =
    "box 64 Ambrel: Done. The limit has been removed.\n\n"
    "Now restart your computer (click Restart, not Shut down).\n"
    "Everything should work after the restart.";
const std::string kRefused =
    "box 16 Ambrel: Windows did not allow the change. Ambrel will keep\n"
    "working with mild settings only.\n\n"
    "Need help? Email " +
    Narrow(AMBREL_SUPPORT_ADDRESS) + ".";

class GammaRangeHelper : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_calls.clear();
        g_registry = RecordedRegistry{};
    }
};

}  // namespace

AMBREL_SEAM(MessageBoxW, FakeMessageBox);

TEST_F(GammaRangeHelper, AnExpandedRangeIsReportedAndExitsWith0) {
    EXPECT_EQ(RunGammaRangeHelper(), 0);
    EXPECT_EQ(g_calls, (CallRecord{kCreate, kSet256, "close", kDone}));
    EXPECT_EQ(g_registry.type, static_cast<DWORD>(REG_DWORD));
    EXPECT_TRUE(IsGammaRangeExpanded());
}

TEST_F(GammaRangeHelper, ARefusedKeyIsReportedAndExitsWith1) {
    g_registry.create = ERROR_ACCESS_DENIED;
    EXPECT_EQ(RunGammaRangeHelper(), 1);
    EXPECT_EQ(g_calls, (CallRecord{kCreate, kRefused}));
}

TEST_F(GammaRangeHelper, ARefusedValueIsReportedAndExitsWith1) {
    g_registry.set = ERROR_WRITE_PROTECT;
    EXPECT_EQ(RunGammaRangeHelper(), 1);
    EXPECT_EQ(g_calls, (CallRecord{kCreate, kSet256, "close", kRefused}));
}

TEST_F(GammaRangeHelper, ARangeThatIsAlreadyExpandedIsWrittenAgain) {
    StoreNumber(1024);
    EXPECT_EQ(RunGammaRangeHelper(), 0);
    EXPECT_EQ(g_calls, (CallRecord{kCreate, kSet256, "close", kDone}));
}

TEST_F(GammaRangeHelper, TheProgramsStateDoesNotChange) {
    RunGammaRangeHelper();
    EXPECT_FALSE(g_app.gammaRangeExpanded);
    EXPECT_FALSE(g_app.gammaFixPending);
    EXPECT_EQ(g_app.gammaFixEpoch, 0U);
    EXPECT_TRUE(g_app.settingsPath.empty());
}
