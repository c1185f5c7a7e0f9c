// The fixed texts of the panels, and the rectangles of those that are not part of a clickable region, in
// design units. The panels draw the texts, and assistive technology reads them.
#pragma once

#include "app/state/program_names.h"
#include "ui/canvas.h"
#include "win32/platform.h"

inline constexpr wchar_t kMainTitle[] = L"AMBREL";
constexpr RECT kMainTitleRect = {22, 20, 180, 40};
inline constexpr wchar_t kWarmthCaption[] = L"WARMTH";
inline constexpr wchar_t kBrightnessCaption[] = L"BRIGHTNESS";
inline constexpr wchar_t kHintText[] = L"\u26a0 FOR LOWEST FLICKER, KEEP DISPLAY BRIGHTNESS AT 100%";
constexpr RECT kHintRect = {22, 385, 298, 405};  // also of the banner's line
inline constexpr wchar_t kCardTitle[] = L"PWM-SAFE MODE";
inline constexpr wchar_t kPowerLabel[] = L"KIVO";

inline constexpr wchar_t kSettingsTitle[] = L"SETTINGS";
constexpr RECT kSettingsTitleRect = {22, 0, 240, kHeaderHeight};
inline constexpr wchar_t kCloseLabel[] = L"CLOSE";
inline constexpr wchar_t kSupportLabel[] = L"COPY FEEDBACK FOR SUPPORT";
inline constexpr wchar_t kCopiedLabel[] = L"COPIED";
inline constexpr wchar_t kCopiedHint[] = L"PASTE INTO AN EMAIL TO " AMBREL_SUPPORT_ADDRESS_CAPITALS;

// The caption of the slider at that centre.
constexpr RECT SliderCaptionRect(int centreX) {
    return {centreX - 70, 65, centreX + 70, 87};
}
