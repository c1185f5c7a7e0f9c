#include "filter/legacy_gamma.h"

#include <cstdint>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "filter/cursor_tint.h"
#include "filter/model/warmth.h"
#include "store/event_log.h"
#include "win32/guards.h"

namespace {

constexpr int kEntries = 256;
constexpr int kSampleStep = 16;
constexpr int kSampleTolerance = 2048;  // inclusive
constexpr int kMismatchesToReject = 3;  // in a row: the first two are forgiven

// The layout that SetDeviceGammaRamp takes: red, green, blue.
struct GammaRamp {
    std::uint16_t channels[3][kEntries];
};
static_assert(sizeof(GammaRamp) == 1536);

enum class RampFate { Accepted, SetFailed, ReadBackDiffers };

void FillLinearChannel(std::uint16_t (&channel)[kEntries], double slope) {
    for (int i = 0; i < kEntries; ++i) {
        const double level = i / 255.0;
        channel[i] = static_cast<std::uint16_t>(static_cast<std::int32_t>(level * slope * 65535.0));
    }
}

void FillFilterRamp(GammaRamp* ramp) {
    double red = 1.0, green = 1.0, blue = 1.0;
    IntensityToFilterRgb(g_app.intensity, &red, &green, &blue);
    FillLinearChannel(ramp->channels[0], red * g_app.brightness);
    FillLinearChannel(ramp->channels[1], green * g_app.brightness);
    FillLinearChannel(ramp->channels[2], blue * g_app.brightness);
}

void FillIdentityRamp(GammaRamp* ramp) {
    for (auto& channel : ramp->channels) {
        for (int i = 0; i < kEntries; ++i)
            channel[i] = static_cast<std::uint16_t>(i * 257);
    }
}

bool SamplesMatch(const GammaRamp& written, const GammaRamp& readBack) {
    for (int c = 0; c < 3; ++c) {
        for (int i = 0; i < kEntries; i += kSampleStep) {
            const int difference = readBack.channels[c][i] - written.channels[c][i];
            if (difference < -kSampleTolerance || difference > kSampleTolerance) return false;
        }
    }
    return true;
}

// A display that cannot be asked counts as obeying.
bool ReadsBackAsWritten(HDC screen, const GammaRamp& written) {
    GammaRamp readBack = {};
    if (GetDeviceGammaRamp(screen, &readBack) == FALSE) return true;
    return SamplesMatch(written, readBack);
}

RampFate LoadRamp(GammaRamp* ramp) {
    const ScreenDc screen;
    if (screen.dc == nullptr) {
        g_app.readBackMismatchStreak = 0;
        return RampFate::Accepted;
    }
    if (SetDeviceGammaRamp(screen.dc, ramp) == FALSE) return RampFate::SetFailed;
    if (ReadsBackAsWritten(screen.dc, *ramp)) {
        g_app.readBackMismatchStreak = 0;
        return RampFate::Accepted;
    }
    g_app.readBackMismatchStreak += 1;
    return g_app.readBackMismatchStreak < kMismatchesToReject ? RampFate::Accepted
                                                              : RampFate::ReadBackDiffers;
}

void CountAccepted() {
    g_app.rampsAccepted += 1;
    if (!g_app.lastApplyRejected) return;
    g_app.lastApplyRejected = false;
    LogEvent("Legacy ramp accepted again (intensity=%.3f brightness=%.3f)", g_app.intensity,
             g_app.brightness);
    RefreshPopupAndTray();
}

void CountRejected(RampFate fate) {
    g_app.rampsRejected += 1;
    if (g_app.lastApplyRejected) return;
    g_app.lastApplyRejected = true;
    LogEvent("Legacy ramp REJECTED (intensity=%.3f brightness=%.3f)%ls - Windows range limit%ls",
             g_app.intensity, g_app.brightness,
             fate == RampFate::ReadBackDiffers ? L" (read-back mismatch streak)" : L"",
             g_app.gammaRangeExpanded ? L" (registry expanded - restart pending?)" : L"");
    RefreshPopupAndTray();
}

}  // namespace

void ApplyLegacyRamp() {
    if (!g_app.filterOn) {
        RestoreIdentityRamp();
        return;
    }
    GammaRamp ramp;
    FillFilterRamp(&ramp);
    const RampFate fate = LoadRamp(&ramp);
    if (fate == RampFate::Accepted) {
        CountAccepted();
    } else {
        CountRejected(fate);
    }
    // Also when the ramp was refused: the cursors keep in step with what the filter is set to.
    TintSystemCursors();
}

void RestoreIdentityRamp() {
    RestoreSystemCursors();
    GammaRamp ramp;
    FillIdentityRamp(&ramp);
    const ScreenDc screen;
    if (screen.dc != nullptr) SetDeviceGammaRamp(screen.dc, &ramp);
}
