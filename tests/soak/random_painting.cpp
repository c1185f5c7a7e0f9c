// Random states of the panels at every scaling: what is painted is what the mouse hits.
#include <cstdio>
#include <iterator>

#include "app/state/app_state.h"
#include "soak/attack.h"
#include "soak/painted_popup.h"

namespace {

void SetAnyState(RandomSource& random) {
    g_app.panel = random.OneIn(3) ? Panel::Settings : Panel::Main;
    g_app.filterOn = random.OneIn(2);
    g_app.allowExtremeDim = random.OneIn(2);
    g_app.intensity = random.Below(1001) / 1000.0;
    g_app.brightness = random.Between(g_app.allowExtremeDim ? 0 : 100, 1000) / 1000.0;
    g_app.useLegacyGamma = random.OneIn(2);
    g_app.lastApplyRejected = random.OneIn(2);
    g_app.gammaRangeExpanded = random.OneIn(2);
    g_app.gammaFixEpoch = random.OneIn(2) ? 1 : 0;
    g_app.pwmTargetsPresent = random.OneIn(2);
    g_app.pwmSafe = random.OneIn(3);
    g_app.pwmLockConfirmed = g_app.pwmSafe && random.OneIn(2);
    g_app.pwmTargetCount = g_app.pwmTargetsPresent ? random.Between(1, 4) : 0;
    g_app.pwmTargetsAt100 = random.Between(0, g_app.pwmTargetCount);
    g_app.launchAtStart = random.OneIn(2);
    g_app.copiedUntil = random.OneIn(4) ? UINT64_MAX : 0;
}

void RecordState() {
    char text[160];
    std::snprintf(text, sizeof(text),
                  "panel %d, filter %d, %.3f and %.3f, legacy %d, rejected %d, targets %d, mode %d",
                  static_cast<int>(g_app.panel), g_app.filterOn, g_app.intensity, g_app.brightness,
                  g_app.useLegacyGamma, g_app.lastApplyRejected, g_app.pwmTargetsPresent, g_app.pwmSafe);
    RecordStep(text);
}

void PaintFrames() {
    const AppState before = g_app;
    RandomSource& random = g_round->random;
    for (int i = 0; i < g_round->steps && !Failed(); ++i) {
        if (i % 10 == 0) MoveToMonitorOf(kScalings[random.Below(std::size(kScalings))]);
        SetAnyState(random);
        RecordState();
        RequirePaintedAsHit();
    }
    HICON icon = g_app.headerIcon;
    const std::uint32_t dpi = g_app.dpi;
    g_app = before;
    // The icon of the last scaling is the one that exists.
    g_app.headerIcon = icon;
    g_app.dpi = dpi;
}

}  // namespace

void AttackPainting() {
    RunSessionWith(PaintFrames);
}
