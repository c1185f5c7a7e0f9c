// PWM-safe mode: the displays' own backlight held at 100%, so that it never flickers.
#pragma once

// The status text of the PWM-safe card, from AppState alone.
const wchar_t* PwmCardLabel();
