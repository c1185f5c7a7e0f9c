#include "filter/legacy_gamma.h"

#include <cstdint>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "filter/cursor_tint.h"
#include "filter/filter_colour.h"
#include "filter/screen_ramp.h"
#include "store/event_log.h"
#include "store/restore_record.h"

namespace {

constexpr int kMismatchThreshold = 3;  // consecutive; the first two are tolerated

// The result of LoadRamp for the filter's ramp, with the first mismatches tolerated.
enum class FilterRampStatus { Accepted, SetFailed, ReadBackDiffers };

void FillLinearChannel(std::uint16_t (&channel)[GammaRamp::kEntries], double slope) {
    for (int i = 0; i < GammaRamp::kEntries; ++i) {
        const double level = i / 255.0;
        channel[i] = static_cast<std::uint16_t>(static_cast<std::int32_t>(level * slope * 65535.0));
    }
}

void FillFilterRamp(GammaRamp* ramp) {
    const Rgb colour = CurrentFilterColour();
    FillLinearChannel(ramp->channels[0], colour.red);
    FillLinearChannel(ramp->channels[1], colour.green);
    FillLinearChannel(ramp->channels[2], colour.blue);
}

FilterRampStatus LoadFilterRamp() {
    GammaRamp ramp;
    FillFilterRamp(&ramp);
    switch (LoadRamp(&ramp)) {
        case RampLoadResult::Refused: return FilterRampStatus::SetFailed;
        case RampLoadResult::Matches: g_app.readBackMismatchStreak = 0; return FilterRampStatus::Accepted;
        case RampLoadResult::Differs: g_app.readBackMismatchStreak += 1; break;
    }
    return g_app.readBackMismatchStreak < kMismatchThreshold ? FilterRampStatus::Accepted
                                                             : FilterRampStatus::ReadBackDiffers;
}

void CountAccepted() {
    g_app.rampsAccepted += 1;
    if (!g_app.lastApplyRejected) return;
    g_app.lastApplyRejected = false;
    LogEvent("Legacy ramp accepted again (intensity=%.3f brightness=%.3f)", g_app.intensity,
             g_app.brightness);
    RefreshPopupAndTray();
}

void CountRejected(FilterRampStatus status) {
    g_app.rampsRejected += 1;
    if (g_app.lastApplyRejected) return;
    g_app.lastApplyRejected = true;
    LogEvent("Legacy ramp REJECTED (intensity=%.3f brightness=%.3f)%ls - Windows range limit%ls",
             g_app.intensity, g_app.brightness,
             status == FilterRampStatus::ReadBackDiffers ? L" (read-back mismatch streak)" : L"",
             g_app.gammaRangeExpanded ? L" (registry expanded - restart pending?)" : L"");
    RefreshPopupAndTray();
}

// Written when the filter or the pipeline is switched on, even if the first ramp is the identity: a later one
// may differ, and a drag must not write to the file.
void RecordRampOnce() {
    if (g_app.rampApplied) return;
    g_app.rampApplied = true;
    RecordRamp();
}

}  // namespace

void ApplyLegacyRamp() {
    if (!g_app.filterOn) {
        RestoreIdentityRamp();
        return;
    }
    RecordRampOnce();
    const FilterRampStatus status = LoadFilterRamp();
    if (status == FilterRampStatus::Accepted) {
        CountAccepted();
    } else {
        CountRejected(status);
    }
    // The cursors follow the filter's settings even if the ramp was rejected.
    TintSystemCursors();
}

void RestoreIdentityRamp() {
    RestoreSystemCursors();
    if (!LoadIdentityRamp() || !g_app.rampApplied) return;
    g_app.rampApplied = false;
    DeleteRampRecord();
}

void ResetRampOfLastRun() {
    if (!IsRampRecorded()) return;
    g_app.rampApplied = true;
    // Whether it was loaded into each display is not recorded.
    g_app.rampsPerDisplay = true;
    RestoreIdentityRamp();
}
