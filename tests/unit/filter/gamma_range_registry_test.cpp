// The gamma range limit in the real registry.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "filter/gamma_range.h"
#include "support/key_access.h"
#include "win32/platform.h"

namespace {

constexpr wchar_t kKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ICM";
constexpr wchar_t kValue[] = L"GdiIcmGammaRange";

void Store(DWORD type, const void* data, DWORD size) {
    ASSERT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, kKey, kValue, type, data, size), ERROR_SUCCESS);
}

void StoreNumber(DWORD number) {
    Store(REG_DWORD, &number, sizeof(number));
}

struct Stored {
    LSTATUS status;
    DWORD type;
    std::vector<BYTE> data;
};

Stored Read() {
    Stored stored = {ERROR_SUCCESS, 0, std::vector<BYTE>(64)};
    auto size = static_cast<DWORD>(stored.data.size());
    stored.status = RegGetValueW(HKEY_LOCAL_MACHINE, kKey, kValue, RRF_RT_ANY | RRF_NOEXPAND, &stored.type,
                                 stored.data.data(), &size);
    stored.data.resize(stored.status == ERROR_SUCCESS ? size : 0);
    return stored;
}

void ExpectStored256() {
    const Stored stored = Read();
    ASSERT_EQ(stored.status, ERROR_SUCCESS);
    EXPECT_EQ(stored.type, 4U);
    EXPECT_EQ(stored.data, (std::vector<BYTE>{0, 1, 0, 0}));
}

class GammaRangeRegistry : public testing::Test {
protected:
    void SetUp() override { RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kKey, kValue); }
    void TearDown() override { RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kKey, kValue); }
};

}  // namespace

TEST_F(GammaRangeRegistry, WithoutTheValueTheRangeIsWindowsDefault) {
    EXPECT_EQ(Read().status, ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(IsGammaRangeExpanded());
}

TEST_F(GammaRangeRegistry, WithoutTheKeyTheRangeIsWindowsDefault) {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kKey);
    HKEY icm = nullptr;
    ASSERT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, kKey, 0, KEY_QUERY_VALUE, &icm), ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(IsGammaRangeExpanded());
}

TEST_F(GammaRangeRegistry, NumbersFrom256OnAreExpanded) {
    for (const DWORD number : {DWORD{0}, DWORD{255}}) {
        StoreNumber(number);
        EXPECT_FALSE(IsGammaRangeExpanded()) << number;
    }
    for (const DWORD number : {DWORD{256}, DWORD{1024}, DWORD{0x80000000}, DWORD{0xFFFFFFFF}}) {
        StoreNumber(number);
        EXPECT_TRUE(IsGammaRangeExpanded()) << number;
    }
}

TEST_F(GammaRangeRegistry, ATextIsIgnored) {
    Store(REG_SZ, L"256", 8);
    EXPECT_FALSE(IsGammaRangeExpanded());
    Store(REG_SZ, L"9", 4);
    EXPECT_FALSE(IsGammaRangeExpanded()) << "four bytes, as a number has";
    Store(REG_SZ, L"\x0100\x0100", 4);
    EXPECT_FALSE(IsGammaRangeExpanded()) << "four bytes that would be a number large enough";
}

TEST_F(GammaRangeRegistry, FourBytesOfNoTypeAreIgnored) {
    const BYTE bytes[] = {0, 1, 0, 0};
    Store(REG_BINARY, bytes, sizeof(bytes));
    EXPECT_FALSE(IsGammaRangeExpanded());
    Store(REG_NONE, bytes, sizeof(bytes));
    EXPECT_FALSE(IsGammaRangeExpanded());
}

TEST_F(GammaRangeRegistry, ANumberOfLessThanFourBytesIsIgnored) {
    const BYTE bytes[] = {0, 1, 1};
    for (const DWORD size : {1U, 2U, 3U}) {
        Store(REG_DWORD, bytes, size);
        EXPECT_FALSE(IsGammaRangeExpanded()) << size;
    }
}

TEST_F(GammaRangeRegistry, ANumberOfEightBytesIsIgnored) {
    const unsigned long long number = 256;
    Store(REG_QWORD, &number, sizeof(number));
    EXPECT_FALSE(IsGammaRangeExpanded());
    Store(REG_DWORD, &number, sizeof(number));
    EXPECT_FALSE(IsGammaRangeExpanded());
}

TEST_F(GammaRangeRegistry, TheExpandedRangeIsTheNumber256AndReadsAsExpanded) {
    EXPECT_TRUE(ExpandGammaRange());
    ExpectStored256();
    EXPECT_TRUE(IsGammaRangeExpanded());
}

TEST_F(GammaRangeRegistry, ExpandingTheRangeCreatesAMissingKey) {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kKey);
    EXPECT_TRUE(ExpandGammaRange());
    ExpectStored256();
    EXPECT_TRUE(IsGammaRangeExpanded());
}

TEST_F(GammaRangeRegistry, ExpandingTheRangeReplacesAnyPreviousValue) {
    Store(REG_SZ, L"many", 10);
    EXPECT_TRUE(ExpandGammaRange());
    ExpectStored256();
    StoreNumber(255);
    EXPECT_TRUE(ExpandGammaRange());
    ExpectStored256();
    const unsigned long long number = 0xFFFFFFFFFF;
    Store(REG_QWORD, &number, sizeof(number));
    EXPECT_TRUE(ExpandGammaRange());
    ExpectStored256();
}

TEST_F(GammaRangeRegistry, ReadingCreatesNoKeyAndNoValue) {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kKey);
    IsGammaRangeExpanded();
    HKEY icm = nullptr;
    EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, kKey, 0, KEY_QUERY_VALUE, &icm), ERROR_FILE_NOT_FOUND);
}

TEST_F(GammaRangeRegistry, AReadOnlyKeyRefusesTheExpansionAndKeepsItsValue) {
    StoreNumber(255);
    const RestrictedKey readOnly(HKEY_LOCAL_MACHINE, kKey, kReadOnlyAccess);
    ASSERT_EQ(readOnly.status, ERROR_SUCCESS);
    EXPECT_FALSE(ExpandGammaRange());
    const Stored stored = Read();
    EXPECT_EQ(stored.type, 4U);
    EXPECT_EQ(stored.data, (std::vector<BYTE>{255, 0, 0, 0}));
    EXPECT_FALSE(IsGammaRangeExpanded());
}

TEST_F(GammaRangeRegistry, AKeyThatMayNotBeReadIsIgnored) {
    StoreNumber(256);
    EXPECT_TRUE(IsGammaRangeExpanded());
    const RestrictedKey unreadable(HKEY_LOCAL_MACHINE, kKey, L"D:P(A;;WD;;;WD)");
    ASSERT_EQ(unreadable.status, ERROR_SUCCESS);
    EXPECT_FALSE(IsGammaRangeExpanded());
}
