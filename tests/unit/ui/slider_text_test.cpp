#include "ui/slider_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

// The value, or a negative number for a refusal.
double Parse(Slider slider, const std::wstring& text) {
    double value = -1.0;
    const bool accepted = ParseSliderText(slider, text.data(), text.size(), &value);
    return accepted ? value : -2.0;
}

constexpr double kRefused = -2.0;

std::wstring Shown(Slider slider) {
    wchar_t text[kSliderTextCapacity];
    FormatSliderText(slider, text);
    return text;
}

class SliderText : public testing::Test {
protected:
    void SetUp() override { g_app = AppState{}; }
};

}  // namespace

TEST_F(SliderText, WarmthIsShownInKelvinAndBrightnessInPercent) {
    g_app.intensity = 3800.0 / 6500.0;
    g_app.brightness = 0.85;
    EXPECT_EQ(Shown(Slider::Warmth), L"2,700K");
    EXPECT_EQ(Shown(Slider::Brightness), L"85%");
    EXPECT_EQ(Shown(Slider::None), L"");
}

TEST_F(SliderText, KelvinAreReadWithAndWithoutAComma) {
    // The double of the preset EVENING.
    EXPECT_EQ(Parse(Slider::Warmth, L"2700K"), 0.5846153846153845);
    EXPECT_EQ(Parse(Slider::Warmth, L"2,700K"), 0.5846153846153845);
    EXPECT_EQ(Parse(Slider::Warmth, L"0K"), 1.0);
    EXPECT_EQ(Parse(Slider::Warmth, L"6,500K"), 0.0);
    EXPECT_EQ(Parse(Slider::Warmth, L"999K"), 1.0 - 999.0 / 6500.0);
}

TEST_F(SliderText, PercentIsOfTheSlidersScale) {
    EXPECT_EQ(Parse(Slider::Warmth, L"25%"), 0.25);
    EXPECT_EQ(Parse(Slider::Brightness, L"25%"), 0.25);
    EXPECT_EQ(Parse(Slider::Brightness, L"100%"), 1.0);
    EXPECT_EQ(Parse(Slider::Brightness, L"0%"), 0.0);
}

TEST_F(SliderText, EveryPercentageIsShownAsItWasSet) {
    for (int percent = 0; percent <= 100; ++percent) {
        const std::wstring text = std::to_wstring(percent) + L"%";
        g_app.brightness = Parse(Slider::Brightness, text);
        EXPECT_EQ(Shown(Slider::Brightness), text);
        EXPECT_NEAR(g_app.brightness, percent / 100.0, 1e-12);
    }
}

TEST_F(SliderText, EveryKelvinIsShownAsItWasSet) {
    for (int kelvin = 0; kelvin <= 6500; ++kelvin) {
        g_app.intensity = Parse(Slider::Warmth, std::to_wstring(kelvin) + L"K");
        std::wstring shown = Shown(Slider::Warmth);
        EXPECT_EQ(Parse(Slider::Warmth, shown), g_app.intensity);
        std::erase(shown, L',');
        EXPECT_EQ(shown, std::to_wstring(kelvin) + L"K");
    }
}

TEST_F(SliderText, NumbersOutOfRangeAreReadForTheClamp) {
    EXPECT_LT(Parse(Slider::Warmth, L"9000K"), 0.0);
    EXPECT_NE(Parse(Slider::Warmth, L"9000K"), kRefused);
    EXPECT_GT(Parse(Slider::Brightness, L"101%"), 1.0);
    EXPECT_GT(Parse(Slider::Brightness, L"99999999999999999999%"), 1.0);
    EXPECT_LT(Parse(Slider::Warmth, L"99,999,999,999K"), -3.0);
    EXPECT_GT(Parse(Slider::Warmth, std::wstring(100000, L'9') + L"%"), 1.0);
}

TEST_F(SliderText, AnythingElseIsRefused) {
    const wchar_t* const refused[] = {
        L"",       L"K",      L"%",       L"2700",   L"2700k", L" 2700K",  L"2700K ",        L"2700 K",
        L"-2700K", L"+2700K", L"27,00K",  L"2,70K",  L",700K", L"2,,700K", L"2,700,K",       L"2,7000K",
        L"2700,K", L"2.700K", L"2700.0K", L"0x10K",  L"1e3K",  L"85%%",    L"85 %",          L"-5%",
        L"8,5%",   L"1,000%", L"85.5%",   L"2700KK", L"K2700", L"eighty%", L"\u0661\u0662%", L"\uFF12\uFF17K",
    };
    for (const wchar_t* text : refused) {
        EXPECT_EQ(Parse(Slider::Warmth, text), kRefused) << testing::PrintToString(std::wstring(text));
        EXPECT_EQ(Parse(Slider::Brightness, text), kRefused) << testing::PrintToString(std::wstring(text));
    }
    EXPECT_EQ(Parse(Slider::Brightness, L"2700K"), kRefused);
    EXPECT_EQ(Parse(Slider::None, L"50%"), kRefused);
    EXPECT_EQ(Parse(Slider::Warmth, std::wstring(L"27\0"
                                                 L"00K",
                                                 6)),
              kRefused);
}

TEST_F(SliderText, ARefusalLeavesTheValue) {
    double value = 0.25;
    EXPECT_FALSE(ParseSliderText(Slider::Warmth, L"85", 2, &value));
    EXPECT_FALSE(ParseSliderText(Slider::Warmth, nullptr, 0, &value));
    EXPECT_EQ(value, 0.25);
}
