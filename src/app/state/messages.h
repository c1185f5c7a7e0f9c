// Every private message of the main window, with its sender and payload.
#pragma once

#include "win32/platform.h"

// From the shell for the tray icon: lParam is the mouse message; wParam, the icon's id, is ignored.
constexpr UINT kMessageTray = WM_USER + 1;

// Posted by the automatic fallback to Legacy Mode; no payload.
constexpr UINT kMessageLegacyNotice = WM_APP + 104;

// Posted by a second instance of the program before it exits; no payload.
constexpr UINT kMessageShowPopup = WM_APP + 105;

// Posted once per run when the colour matrix is refused; wParam is the error code.
constexpr UINT kMessageMagnificationError = WM_APP + 106;

// Posted when the displays are free again for a deferred request of the PWM-safe controller, also by the
// thread that releases the lock at a session's end; no payload.
constexpr UINT kMessagePwmSafeDeferred = WM_APP + 107;

// Posted when requests of assistive technology in AppState can be performed: by the request, and at the end
// of an operation on the displays during which they were deferred; no payload.
constexpr UINT kMessageAccessibleActions = WM_APP + 108;
