#include "app/window_proc.h"

#include <windowsx.h>

#include "app/accessibility.h"
#include "app/auto_hide.h"
#include "app/display_events.h"
#include "app/frame_input.h"
#include "app/notices.h"
#include "app/popup.h"
#include "app/power_events.h"
#include "app/session_end.h"
#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "app/state/messages.h"
#include "app/state/timers.h"
#include "app/tray_events.h"
#include "app/window_lifetime.h"
#include "brightness/pwm_safe.h"
#include "filter/gamma_fix.h"
#include "store/settings.h"
#include "ui/accessible_events.h"
#include "ui/popup_input.h"
#include "ui/popup_painter.h"

namespace {

// No default: a timer without a case does not compile.
void OnTimer(TimerId timer) {
    if (IsOneShot(timer)) StopTimer(timer);
    switch (timer) {
        case TimerId::SaveSettings: SaveSettings(); return;
        case TimerId::DisplaySettle: OnDisplaysSettled(); return;
        case TimerId::CopiedIndicationEnd: RefreshPopupAndTray(); return;
        case TimerId::PwmSafePoll:
            RefreshPwmSafeTargets(true);
            RefreshPopupAndTray();
            return;
        case TimerId::PwmSafeVerify:
            VerifyPwmLock();
            RefreshPopupAndTray();
            return;
        case TimerId::PopupAutoHide: OnAutoHideTimer(); return;
        case TimerId::TrayRetry: OnTrayRetryTimer(); return;
        case TimerId::GammaFixPoll: OnGammaFixTimer(); return;
    }
}

void OnTimerId(WPARAM id) {
    if (IsTimerId(id)) OnTimer(static_cast<TimerId>(id));
}

void OnPwmSafeDeferred() {
    PerformDeferredPwmRequest();
    RefreshPopupAndTray();
}

void OnSecondStart() {
    ContinueSession();
    ShowPopup();
}

void OnPopupPressed(LPARAM position) {
    ContinueSession();
    OnMouseDown(GET_X_LPARAM(position), GET_Y_LPARAM(position));
}

void OnPaint(HWND window) {
    PaintPopup(window);
    AnnouncePanel();
}

// SetCapture by the window that has the capture sends the message as well: nothing is lost then.
void OnCaptureChanged(HWND window, HWND gaining) {
    if (gaining != window) OnCaptureLost();
}

LRESULT OnMouseActivate() {
    g_app.popupArmed = true;
    return MA_ACTIVATE;
}

// Both words contain the same DPI; some senders set only the low one.
UINT DpiFrom(WPARAM wParam) {
    return wParam > 0xFFFF ? HIWORD(wParam) : LOWORD(wParam);
}

const RECT* SuggestedRect(LPARAM lParam) {
    return reinterpret_cast<const RECT*>(lParam);
}

bool IsTaskbarCreated(UINT message) {
    return g_app.taskbarCreatedMessage != 0 && message == g_app.taskbarCreatedMessage;
}

}  // namespace

// clang-format off
LRESULT CALLBACK HandleWindowMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (IsTaskbarCreated(message)) { OnTaskbarCreated(); return 0; }
    if (IsFrameInput(message, wParam)) return 0;
    switch (message) {
        case kMessageLegacyNotice:       ShowLegacyNotice();                                          return 0;
        case kMessageShowPopup:          OnSecondStart();                                             return 0;
        case kMessageMagnificationError: ShowMagnificationError(static_cast<int>(wParam));            return 0;
        case kMessagePwmSafeDeferred:    OnPwmSafeDeferred();                                         return 0;
        case kMessageAccessibleActions:  OnAccessibleActions();                                       return 0;
        case WM_ENABLE:                  AnnounceEnabling();                                          return 0;
        case WM_GETOBJECT:                                            return OnGetObject(window, wParam, lParam);
        case WM_POWERBROADCAST:          OnPowerBroadcast(wParam, lParam);                            return TRUE;
        case WM_LBUTTONDOWN:             OnPopupPressed(lParam);                                      return 0;
        case WM_LBUTTONUP:               OnMouseUp();                                                 return 0;
        case WM_CAPTURECHANGED:          OnCaptureChanged(window, reinterpret_cast<HWND>(lParam));    return 0;
        case WM_MOUSEMOVE:               OnMouseMove(GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam));     return 0;
        case WM_DPICHANGED:              OnDpiChanged(DpiFrom(wParam), SuggestedRect(lParam));        return 0;
        case kMessageTray:               OnTrayCallback(lParam);                                      return 0;
        case WM_MOUSEACTIVATE:                                                             return OnMouseActivate();
        case WM_DISPLAYCHANGE:           OnDisplayChange();                                           return 0;
        case WM_TIMER:                   OnTimerId(wParam);                                           return 0;
        case WM_ENDSESSION:              OnEndSession(wParam != FALSE, lParam);                       return 0;
        case WM_CREATE:                  OnCreate(window);                                            return 0;
        case WM_DESTROY:                 OnDestroy();                                                 return 0;
        case WM_ACTIVATE:                OnActivate(LOWORD(wParam), reinterpret_cast<HWND>(lParam));  return 0;
        case WM_PAINT:                   OnPaint(window);                                             return 0;
        case WM_CLOSE:                   HidePopup();                                                 return 0;
        case WM_ERASEBKGND:                                                                           return 1;
        default:                         return DefWindowProcW(window, message, wParam, lParam);
    }
}
// clang-format on
