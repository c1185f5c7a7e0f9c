#include "win32/control_characters.h"

#include <algorithm>

namespace {

constexpr wchar_t kReplacement = L'\xFFFD';

bool IsControlCharacter(wchar_t unit) {
    return unit < L' ' || (unit >= L'\x7F' && unit <= L'\x9F') || unit == L'\x2028' || unit == L'\x2029';
}

}  // namespace

void ReplaceControlCharacters(wchar_t* text, std::size_t length) {
    std::replace_if(text, text + length, IsControlCharacter, kReplacement);
}
