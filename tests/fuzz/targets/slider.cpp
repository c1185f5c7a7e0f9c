// The sliders' values as text: what is refused, what is set, and what is shown then.
#include <algorithm>
#include <cmath>
#include <memory>

#include "app/state/app_state.h"
#include "filter/model/warmth.h"
#include "target.h"
#include "ui/slider_text.h"

namespace {

std::wstring Shown(Slider slider) {
    wchar_t text[kSliderTextCapacity];
    std::fill(std::begin(text), std::end(text), L'?');
    FormatSliderText(slider, text);
    return text;
}

// The number in a text of digits and commas, up to a limit; -1 if there is anything else in it.
long NumberIn(const std::wstring& text) {
    long number = 0;
    for (const wchar_t unit : text) {
        if (unit == L',') continue;
        if (unit < L'0' || unit > L'9') return -1;
        number = std::min(number * 10 + (unit - L'0'), 10000000L);
    }
    return number;
}

std::wstring WithoutCommas(std::wstring text) {
    std::erase(text, L',');
    return text;
}

void CheckAccepted(Slider slider, const std::wstring& text, double value) {
    const wchar_t unit = text.back();
    const long number = NumberIn(text.substr(0, text.size() - 1));
    CHECK(number >= 0 && (unit == L'%' || (unit == L'K' && slider == Slider::Warmth)));
    CHECK(std::isfinite(value));
    if (unit == L'K') {
        g_app.intensity = std::clamp(value, 0.0, 1.0);
        if (number <= 6500) CHECK(WithoutCommas(Shown(Slider::Warmth)) == std::to_wstring(number) + L"K");
    } else if (slider == Slider::Brightness && number <= 100) {
        CHECK(value >= 0.0 && value <= 1.0);
        g_app.brightness = value;
        CHECK(Shown(Slider::Brightness) == std::to_wstring(number) + L"%");
    }
}

}  // namespace

void FuzzSliderText(Input input) {
    const Slider slider = static_cast<Slider>(input.Byte() % 3);
    g_app.intensity = input.Number() / 4294967295.0;
    g_app.brightness = input.Number() / 4294967295.0;
    const std::wstring text = input.Text();
    // Without a terminating zero: the length counts, as in a BSTR.
    const std::unique_ptr<wchar_t[]> exact(new wchar_t[text.size()]);
    std::copy(text.begin(), text.end(), exact.get());

    CHECK(Shown(Slider::None).empty());
    CHECK(NumberIn(Shown(Slider::Warmth).substr(0, Shown(Slider::Warmth).size() - 1)) <= 6500);
    CHECK(NumberIn(Shown(Slider::Brightness).substr(0, Shown(Slider::Brightness).size() - 1)) <= 100);
    CHECK(RecognisePreset(g_app.intensity) != FilterPreset::Night || g_app.intensity > 0.98);
    double value = -7.0;
    if (ParseSliderText(slider, exact.get(), text.size(), &value)) {
        CheckAccepted(slider, text, value);
    } else {
        CHECK(value == -7.0);
    }
    // What is shown can be set.
    if (slider != Slider::None) {
        const std::wstring shown = Shown(slider);
        CHECK(ParseSliderText(slider, shown.c_str(), shown.size(), &value));
    }
}
