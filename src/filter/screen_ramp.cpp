#include "filter/screen_ramp.h"

#include "win32/guards.h"

namespace {

constexpr int kSampleStep = 16;
constexpr int kSampleTolerance = 2048;  // inclusive

bool SamplesMatch(const GammaRamp& written, const GammaRamp& readBack) {
    for (int c = 0; c < 3; ++c) {
        for (int i = 0; i < GammaRamp::kEntries; i += kSampleStep) {
            const int difference = readBack.channels[c][i] - written.channels[c][i];
            if (difference < -kSampleTolerance || difference > kSampleTolerance) return false;
        }
    }
    return true;
}

// A display that cannot be read counts as showing what was written.
bool ReadsBackAsWritten(HDC dc, const GammaRamp& written) {
    GammaRamp readBack = {};
    if (GetDeviceGammaRamp(dc, &readBack) == FALSE) return true;
    return SamplesMatch(written, readBack);
}

RampLoad LoadInto(HDC dc, GammaRamp* ramp) {
    if (SetDeviceGammaRamp(dc, ramp) == FALSE) return RampLoad::Refused;
    return ReadsBackAsWritten(dc, *ramp) ? RampLoad::Matches : RampLoad::Differs;
}

RampLoad LoadIntoWholeScreen(GammaRamp* ramp) {
    const ScreenDc screen;
    return screen.dc != nullptr ? LoadInto(screen.dc, ramp) : RampLoad::Matches;
}

void FillIdentityRamp(GammaRamp* ramp) {
    for (auto& channel : ramp->channels) {
        for (int i = 0; i < GammaRamp::kEntries; ++i)
            channel[i] = static_cast<std::uint16_t>(i * 257);
    }
}

// The first active display at or after *index, which then is the index after it. A mirroring driver's pseudo
// display shows nothing.
bool NextActiveDisplay(DWORD* index, DISPLAY_DEVICEW* display) {
    for (;;) {
        *display = {};
        display->cb = sizeof(*display);
        if (EnumDisplayDevicesW(nullptr, *index, display, 0) == FALSE) return false;
        *index += 1;
        if ((display->StateFlags & DISPLAY_DEVICE_ATTACHED_TO_DESKTOP) != 0 &&
            (display->StateFlags & DISPLAY_DEVICE_MIRRORING_DRIVER) == 0) {
            return true;
        }
    }
}

bool HasSeveralActiveDisplays() {
    DWORD index = 0;
    DISPLAY_DEVICEW display;
    int found = 0;
    while (found < 2 && NextActiveDisplay(&index, &display))
        ++found;
    return found == 2;
}

// True for a display that takes gamma ramps at all. Loading the ramp that is in force again shows nothing;
// only when that is refused, as one outside Windows' range may be, is the identity tried.
bool AcceptsAnyRamp(HDC dc) {
    GammaRamp probe = {};
    if (GetDeviceGammaRamp(dc, &probe) != FALSE && SetDeviceGammaRamp(dc, &probe) != FALSE) return true;
    FillIdentityRamp(&probe);
    return SetDeviceGammaRamp(dc, &probe) != FALSE;
}

RampLoad LoadIntoEachDisplay(GammaRamp* ramp) {
    bool anyLoaded = false;
    bool anyRefused = false;
    bool allMatch = true;
    DISPLAY_DEVICEW display;
    for (DWORD index = 0; NextActiveDisplay(&index, &display);) {
        const DisplayDc own(display.DeviceName);
        if (own.dc == nullptr) continue;
        const RampLoad load = LoadInto(own.dc, ramp);
        if (load == RampLoad::Refused) {
            anyRefused = anyRefused || AcceptsAnyRamp(own.dc);
        } else {
            anyLoaded = true;
            allMatch = allMatch && load == RampLoad::Matches;
        }
    }
    if (anyRefused || !anyLoaded) return RampLoad::Refused;
    return allMatch ? RampLoad::Matches : RampLoad::Differs;
}

}  // namespace

RampLoad LoadRamp(GammaRamp* ramp) {
    const RampLoad load = LoadIntoWholeScreen(ramp);
    if (load != RampLoad::Refused || !HasSeveralActiveDisplays()) return load;
    return LoadIntoEachDisplay(ramp);
}

void LoadIdentityRamp() {
    GammaRamp identity;
    FillIdentityRamp(&identity);
    {
        const ScreenDc screen;
        if (screen.dc == nullptr || SetDeviceGammaRamp(screen.dc, &identity) != FALSE) return;
    }
    if (!HasSeveralActiveDisplays()) return;
    DISPLAY_DEVICEW display;
    for (DWORD index = 0; NextActiveDisplay(&index, &display);) {
        const DisplayDc own(display.DeviceName);
        if (own.dc != nullptr) SetDeviceGammaRamp(own.dc, &identity);
    }
}
