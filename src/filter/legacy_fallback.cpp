#include "filter/legacy_fallback.h"

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "app/state/messages.h"
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
    // A matrix that is still applied would tint the screen a second time.
    RemoveAppliedMatrix();
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
    if (g_app.mainWindow == nullptr) return;
    if (PostMessageW(g_app.mainWindow, kMessageMagnificationError, error, 0) == FALSE)
        g_app.failureNoticeShown = false;
}

}  // namespace

void OnMatrixAccepted() {
    g_app.consecutiveError87 = 0;
}

void OnMatrixRefused(DWORD error) {
    if (error == kUnsupportedError && !g_app.fallbackSuppressed) {
        CountUnsupported();
    } else {
        ReportFailureOnce(error);
    }
}

void SuppressFallback() {
    g_app.legacyModeAutoSet = false;
    g_app.fallbackSuppressed = true;
    g_app.consecutiveError87 = 0;
}
