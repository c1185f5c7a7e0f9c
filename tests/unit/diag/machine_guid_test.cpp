// The machine's identifier in all states of the registry, and the tag that is computed from it.
#include <gtest/gtest.h>

#include "diag/fake_registry.h"
#include "diag/support_facts.h"
#include "diag/system_probe.h"

namespace {

const std::wstring kCryptography = L"HKLM\\SOFTWARE\\Microsoft\\Cryptography";
const std::wstring kGuid = L"6c1a0f3e-7b52-4d18-9e0c-2f4b8a91d735";

class MachineGuid : public testing::Test {
protected:
    void SetUp() override { g_keys = FakeRegistry{}; }
    void TearDown() override { EXPECT_EQ(g_keys.closed, g_keys.opened.size()) << "each key is closed once"; }

    static void Store(const RegistryValue& value) { g_keys.keys[kCryptography] = {{L"MachineGuid", value}}; }

    static void ExpectUnreadable() {
        EXPECT_EQ(ReadMachineGuid(), L"");
        EXPECT_EQ(MachineTag(ReadMachineGuid()), 0u);
    }
};

}  // namespace

TEST_F(MachineGuid, IsReadUnchanged) {
    Store(RegistryText(kGuid));
    EXPECT_EQ(ReadMachineGuid(), kGuid);
    EXPECT_EQ(MachineTag(ReadMachineGuid()), 0x0A1C1F67B4D6D462u);
}

TEST_F(MachineGuid, IsReadFromThe64BitView) {
    Store(RegistryText(kGuid));
    ReadMachineGuid();
    ASSERT_EQ(g_keys.opened.size(), 1u);
    EXPECT_EQ(g_keys.opened[0].path, kCryptography);
    EXPECT_EQ(g_keys.opened[0].access & 0x0300u, 0x0100u);
    EXPECT_EQ(g_keys.opened[0].access & 0x0006u, 0u) << "for reading only";
}

TEST_F(MachineGuid, IsEmptyWithoutTheKey) {
    ExpectUnreadable();
}

TEST_F(MachineGuid, IsEmptyWithoutTheValue) {
    g_keys.keys[kCryptography] = {};
    ExpectUnreadable();
}

TEST_F(MachineGuid, IsEmptyIfTheValueHasAnotherType) {
    Store(RegistryNumber(0x6C1A0F3E));
    ExpectUnreadable();
    Store(RegistryText(kGuid, REG_BINARY));
    ExpectUnreadable();
    Store(RegistryText(kGuid + std::wstring(1, L'\0'), REG_MULTI_SZ));
    ExpectUnreadable();
}

TEST_F(MachineGuid, IsEmptyIfTheValueIsEmpty) {
    Store(RegistryText(L""));
    ExpectUnreadable();
    Store(UnterminatedText(L""));
    ExpectUnreadable();
}

TEST_F(MachineGuid, IsReadCompletelyFromAnUnterminatedValue) {
    Store(UnterminatedText(kGuid));
    EXPECT_EQ(ReadMachineGuid(), kGuid);
    EXPECT_EQ(MachineTag(ReadMachineGuid()), 0x0A1C1F67B4D6D462u);
}

TEST_F(MachineGuid, IsTheSameWithBytesAfterItsTerminator) {
    Store(RegistryText(kGuid + std::wstring(1, L'\0') + L"junk"));
    EXPECT_EQ(MachineTag(ReadMachineGuid()), 0x0A1C1F67B4D6D462u);
}

TEST_F(MachineGuid, IsTheSameWithHalfACharacterAtItsEnd) {
    RegistryValue odd = UnterminatedText(kGuid);
    odd.data.push_back(0x41);
    Store(odd);
    EXPECT_EQ(MachineTag(ReadMachineGuid()), 0x0A1C1F67B4D6D462u);
}

TEST_F(MachineGuid, IsReadCompletelyFromAValueOf4Kilobytes) {
    Store(RegistryText(std::wstring(2047, L'A')));
    EXPECT_EQ(MachineTag(ReadMachineGuid()), 0x4837AAD139B33BDCu);
    Store(UnterminatedText(std::wstring(2048, L'A')));
    EXPECT_EQ(MachineTag(ReadMachineGuid()), 0x5F9BE312A2CAC325u);
}

TEST_F(MachineGuid, IsEmptyIfWindowsRefusesTheQuery) {
    Store(RegistryText(kGuid));
    g_keys.queryAnswer = ERROR_ACCESS_DENIED;
    ExpectUnreadable();
}

TEST_F(MachineGuid, IsEmptyIfTheValueIsLongerThan4Kilobytes) {
    Store(RegistryText(std::wstring(2048, L'A')));
    ExpectUnreadable();
    Store(UnterminatedText(std::wstring(2049, L'A')));
    ExpectUnreadable();
}
