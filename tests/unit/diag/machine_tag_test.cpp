// The machine's tag compared with published values of 64-bit FNV-1a and with values computed independently.
#include <gtest/gtest.h>

#include "diag/support_facts.h"

TEST(MachineTag, MatchesThePublishedTestVectors) {
    // In UTF-16LE these characters are the bytes "fo", "foob" and "foobar".
    EXPECT_EQ(MachineTag(L"\u6F66"), 0x08985907B541D342u);
    EXPECT_EQ(MachineTag(L"\u6F66\u626F"), 0xDD120E790C2512AFu);
    EXPECT_EQ(MachineTag(L"\u6F66\u626F\u7261"), 0x85944171F73967E8u);
}

TEST(MachineTag, IsTheHashOfAMachineGuid) {
    EXPECT_EQ(MachineTag(L"6c1a0f3e-7b52-4d18-9e0c-2f4b8a91d735"), 0x0A1C1F67B4D6D462u);
    EXPECT_EQ(MachineTag(L"00000000-0000-0000-0000-000000000000"), 0x9EA3A8C599297EB5u);
}

TEST(MachineTag, CoversBothBytesOfACharacter) {
    EXPECT_EQ(MachineTag(L"a"), 0x089BE207B544F1E4u);
    EXPECT_EQ(MachineTag(L"\u00e9"), 0x0A6A1207B6CD9FACu);
    EXPECT_EQ(MachineTag(L"\U0001F319"), 0x278B871C5740A0CDu);
}

TEST(MachineTag, CoversATextOf4Kilobytes) {
    EXPECT_EQ(MachineTag(std::wstring(2047, L'A')), 0x4837AAD139B33BDCu);
    EXPECT_EQ(MachineTag(std::wstring(2048, L'A')), 0x5F9BE312A2CAC325u);
}

TEST(MachineTag, IsAllZerosWithoutAMachineGuid) {
    EXPECT_EQ(MachineTag(L""), 0u);
}

TEST(MachineTag, IsTheSameAtEveryCall) {
    EXPECT_EQ(MachineTag(L"6c1a0f3e-7b52-4d18-9e0c-2f4b8a91d735"),
              MachineTag(L"6c1a0f3e-7b52-4d18-9e0c-2f4b8a91d735"));
}

TEST(MachineTag, DiffersWithTheCaseOfALetter) {
    EXPECT_NE(MachineTag(L"6c1a"), MachineTag(L"6C1A"));
}
