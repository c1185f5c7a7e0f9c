// The record of the program's live state, without logic. Only the window thread accesses it,
// except the crash guard on the failing thread.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "app/state/accessible_state.h"
#include "win32/platform.h"

struct IAccessible;
struct IUnknown;
struct tagMAGCOLOREFFECT;

constexpr std::uint32_t kDesignDpi = 96;

enum class Panel { Main, Settings };
constexpr int kSystemCursorCount = 16;

// Warmth and brightness of the last tint of the cursors; -1 when there is none.
struct CursorTint {
    double intensity = -1.0;
    double brightness = -1.0;
};

// The filter's colour with the brightness multiplied in, and the values that it was computed for.
struct FilterColour {
    double intensity = -1.0;  // -1: not computed yet
    double brightness = -1.0;
    double red = 1.0;
    double green = 1.0;
    double blue = 1.0;
};

enum class Slider { None, Warmth, Brightness };

constexpr int kFontCount = 8;

// A request to the PWM-safe controller that is deferred while another operation on the displays runs.
enum class PwmRequest { None, Reassert, SwitchOn, SwitchOff };

using SavedBrightness = std::map<std::wstring, std::uint32_t>;  // percent before the lock, by target name

struct PwmReleaseJob;

struct AppState {
    // Shell.
    HINSTANCE instance = nullptr;
    HWND mainWindow = nullptr;
    HANDLE singleInstanceMutex = nullptr;
    std::uint32_t taskbarCreatedMessage = 0;  // 0: not registered
    std::uint32_t dpi = kDesignDpi;           // of the popup's monitor; 0 is treated as 96
    std::uint64_t startTick = 0;              // GetTickCount64 at start-up, ms
    HPOWERNOTIFY resumeRegistration = nullptr;
    HPOWERNOTIFY displayRegistration = nullptr;
    std::uint32_t displayState = 1;  // the console's: 0 off, 1 on, 2 dimmed
    NOTIFYICONDATAW trayIconData = {};
    bool trayIconAdded = false;
    std::int32_t trayRetryCount = 0;
    bool popupShown = false;
    bool popupArmed = false;  // active at least once since it was shown; only then does it hide itself
    bool menuTracking = false;
    std::uint32_t menuRequestCount = 0;  // number of times the tray menu was requested
    std::uint64_t popupHiddenAt = 0;     // tick, ms
    bool ending = false;           // the window or the session ends: filter and lock are no longer applied
    bool windowDestroyed = false;  // WM_DESTROY has been handled
    Panel panel = Panel::Main;
    Slider dragSlider = Slider::None;
    std::int32_t dragStartY = 0;  // design units
    double dragStartValue = 0.0;
    std::uint64_t copiedUntil = 0;  // tick, ms; 0: no copy to indicate
    std::wstring settingsPath;      // empty: no settings and no log file for the whole run

    // Resources of the popup, alive for the whole run.
    HBRUSH backgroundBrush = nullptr;
    HFONT fonts[kFontCount] = {};
    HICON headerIcon = nullptr;  // icon 103 at 22 units
    bool scaledResourcesBuilt = false;
    HBITMAP logoBitmap = nullptr;
    std::uint32_t logoWidth = 0;  // pixels
    std::uint32_t logoHeight = 0;

    // Colour filter.
    bool filterOn = false;     // never saved
    double intensity = 0.385;  // 0.0 (6500 K) .. 1.0 (0 K)
    double brightness = 1.0;   // 0.1 (0.0 with allowExtremeDim) .. 1.0
    bool allowExtremeDim = false;
    FilterColour filterColour;
    bool useLegacyGamma = false;
    bool legacyModeAutoSet = false;
    bool fallbackSuppressed = false;  // the user switched Legacy Mode off during this run
    std::int32_t consecutiveError87 = 0;
    HMODULE magnificationModule = nullptr;
    BOOL(WINAPI* magInitialize)() = nullptr;
    BOOL(WINAPI* magUninitialize)() = nullptr;
    BOOL(WINAPI* magSetFullscreenColorEffect)(tagMAGCOLOREFFECT* effect) = nullptr;
    bool magnificationReady = false;
    bool matrixApplied = false;  // the last accepted matrix is not the identity
    bool failureNoticeShown = false;
    std::uint32_t openNoticeBoxes = 0;  // one bit for each NoticeBox
    std::int32_t rampsAccepted = 0;
    std::int32_t rampsRejected = 0;
    std::int32_t readBackMismatchStreak = 0;
    bool lastApplyRejected = false;
    bool rampApplied = false;      // a ramp of the filter may be loaded; the restore record contains it
    bool rampsPerDisplay = false;  // the filter's ramp was loaded into each display and not reset since
    std::uint64_t displaysWithoutRamps = 0;  // bit i: display i of the enumeration refuses even the identity
    bool gammaRangeExpanded = false;
    // From the launch of the elevated run to its confirmation or the deadline. Written for debugging only:
    // the poll timer does not read it.
    bool gammaFixPending = false;
    std::uint64_t gammaFixDeadline = 0;  // tick, ms
    std::uint64_t gammaFixEpoch = 0;     // seconds since 1970; 0: never confirmed
    bool bannerDemotedLogged = false;
    bool cursorsTinted = false;
    CursorTint lastCursorTint;
    HCURSOR baseCursors[kSystemCursorCount] = {};  // private copies; null where loading failed
    bool baseCursorsLoaded = false;

    // Hardware brightness.
    bool pwmSafe = false;
    bool pwmTargetsPresent = false;
    bool pwmBuiltInOnly = false;
    bool pwmLockConfirmed = false;
    bool pwmVerifyPending = false;
    bool pwmVerifyIsUserToggle = false;
    std::int32_t pwmTargetCount = 0;
    std::int32_t pwmTargetsAt100 = 0;
    bool pwmOperationRunning = false;  // see DisplayOperation
    PwmRequest pwmDeferred = PwmRequest::None;
    bool pwmPendingLogged = false;
    std::int32_t pwmRetryCount = 0;
    bool pwmRetrySlowed = false;
    SavedBrightness pwmSavedBrightness;
    PwmReleaseJob* pwmRelease = nullptr;  // from the end of a session until its result is collected

    bool launchAtStart = false;

    // Accessibility.
    bool oleaccRequested = false;  // whether loading oleacc.dll has been attempted
    LRESULT(WINAPI* lresultFromObject)(REFIID iid, WPARAM wParam, IUnknown* object) = nullptr;
    HRESULT(WINAPI* accessibleObjectFromWindow)
    (HWND window, DWORD objectId, REFIID iid, void** object) = nullptr;
    IAccessible* accessibleObject = nullptr;  // null until the first request
    AccessibleActionQueue accessibleActions;
    AnnouncedPopup announcedPopup;
};

extern AppState g_app;
