#include "filter/screen_ramp.h"

#include "app/state/app_state.h"
#include "win32/guards.h"

namespace {

constexpr int kSampleStep = 16;
constexpr int kSampleTolerance = 2048;  // inclusive
constexpr DWORD kMaxDevices = 256;      // sanity limit

bool SamplesMatch(const GammaRamp& written, const GammaRamp& readBack) {
    for (int c = 0; c < 3; ++c) {
        for (int i = 0; i < GammaRamp::kEntries; i += kSampleStep) {
            const int difference = readBack.channels[c][i] - written.channels[c][i];
            if (difference < -kSampleTolerance || difference > kSampleTolerance) return false;
        }
    }
    return true;
}

// A display whose ramp cannot be read is treated as a match.
bool ReadsBackAsWritten(HDC dc, const GammaRamp& written) {
    GammaRamp readBack = {};
    if (GetDeviceGammaRamp(dc, &readBack) == FALSE) return true;
    return SamplesMatch(written, readBack);
}

RampLoadResult LoadInto(HDC dc, GammaRamp* ramp) {
    if (SetDeviceGammaRamp(dc, ramp) == FALSE) return RampLoadResult::Refused;
    return ReadsBackAsWritten(dc, *ramp) ? RampLoadResult::Matches : RampLoadResult::Differs;
}

RampLoadResult LoadIntoWholeScreen(GammaRamp* ramp) {
    const ScreenDc screen;
    return screen.dc != nullptr ? LoadInto(screen.dc, ramp) : RampLoadResult::Matches;
}

void FillIdentityRamp(GammaRamp* ramp) {
    for (auto& channel : ramp->channels) {
        for (int i = 0; i < GammaRamp::kEntries; ++i)
            channel[i] = static_cast<std::uint16_t>(i * 257);
    }
}

// Finds the first active display at or after *index and sets *index to the one after it. Skips the pseudo
// displays of mirroring drivers, which show nothing.
bool NextActiveDisplay(DWORD* index, DISPLAY_DEVICEW* display) {
    while (*index < kMaxDevices) {
        *display = {};
        display->cb = sizeof(*display);
        if (EnumDisplayDevicesW(nullptr, *index, display, 0) == FALSE) return false;
        *index += 1;
        if ((display->StateFlags & DISPLAY_DEVICE_ATTACHED_TO_DESKTOP) != 0 &&
            (display->StateFlags & DISPLAY_DEVICE_MIRRORING_DRIVER) == 0) {
            return true;
        }
    }
    return false;
}

bool HasSeveralActiveDisplays() {
    DWORD index = 0;
    DISPLAY_DEVICEW display;
    int found = 0;
    while (found < 2 && NextActiveDisplay(&index, &display))
        ++found;
    return found == 2;
}

// Whether the display accepts gamma ramps at all. Loads the current ramp again, which has no visible effect.
// If that is refused, as a ramp outside Windows' range may be, loads the identity ramp.
bool TryAnyRamp(HDC dc) {
    GammaRamp probe = {};
    if (GetDeviceGammaRamp(dc, &probe) != FALSE && SetDeviceGammaRamp(dc, &probe) != FALSE) return true;
    FillIdentityRamp(&probe);
    return SetDeviceGammaRamp(dc, &probe) != FALSE;
}

// Probes a display that has refused a ramp. True if it accepts none at all; it is then skipped without a
// probe until the displays change, since probes are too slow for every step of a drag.
bool SkipIfWithoutRamps(DWORD index, HDC dc) {
    const std::uint64_t bit = index < 64 ? std::uint64_t{1} << index : 0;
    if ((g_app.displaysWithoutRamps & bit) != 0) return true;
    if (TryAnyRamp(dc)) return false;
    g_app.displaysWithoutRamps |= bit;
    return true;
}

RampLoadResult LoadIntoEachDisplay(GammaRamp* ramp) {
    bool anyLoaded = false;
    bool anyRefused = false;
    bool allMatch = true;
    DISPLAY_DEVICEW display;
    for (DWORD next = 0; NextActiveDisplay(&next, &display);) {
        const DisplayDc context(display.DeviceName);
        if (context.dc == nullptr) continue;
        const RampLoadResult result = LoadInto(context.dc, ramp);
        if (result == RampLoadResult::Refused) {
            anyRefused = !SkipIfWithoutRamps(next - 1, context.dc) || anyRefused;
        } else {
            anyLoaded = true;
            allMatch = allMatch && result == RampLoadResult::Matches;
        }
    }
    if (anyLoaded) g_app.rampsPerDisplay = true;
    if (anyRefused || !anyLoaded) return RampLoadResult::Refused;
    return allMatch ? RampLoadResult::Matches : RampLoadResult::Differs;
}

// Tries again if the program is terminating, since nothing loads the ramp later.
bool LoadIdentityInto(HDC dc, GammaRamp* identity) {
    return SetDeviceGammaRamp(dc, identity) != FALSE ||
           (g_app.ending && SetDeviceGammaRamp(dc, identity) != FALSE);
}

// False if Windows refuses it or provides no context; *refused is true in the first case.
bool LoadIdentityIntoWholeScreen(GammaRamp* identity, bool* refused) {
    const ScreenDc screen;
    if (screen.dc == nullptr) return false;
    const bool accepted = LoadIdentityInto(screen.dc, identity);
    *refused = !accepted;
    return accepted;
}

// False if Windows refuses it or provides no context; *refused is true in the first case.
bool LoadIdentityIntoDisplay(const wchar_t* name, GammaRamp* identity, bool* refused) {
    const DisplayDc context(name);
    if (context.dc == nullptr) return false;
    const bool accepted = LoadIdentityInto(context.dc, identity);
    *refused = !accepted;
    return accepted;
}

// False if no display accepts it.
bool LoadIdentityIntoEachDisplay(GammaRamp* identity) {
    bool anyLoaded = false;
    DISPLAY_DEVICEW display;
    for (DWORD next = 0; NextActiveDisplay(&next, &display);) {
        bool refused = false;
        bool accepted = LoadIdentityIntoDisplay(display.DeviceName, identity, &refused);
        if (!accepted && !refused && g_app.ending)
            accepted = LoadIdentityIntoDisplay(display.DeviceName, identity, &refused);
        anyLoaded = anyLoaded || accepted;
    }
    return anyLoaded;
}

}  // namespace

RampLoadResult LoadRamp(GammaRamp* ramp) {
    const RampLoadResult result = LoadIntoWholeScreen(ramp);
    if (result != RampLoadResult::Refused || !HasSeveralActiveDisplays()) return result;
    return LoadIntoEachDisplay(ramp);
}

bool LoadIdentityRamp() {
    GammaRamp identity;
    FillIdentityRamp(&identity);
    bool refused = false;
    bool accepted = LoadIdentityIntoWholeScreen(&identity, &refused);
    if (!accepted && !refused && g_app.ending) accepted = LoadIdentityIntoWholeScreen(&identity, &refused);
    // The entire screen's context may reach the primary display only.
    if (g_app.rampsPerDisplay || (refused && HasSeveralActiveDisplays())) {
        accepted = LoadIdentityIntoEachDisplay(&identity) || accepted;
    }
    g_app.rampsPerDisplay = false;
    return accepted;
}
