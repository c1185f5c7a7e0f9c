// Loads gamma ramps: through the device context of the entire screen or, if Windows refuses that on an
// extended desktop, through the context of each display. Allocates nothing. Window thread only, except
// the crash guard on the failing thread.
#pragma once

#include <cstdint>

// The layout of SetDeviceGammaRamp: red, green, blue; entries are 0..65535.
struct GammaRamp {
    static constexpr int kEntries = 256;
    std::uint16_t channels[3][kEntries];
};
static_assert(sizeof(GammaRamp) == 1536);

// The result of loading a ramp and reading it back. Matches includes a ramp that cannot be read back and a
// screen without a device context.
enum class RampLoadResult { Matches, Differs, Refused };

// Loads the ramp and reads it back. Tries the entire screen's context first. Only if Windows refuses the ramp
// there and more than one display is active, loads it into each display. Displays that refuse even the
// identity ramp, as some USB, virtual and HDR displays do, are skipped until a display change or a switch of
// the pipeline. Refused: another display refuses the ramp, or every display is skipped. Differs: any display
// reads back a different ramp.
RampLoadResult LoadRamp(GammaRamp* ramp);

// Loads the identity ramp into the entire screen and, if Windows refuses that on an extended desktop or the
// filter's ramp was loaded into each display, into each display. Does not read it back. While the
// program terminates, a refused call is retried once. False if every display refuses the ramp.
bool LoadIdentityRamp();
