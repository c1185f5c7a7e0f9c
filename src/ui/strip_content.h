// What the status strip between the sliders and the presets shows: the gamma banner, the PWM-safe card or the
// flicker hint.
#pragma once

enum class StripContent { Banner, Card, Hint };

// The content for the state in AppState.
StripContent CurrentStripContent();

// The text of the banner, even if the strip does not show it. Static storage.
const wchar_t* BannerText();

// Whether the hint is drawn in amber: BRIGHTNESS is below 90 percent, whether or not the filter is on.
bool IsHintLit();
