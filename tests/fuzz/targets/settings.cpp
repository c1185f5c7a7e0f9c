// settings.ini with any content: values are in range, and saving and loading keeps them.
#include "store/settings.h"

#include <cmath>

#include "app/state/app_state.h"
#include "shim/shim.h"
#include "target.h"

namespace {

void CheckRanges() {
    CHECK(g_app.intensity >= 0.0 && g_app.intensity <= 1.0);
    CHECK(g_app.brightness >= (g_app.allowExtremeDim ? 0.0 : 0.1) && g_app.brightness <= 1.0);
    CHECK(!g_app.filterOn);
}

struct Saved {
    double intensity, brightness;
    bool launch, dim, legacy, automatic, pwmSafe;
    std::uint64_t epoch;

    bool operator==(const Saved&) const = default;
};

Saved Now() {
    return {g_app.intensity,      g_app.brightness,        g_app.launchAtStart, g_app.allowExtremeDim,
            g_app.useLegacyGamma, g_app.legacyModeAutoSet, g_app.pwmSafe,       g_app.gammaFixEpoch};
}

// Saves, forgets and loads.
void SaveAndLoad() {
    SaveSettings();
    g_app = AppState{};
    LoadSettings();
    CheckRanges();
}

}  // namespace

void FuzzSettings(Input input) {
    // Sliders can be anywhere between two thousandths.
    const double intensity = input.Byte() / 255.0;
    const double brightness = 0.1 + 0.9 * input.Byte() / 255.0;
    SetProfile(input.Text());
    g_app = AppState{};
    LoadSettings();
    CheckRanges();
    const Saved loaded = Now();
    SaveAndLoad();
    CHECK(Now() == loaded);

    g_app.intensity = intensity;
    g_app.brightness = brightness;
    SaveAndLoad();
    CHECK(intensity - g_app.intensity >= 0.0 && intensity - g_app.intensity < 0.001);
    CHECK(brightness - g_app.brightness >= 0.0 && brightness - g_app.brightness < 0.001);
    const Saved dragged = Now();
    SaveAndLoad();
    CHECK(Now() == dragged);
}
