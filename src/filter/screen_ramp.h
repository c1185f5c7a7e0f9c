// Loading a gamma ramp: through the device context of the whole screen or, where Windows refuses that on an
// extended desktop, through each display's own. Nothing is allocated. Window thread only.
#pragma once

#include <cstdint>

// The layout that SetDeviceGammaRamp takes: red, green, blue; entries are 0..65535.
struct GammaRamp {
    static constexpr int kEntries = 256;
    std::uint16_t channels[3][kEntries];
};
static_assert(sizeof(GammaRamp) == 1536);

// Matches also stands for a ramp that cannot be read back, and for a screen without a device context.
enum class RampLoad { Matches, Differs, Refused };

// Loads the ramp and reads it back. The whole screen's context comes first. Only when Windows refuses it
// there and more than one display is active is the ramp loaded into each display; a display that refuses even
// the identity ramp, as USB, virtual and HDR displays do, is left out. The ramp is then refused when another
// display refuses it or none is left, and differs when it reads back differently on any display.
RampLoad LoadRamp(GammaRamp* ramp);

// The same without reading back, for the identity ramp, whose result does not matter.
void LoadIdentityRamp();
