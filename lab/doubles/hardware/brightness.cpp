#include "brightness.h"

#include "state.h"

LONG64 DisplayedBrightness(const Row& display) {
    const BrightnessState state = ReadBrightnessState(display.Number("slot"));
    return state.driftTime && Now() >= state.driftTime ? state.driftValue : state.value;
}

void SetDisplayedBrightness(const Row& display, LONG64 value) {
    const LONG64 slot = display.Number("slot");
    const std::wstring behaviour = display.Text("behaviour");
    const LONG64 at = display.Number("at");
    if (behaviour == L"ignores") {
        return;
    }
    if (behaviour == L"sticks") {
        WriteBrightnessState(slot, {at, 0, 0});
    } else if (behaviour == L"drifts") {
        WriteBrightnessState(slot, {value, Now() + display.Number("after"), at});
    } else {
        WriteBrightnessState(slot, {value, 0, 0});
    }
}
