// The display's gamma ramp, as the tests want it to be. Each call leaves a line in the record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

constexpr std::size_t kRed = 0, kGreen = 1, kBlue = 2;

struct Ramp {
    std::uint16_t channels[3][256];
};

// What the display does with one entry of a ramp: it is read back this much higher than it was written.
struct Deviation {
    std::size_t channel;
    std::size_t entry;
    int by;
};

struct FakeScreen {
    bool givesContext = true;
    bool acceptsRamps = true;
    bool canBeRead = true;
    std::vector<Deviation> deviations;
    bool handedZeroesToRead = true;  // every buffer for a read-back was zero throughout
    std::vector<Ramp> seen;          // every ramp, refused ones too
    int contextsHeld = 0;            // taken and not given back
};

extern FakeScreen g_screen;
