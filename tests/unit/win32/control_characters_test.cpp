#include "win32/control_characters.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::wstring Replaced(std::wstring text) {
    ReplaceControlCharacters(text.data(), text.size());
    return text;
}

}  // namespace

TEST(ControlCharacters, EveryControlCharacterIsReplaced) {
    for (unsigned unit = 0; unit < 0x20; ++unit)
        EXPECT_EQ(Replaced({L'a', static_cast<wchar_t>(unit), L'b'}),
                  L"a\xFFFD"
                  L"b")
            << unit;
    for (unsigned unit = 0x7F; unit <= 0x9F; ++unit)
        EXPECT_EQ(Replaced({L'a', static_cast<wchar_t>(unit), L'b'}),
                  L"a\xFFFD"
                  L"b")
            << unit;
}

TEST(ControlCharacters, UnicodesLineAndParagraphSeparatorsAreReplaced) {
    EXPECT_EQ(Replaced(L"\x2028\x2029"), L"\xFFFD\xFFFD");
}

TEST(ControlCharacters, EveryOtherCharacterIsKept) {
    for (unsigned unit = 0x20; unit <= 0xFFFF; ++unit) {
        if ((unit >= 0x7F && unit <= 0x9F) || unit == 0x2028 || unit == 0x2029) continue;
        const std::wstring text(1, static_cast<wchar_t>(unit));
        ASSERT_EQ(Replaced(text), text) << unit;
    }
}

TEST(ControlCharacters, OnlyTheGivenLengthIsTouched) {
    wchar_t text[] = L"a\nb\nc";
    ReplaceControlCharacters(text, 3);
    EXPECT_EQ(std::wstring(text),
              L"a\xFFFD"
              L"b\nc");
}
