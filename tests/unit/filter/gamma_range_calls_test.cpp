// The registry calls for the gamma range limit, and how their results are interpreted.
#include <gtest/gtest.h>

#include "app/state/app_state.h"
#include "filter/gamma_range.h"
#include "support/call_record.h"
#include "support/recorded_registry.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);

namespace {

const std::string kOpen =
    "open HKLM SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ICM options 0 access 0x101";
const std::string kQuery = "query GdiIcmGammaRange into 4 bytes";
const std::string kCreate =
    "create HKLM SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ICM options 0 access 0x102";
const std::string kSet256 = "set GdiIcmGammaRange type 4 00010000";

class GammaRangeCalls : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_calls.clear();
        g_registry = RecordedRegistry{};
    }
    void TearDown() override { EXPECT_EQ(g_registry.openKeys, 0) << "a key is left open"; }

    static bool ReadsAsExpanded(DWORD number) {
        StoreNumber(number);
        return IsGammaRangeExpanded();
    }

    static bool ReadsAsExpanded(DWORD type, const std::vector<BYTE>& data) {
        StoreValue(type, data);
        return IsGammaRangeExpanded();
    }
};

}  // namespace

TEST_F(GammaRangeCalls, TheKeyOf64BitWindowsIsOpenedQueriedAndClosed) {
    StoreNumber(256);
    EXPECT_TRUE(IsGammaRangeExpanded());
    EXPECT_EQ(g_calls, (CallRecord{kOpen, kQuery, "close"}));
}

TEST_F(GammaRangeCalls, From256OnTheRangeIsExpanded) {
    EXPECT_FALSE(ReadsAsExpanded(0));
    EXPECT_FALSE(ReadsAsExpanded(1));
    EXPECT_FALSE(ReadsAsExpanded(255));
    EXPECT_TRUE(ReadsAsExpanded(256));
    EXPECT_TRUE(ReadsAsExpanded(257));
    EXPECT_TRUE(ReadsAsExpanded(1024));
}

TEST_F(GammaRangeCalls, TheNumberIsUnsigned) {
    EXPECT_TRUE(ReadsAsExpanded(0x7FFFFFFF));
    EXPECT_TRUE(ReadsAsExpanded(0x80000000));
    EXPECT_TRUE(ReadsAsExpanded(0xFFFFFFFF));
}

// The same four bytes as a number of 65536 and more, under another name.
TEST_F(GammaRangeCalls, AValueOfAnyOtherTypeIsIgnored) {
    for (const DWORD type : {REG_NONE, REG_SZ, REG_EXPAND_SZ, REG_BINARY, REG_DWORD_BIG_ENDIAN, REG_LINK,
                             REG_MULTI_SZ, REG_QWORD}) {
        EXPECT_FALSE(ReadsAsExpanded(type, {0x32, 0x00, 0x01, 0x00})) << "type " << type;
        EXPECT_EQ(g_registry.openKeys, 0);
    }
}

TEST_F(GammaRangeCalls, ATextOf256IsIgnored) {
    StoreText(REG_SZ, L"256");
    EXPECT_FALSE(IsGammaRangeExpanded());
}

TEST_F(GammaRangeCalls, ANumberOfEightBytesIsIgnored) {
    EXPECT_FALSE(ReadsAsExpanded(REG_QWORD, {0, 1, 0, 0, 0, 0, 0, 0}));
    EXPECT_FALSE(ReadsAsExpanded(REG_DWORD, {0, 1, 0, 0, 0, 0, 0, 0}));
}

TEST_F(GammaRangeCalls, AMissingValueIsNotExpandedAndTheKeyIsClosed) {
    EXPECT_FALSE(IsGammaRangeExpanded());
    EXPECT_EQ(g_calls, (CallRecord{kOpen, kQuery, "close"}));
}

TEST_F(GammaRangeCalls, AKeyThatCannotBeOpenedIsNeitherQueriedNorClosed) {
    StoreNumber(256);
    for (const LSTATUS error : {ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED}) {
        g_calls.clear();
        g_registry.openToQuery = error;
        EXPECT_FALSE(IsGammaRangeExpanded());
        EXPECT_EQ(g_calls, (CallRecord{kOpen}));
    }
}

TEST_F(GammaRangeCalls, AQueryThatFailsIsIgnoredAndTheKeyIsClosed) {
    StoreNumber(256);
    g_registry.query = ERROR_ACCESS_DENIED;
    EXPECT_FALSE(IsGammaRangeExpanded());
    EXPECT_EQ(g_calls, (CallRecord{kOpen, kQuery, "close"}));
}

TEST_F(GammaRangeCalls, ReadingChangesNothing) {
    StoreNumber(256);
    IsGammaRangeExpanded();
    EXPECT_FALSE(g_app.gammaRangeExpanded) << "whoever asked decides what becomes of the answer";
    EXPECT_EQ(g_app.gammaFixEpoch, 0U);
}

TEST_F(GammaRangeCalls, ExpandingTheRangeCreatesTheKeyWrites256AndCloses) {
    EXPECT_TRUE(ExpandGammaRange());
    EXPECT_EQ(g_calls, (CallRecord{kCreate, kSet256, "close"}));
}

TEST_F(GammaRangeCalls, WithoutTheKeyNothingIsWritten) {
    for (const LSTATUS error : {ERROR_ACCESS_DENIED, ERROR_FILE_NOT_FOUND}) {
        g_calls.clear();
        g_registry.create = error;
        EXPECT_FALSE(ExpandGammaRange());
        EXPECT_EQ(g_calls, (CallRecord{kCreate}));
    }
}

TEST_F(GammaRangeCalls, AValueThatIsRefusedIsAFailureAndTheKeyIsClosed) {
    g_registry.set = ERROR_ACCESS_DENIED;
    EXPECT_FALSE(ExpandGammaRange());
    EXPECT_EQ(g_calls, (CallRecord{kCreate, kSet256, "close"}));
}
