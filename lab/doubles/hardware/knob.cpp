#include "knob.h"

#include "state.h"

LONG64 KnobValue(const Row& display) {
    const KnobState knob = ReadKnob(display.Number("slot"));
    return knob.driftTime && Now() >= knob.driftTime ? knob.driftValue : knob.value;
}

void TurnKnob(const Row& display, LONG64 value) {
    const LONG64 slot = display.Number("slot");
    const std::wstring behaviour = display.Text("behaviour");
    const LONG64 at = display.Number("at");
    if (behaviour == L"ignores") {
        return;
    }
    if (behaviour == L"sticks") {
        WriteKnob(slot, {at, 0, 0});
    } else if (behaviour == L"drifts") {
        WriteKnob(slot, {value, Now() + display.Number("after"), at});
    } else {
        WriteKnob(slot, {value, 0, 0});
    }
}
