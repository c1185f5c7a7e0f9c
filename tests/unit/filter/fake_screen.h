// Configurable fakes of the gamma ramps of the entire screen and of each display. Records each call, except
// those that list the displays.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "support/seam.h"
#include "win32/platform.h"

AMBREL_USES_SEAMS(fake_screen);

constexpr std::size_t kRed = 0, kGreen = 1, kBlue = 2;

struct Ramp {
    std::uint16_t channels[3][256];
};

// The deviation of one entry: it is read back this much higher than it was written.
struct Deviation {
    std::size_t channel;
    std::size_t entry;
    int by;
};

// The ramps that a display's context accepts: all, its current one and the identity, or none.
enum class Accepts { Everything, IdentityOnly, Nothing };

struct FakeDisplay {
    std::wstring name;
    Accepts accepts = Accepts::Everything;
    DWORD state = DISPLAY_DEVICE_ATTACHED_TO_DESKTOP;
    bool givesContext = true;
    int contextsRefused = 0;  // the next ones
    bool canBeRead = true;
    bool takesItsRampAgain = true;  // false: refuses even its current ramp
    std::vector<Deviation> deviations;
    Ramp shown = {};
    int loads = 0;  // ramps accepted
    bool contextHeld = false;
};

// An active display called \\.\DISPLAY1, and so on.
FakeDisplay NamedDisplay(int number);

// A ramp with entry i = 257 i.
Ramp IdentityRamp();
bool operator==(const Ramp& one, const Ramp& other);

struct FakeScreen {
    bool givesContext = true;
    int contextsRefused = 0;  // the first ones
    bool acceptsRamps = true;
    bool canBeRead = true;
    std::vector<Deviation> deviations;
    bool readBuffersWereZeroed = true;  // every buffer for a read-back was zero throughout
    std::vector<Ramp> seen;             // every ramp, refused ones too
    int contextsHeld = 0;               // acquired and not released
    std::vector<FakeDisplay> displays{NamedDisplay(1)};
};

extern FakeScreen g_screen;
