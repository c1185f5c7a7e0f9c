#include "win32/format_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>

namespace {

constexpr wchar_t kUntouched = L'\x2588';

// A buffer of eight whose neighbours show an overrun.
struct Guarded {
    wchar_t before[4];
    wchar_t text[8];
    wchar_t after[4];

    Guarded() { std::fill(std::begin(before), std::end(after), kUntouched); }
    ~Guarded() {
        for (const wchar_t neighbour : before)
            EXPECT_EQ(neighbour, kUntouched);
        for (const wchar_t neighbour : after)
            EXPECT_EQ(neighbour, kUntouched);
    }
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;
};

}  // namespace

TEST(FormatText, ATextOneShorterThanTheBufferIsComplete) {
    Guarded buffer;
    FormatText(buffer.text, "%ls", L"1234567");
    EXPECT_STREQ(buffer.text, L"1234567");
}

TEST(FormatText, ATextAsLongAsTheBufferLosesItsLastCharacter) {
    Guarded buffer;
    FormatText(buffer.text, "%ls", L"12345678");
    EXPECT_STREQ(buffer.text, L"1234567");
}

TEST(FormatText, ATextOneLongerThanTheBufferIsTruncatedAtTheLastPosition) {
    Guarded buffer;
    FormatText(buffer.text, "%ls", L"123456789");
    EXPECT_STREQ(buffer.text, L"1234567");
}

TEST(FormatText, AMuchLongerTextIsTruncatedAndTerminated) {
    Guarded buffer;
    const std::wstring endless(5000, L'x');
    FormatText(buffer.text, "ab%ls%d", endless.c_str(), 7);
    EXPECT_STREQ(buffer.text, L"abxxxxx");
}

TEST(FormatText, LiteralTextIsTruncated) {
    Guarded buffer;
    FormatText(buffer.text, "12345678");
    EXPECT_STREQ(buffer.text, L"1234567");
}

TEST(FormatText, ANumberIsTruncatedInTheMiddle) {
    Guarded buffer;
    FormatText(buffer.text, "abcd%d", 123456);
    EXPECT_STREQ(buffer.text, L"abcd123");
}

TEST(FormatText, AFractionIsTruncatedInTheMiddle) {
    Guarded buffer;
    FormatText(buffer.text, "abc%.3f", 12.345);
    EXPECT_STREQ(buffer.text, L"abc12.3");
}

TEST(FormatText, NothingIsWrittenAfterTheTruncation) {
    Guarded buffer;
    FormatText(buffer.text, "%ls%ls%ls", L"1234567", L"8", L"9");
    EXPECT_STREQ(buffer.text, L"1234567");
}

TEST(FormatText, AnEmptyTextIsOnlyTheTerminator) {
    Guarded buffer;
    FormatText(buffer.text, "%ls", L"");
    EXPECT_STREQ(buffer.text, L"");
}

TEST(FormatText, ACapacityOfOneContainsOnlyTheTerminator) {
    Guarded buffer;
    FormatWide(buffer.text, 1, L"%ls", L"1234567");
    EXPECT_EQ(buffer.text[0], L'\0');
    EXPECT_EQ(buffer.text[1], kUntouched);
}

TEST(FormatText, ACapacityOfZeroWritesNothing) {
    Guarded buffer;
    FormatWide(buffer.text, 0, L"%ls", L"1234567");
    EXPECT_EQ(buffer.text[0], kUntouched);
}

TEST(FormatText, EveryCapacityTruncatesAtItsLastPosition) {
    const std::wstring whole = L"[21:04:07.031] 4,000K 0.385";
    for (std::size_t capacity = 1; capacity <= whole.size() + 2; ++capacity) {
        wchar_t text[64];
        std::fill(std::begin(text), std::end(text), kUntouched);
        FormatWide(text, capacity, L"[%02u:%02u:%02u.%03u] %d,%03dK %.3f", 21u, 4u, 7u, 31u, 4, 0, 0.385);
        EXPECT_EQ(std::wstring(text), whole.substr(0, capacity - 1)) << "capacity " << capacity;
        EXPECT_EQ(text[capacity], kUntouched) << "capacity " << capacity;
    }
}

TEST(FormatText, SizesArePrintedInFull) {
    wchar_t text[64];
    FormatText(text, "%zu %zu", std::size_t{0}, std::numeric_limits<std::size_t>::max());
    EXPECT_STREQ(text, L"0 18446744073709551615");
}

TEST(FormatText, Unsigned64BitNumbersArePrintedInFull) {
    wchar_t text[64];
    FormatText(text, "%llu %llu", 0ull, 18446744073709551615ull);
    EXPECT_STREQ(text, L"0 18446744073709551615");
}

TEST(FormatText, ArgumentsAfterA64BitOneAreNotShifted) {
    wchar_t text[64];
    FormatText(text, "%zu|%d|%llu|%ls", std::size_t{4294967296}, -1, 4294967297ull, L"end");
    EXPECT_STREQ(text, L"4294967296|-1|4294967297|end");
}

TEST(FormatText, AMachineTagIsSixteenLowercaseHexadecimalDigits) {
    wchar_t text[64];
    FormatText(text, "%016llx %016llx", 0xABCDEFull, 0xFEDCBA9876543210ull);
    EXPECT_STREQ(text, L"0000000000abcdef fedcba9876543210");
}

TEST(FormatText, FractionsHaveThreeRoundedDecimals) {
    wchar_t text[64];
    FormatText(text, "%.3f %.3f %.3f %.3f", 0.3846153846153846, 1.0, 0.0, 0.0006);
    EXPECT_STREQ(text, L"0.385 1.000 0.000 0.001");
    FormatText(text, "(%.3f, %.3f, %.3f)", 0.93903256604026109, 0.51532323577005867, -0.0626);
    EXPECT_STREQ(text, L"(0.939, 0.515, -0.063)");
}

TEST(FormatText, WideStringsArePrintedUnchanged) {
    wchar_t text[64];
    FormatText(text, "<%ls>", L"C:\\Jos\u00e9 \u65e5\u672c\\\U0001F319");
    EXPECT_STREQ(text, L"<C:\\Jos\u00e9 \u65e5\u672c\\\U0001F319>");
}

TEST(FormatText, APercentInsideAnArgumentIsPlainText) {
    wchar_t text[64];
    FormatText(text, "%ls %d%%", L"100% %s %n", 70);
    EXPECT_STREQ(text, L"100% %s %n 70%");
}

TEST(FormatText, NumbersArePaddedAndSigned) {
    wchar_t text[64];
    FormatText(text, "%d %03d %02u %03u %lu", -2147483647 - 1, 5, 7u, 31u, 4294967295ul);
    EXPECT_STREQ(text, L"-2147483648 005 07 031 4294967295");
}

TEST(FormatText, TheCapacityIsCountedInCharactersNotInBytes) {
    wchar_t text[5];
    FormatText(text, "%ls", L"abcdefghijk");
    EXPECT_STREQ(text, L"abcd");
}
