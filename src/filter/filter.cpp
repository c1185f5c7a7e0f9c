#include "filter/filter.h"

#include <algorithm>
#include <iterator>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "app/state/timers.h"
#include "filter/cursor_tint.h"
#include "filter/legacy_fallback.h"
#include "filter/legacy_gamma.h"
#include "filter/magnification.h"

void ApplyFilter() {
    if (!g_app.filterOn || g_app.ending) {
        ClearFilter();
        return;
    }
    if (g_app.useLegacyGamma) {
        ApplyLegacyRamp();
        return;
    }
    if (!IsMagnificationUsable()) return;

    const MatrixResult result = SetFilterMatrix();
    if (result.accepted) {
        OnMatrixAccepted();
        TintSystemCursors();
    } else {
        // The cursors must not show a tint that the screen does not.
        RestoreSystemCursors();
        OnMatrixRefused(result.error);
    }
}

void ClearFilter() {
    RestoreSystemCursors();
    if (g_app.useLegacyGamma) {
        RestoreIdentityRamp();
    } else if (IsMagnificationUsable() && !SetIdentityMatrix()) {
        RemoveAppliedMatrix();
    }
}

void ApplyPreset(FilterPreset preset) {
    const PresetRow* row = std::find_if(std::begin(kPresets), std::end(kPresets),
                                        [preset](const PresetRow& each) { return each.preset == preset; });
    if (row == std::end(kPresets)) return;
    g_app.intensity = row->intensity;
    g_app.brightness = row->brightness;
    g_app.filterOn = true;
    ApplyFilter();
    RefreshPopupAndTray();
    RestartTimer(TimerId::SaveSettings);
}

void ToggleLegacyMode() {
    if (g_app.filterOn) ClearFilter();
    g_app.useLegacyGamma = !g_app.useLegacyGamma;
    g_app.displaysWithoutRamps = 0;
    if (g_app.useLegacyGamma) {
        RemoveAppliedMatrix();
    } else {
        SuppressFallback();
        if (!g_app.magnificationReady) InitMagnification();
    }
    if (g_app.filterOn) ApplyFilter();
}
