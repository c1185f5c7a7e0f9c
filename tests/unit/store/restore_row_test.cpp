#include "store/restore_row.h"

#include <gtest/gtest.h>

namespace {

void ExpectRead(const wchar_t* text, const RestoreRow& expected) {
    RestoreRow row;
    ASSERT_TRUE(ParseRestoreRow(text, &row));
    EXPECT_EQ(row.percent, expected.percent);
    EXPECT_EQ(row.awaySince, expected.awaySince);
    EXPECT_EQ(row.name, expected.name);
    EXPECT_EQ(row.path, expected.path);
}

}  // namespace

TEST(RestoreRowText, HasTheFieldsInOrder) {
    const RestoreRow row = {40, 1'800'000'000, L"name", L"path"};
    EXPECT_EQ(RestoreRowText(row), L"40 1800000000 name path");
    ExpectRead(L"40 1800000000 name path", row);
}

TEST(RestoreRowText, EndsWithTheNameOfAPanel) {
    const RestoreRow row = {100, 0, L"panel", L""};
    EXPECT_EQ(RestoreRowText(row), L"100 0 panel");
    ExpectRead(L"100 0 panel", row);
}

TEST(RestoreRowText, EscapesAllButPrintableAscii) {
    const RestoreRow row = {0, 0, L" %\x7F\xD83D\xDDB5~!", L"\t\xFFFF"};
    EXPECT_EQ(RestoreRowText(row), L"0 0 %0020%0025%007F%D83D%DDB5~! %0009%FFFF");
    ExpectRead(L"0 0 %0020%0025%007F%D83D%DDB5~! %0009%FFFF", row);
}

// The private-profile functions trim the blanks around a value, so these texts come only from here.
TEST(RestoreRowText, BlanksAreOnlyBetweenFields) {
    RestoreRow row;
    EXPECT_FALSE(ParseRestoreRow(L" 40 0 name", &row));
    EXPECT_FALSE(ParseRestoreRow(L"40  0 name", &row));
    EXPECT_FALSE(ParseRestoreRow(L"40 0  name", &row));
    EXPECT_FALSE(ParseRestoreRow(L"40 0 name  path", &row));
    EXPECT_FALSE(ParseRestoreRow(L"40 0 name path path", &row));
}

TEST(RestoreRowText, ATextOutOfRangeIsRejected) {
    RestoreRow row;
    EXPECT_FALSE(ParseRestoreRow(L"", &row));
    EXPECT_FALSE(ParseRestoreRow(L"101 0 name", &row));
    EXPECT_FALSE(ParseRestoreRow(L"40 10000000000 name", &row));
    EXPECT_FALSE(ParseRestoreRow(std::wstring(L"40 0 na\0me", 10), &row));
    EXPECT_FALSE(ParseRestoreRow(L"40 0 name%0000", &row));
}
