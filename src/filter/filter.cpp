#include "filter/filter.h"

#include <algorithm>
#include <iterator>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "app/state/messages.h"
#include "app/state/timers.h"
#include "filter/cursor_tint.h"
#include "filter/legacy_gamma.h"
#include "filter/magnification.h"
#include "store/event_log.h"
#include "store/settings.h"

namespace {

// Graphics stacks that do not support the matrix return error 87, "the parameter is incorrect". A single one
// is tolerated.
constexpr DWORD kUnsupportedError = ERROR_INVALID_PARAMETER;
constexpr int kFallbackThreshold = 2;

void FallBackToLegacyMode() {
    LogEvent("Auto-fallback to Legacy Mode after %d consecutive error 87s", g_app.consecutiveError87);
    const bool noticeShownBefore = g_app.legacyModeAutoSet;
    g_app.useLegacyGamma = true;
    g_app.legacyModeAutoSet = true;
    g_app.consecutiveError87 = 0;
    SaveSettings();
    // A matrix in force would tint the screen a second time.
    RemoveMatrixInForce();
    ApplyLegacyRamp();
    RefreshPopupAndTray();
    if (!noticeShownBefore && g_app.mainWindow != nullptr)
        PostMessageW(g_app.mainWindow, kMessageLegacyNotice, 0, 0);
}

void CountUnsupported() {
    g_app.consecutiveError87 += 1;
    if (g_app.consecutiveError87 < kFallbackThreshold) {
        LogEvent("MagSetFullscreenColorEffect error 87 (%d/%d before fallback)", g_app.consecutiveError87,
                 kFallbackThreshold);
        return;
    }
    FallBackToLegacyMode();
}

// Posted instead of shown here: the box opens after ApplyFilter has returned.
void ReportFailureOnce(DWORD error) {
    g_app.consecutiveError87 = 0;
    if (g_app.failureNoticeShown) return;
    g_app.failureNoticeShown = true;
    if (g_app.mainWindow != nullptr) PostMessageW(g_app.mainWindow, kMessageMagnificationError, error, 0);
}

void OnMatrixRefused(DWORD error) {
    if (error == kUnsupportedError && !g_app.fallbackSuppressed) {
        CountUnsupported();
    } else {
        ReportFailureOnce(error);
    }
}

// Resets the automatic fallback, because the user has chosen the modern pipeline.
void ReturnToMagnification() {
    g_app.legacyModeAutoSet = false;
    g_app.fallbackSuppressed = true;
    g_app.consecutiveError87 = 0;
    if (!g_app.magnificationReady) InitMagnification();
}

}  // namespace

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
        g_app.consecutiveError87 = 0;
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
    } else {
        SetIdentityMatrix();
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
        RemoveMatrixInForce();
    } else {
        ReturnToMagnification();
    }
    if (g_app.filterOn) ApplyFilter();
}
