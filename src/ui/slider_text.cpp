#include "ui/slider_text.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "filter/model/displayed_values.h"
#include "filter/model/warmth.h"
#include "win32/format_text.h"

namespace {

// Greater than any value in range. Longer numbers are limited to it before they are clamped.
constexpr int kLargestNumber = 1000000;

constexpr std::size_t kGroup = 3;  // digits between two commas

bool IsDigit(wchar_t character) {
    return character >= L'0' && character <= L'9';
}

// Digits, with a comma before every group of three if `grouped`.
bool IsNumber(std::wstring_view text, bool grouped) {
    if (text.empty() || !IsDigit(text.front()) || !IsDigit(text.back())) return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool commaExpected = grouped && (text.size() - i) % (kGroup + 1) == 0;
        if (commaExpected ? text[i] != L',' : !IsDigit(text[i])) return false;
    }
    return true;
}

int NumberIn(std::wstring_view text) {
    int number = 0;
    for (const wchar_t character : text) {
        if (IsDigit(character)) number = std::min(number * 10 + (character - L'0'), kLargestNumber);
    }
    return number;
}

// The smallest fraction that is shown as this percentage: 0.57 is shown as 56%, since 0.57 x 100 is just
// below 57 in double arithmetic.
double FractionOf(int percent) {
    double fraction = percent / 100.0;
    while (TruncatedPercent(fraction) < percent)
        fraction = std::nextafter(fraction, static_cast<double>(kLargestNumber));
    return fraction;
}

}  // namespace

void FormatSliderText(Slider slider, wchar_t (&text)[kSliderTextCapacity]) {
    switch (slider) {
        case Slider::Warmth: FormatKelvinLabel(g_app.intensity, text, kSliderTextCapacity); return;
        case Slider::Brightness: FormatText(text, "%d%%", TruncatedPercent(g_app.brightness)); return;
        case Slider::None: text[0] = 0; return;
    }
}

bool ParseSliderText(Slider slider, const wchar_t* text, std::size_t length, double* value) {
    if (slider == Slider::None || text == nullptr || length < 2) return false;
    const std::wstring_view number(text, length - 1);
    if (text[length - 1] == L'%' && IsNumber(number, false)) {
        *value = FractionOf(NumberIn(number));
        return true;
    }
    if (slider == Slider::Warmth && text[length - 1] == L'K' &&
        (IsNumber(number, false) || IsNumber(number, true))) {
        *value = PresetIntensity(NumberIn(number));
        return true;
    }
    return false;
}
