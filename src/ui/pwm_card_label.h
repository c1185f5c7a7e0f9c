// The status text of the PWM-safe card.
#pragma once

// Returns the text for the mode, the counts and the verification in AppState. Static storage.
const wchar_t* PwmCardLabel();
