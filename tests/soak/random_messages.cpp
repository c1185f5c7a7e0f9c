// Random messages to the window procedure. Left out are those that end the program by design and those whose
// parameters are pointers.
#include <algorithm>
#include <cstdio>
#include <iterator>

#include "app/state/app_state.h"
#include "app/state/dpi.h"
#include "app/state/messages.h"
#include "faults/simulated_platform.h"
#include "soak/attack.h"
#include "soak/properties.h"
#include "ui/canvas.h"

namespace {

constexpr UINT kHandled[] = {
    WM_MOUSEMOVE,
    WM_MOUSEMOVE,
    WM_LBUTTONDOWN,
    WM_LBUTTONDOWN,
    WM_LBUTTONUP,
    WM_LBUTTONUP,
    WM_CAPTURECHANGED,
    WM_TIMER,
    WM_POWERBROADCAST,
    WM_DISPLAYCHANGE,
    WM_DPICHANGED,
    WM_MOUSEACTIVATE,
    WM_ACTIVATE,
    WM_PAINT,
    WM_CLOSE,
    WM_ERASEBKGND,
    WM_GETOBJECT,
    WM_ENDSESSION,
    WM_CREATE,
    WM_SYSCOMMAND,
    WM_NCLBUTTONDOWN,
    WM_NCRBUTTONDOWN,
    kMessageTray,
    kMessageTray,
    kMessageShowPopup,
    kMessageLegacyNotice,
    kMessageMagnificationError,
    kMessagePwmSafeDeferred,
    kMessageAccessibleActions,
};

constexpr UINT kLeftOut[] = {
    // They end the program.
    WM_DESTROY, WM_NCDESTROY, WM_QUIT,
    // Their parameters are pointers.
    WM_GETTEXT, WM_SETTEXT, WM_GETMINMAXINFO, WM_WINDOWPOSCHANGING, WM_WINDOWPOSCHANGED, WM_COPYDATA,
    WM_NOTIFY, WM_HELP, WM_STYLECHANGING, WM_STYLECHANGED, WM_NCCREATE, WM_NCCALCSIZE, WM_SETTINGCHANGE,
    WM_DEVMODECHANGE, WM_DRAWITEM, WM_MEASUREITEM, WM_DELETEITEM, WM_COMPAREITEM, WM_DEVICECHANGE, WM_SIZING,
    WM_MOVING, WM_MDICREATE, WM_NEXTMENU, WM_DROPFILES, WM_GETDLGCODE, WM_IME_REQUEST, WM_IME_CONTROL,
    WM_IME_COMPOSITION, WM_IME_SELECT, WM_INPUTLANGCHANGE, WM_INPUTLANGCHANGEREQUEST, WM_ASKCBFORMATNAME,
    0x91, 0x92, 0x93, 0x94,
    0x95,   // menus drawn by the theme
    0x118,  // a timer of the system: DispatchMessageW calls lParam
    0x33F,  // WM_GETTITLEBARINFOEX
    0x3E0, 0x3E1, 0x3E2, 0x3E3, 0x3E4, 0x3E5, 0x3E6, 0x3E7,
    0x3E8,  // DDE
};

// Neither the task list nor the screen saver nor the monitor's power is the program's.
constexpr WPARAM kSystemCommands[] = {
    SC_SIZE,  SC_MOVE,       SC_MINIMIZE, SC_MAXIMIZE,  SC_RESTORE, SC_NEXTWINDOW,
    SC_CLOSE, SC_PREVWINDOW, SC_VSCROLL,  SC_MOUSEMENU, SC_HSCROLL, SC_KEYMENU,
};

constexpr UINT kHitTestEnd = 22;  // after HTHELP, the last part of a window

struct Sent {
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
};

std::uint64_t AnyParameter(RandomSource& random) {
    switch (random.Below(5)) {
        case 0: return 0;
        case 1: return random.Below(10);
        case 2: return random.Below(0x10000);
        case 3: return static_cast<std::uint32_t>(random.Any());
        default: return random.Any();
    }
}

LPARAM AnyPosition(RandomSource& random) {
    if (random.OneIn(5)) return static_cast<LPARAM>(random.Any());
    return MAKELPARAM(ScaleByDpi(random.Between(-20, 340)), ScaleByDpi(random.Between(-20, 560)));
}

RECT g_suggested;

LPARAM SuggestedPlace(RandomSource& random) {
    if (random.OneIn(3)) return static_cast<LPARAM>(AnyParameter(random));
    g_suggested = {random.Between(-3000, 3000), random.Between(-3000, 3000), 0, 0};
    return reinterpret_cast<LPARAM>(&g_suggested);
}

// wParam identifies the part of a frame, or the system command.
void FitToFrame(RandomSource& random, Sent& sent) {
    if (sent.message == WM_SYSCOMMAND)
        sent.wParam = kSystemCommands[random.Below(std::size(kSystemCommands))] + random.Below(10);
    if (sent.message >= WM_NCMOUSEMOVE && sent.message <= WM_NCXBUTTONDBLCLK)
        sent.wParam = random.Below(kHitTestEnd);
}

Sent HandledMessage(RandomSource& random) {
    Sent sent = {kHandled[random.Below(std::size(kHandled))], AnyParameter(random),
                 static_cast<LPARAM>(AnyParameter(random))};
    FitToFrame(random, sent);
    switch (sent.message) {
        case WM_MOUSEMOVE:
        case WM_LBUTTONDOWN:
        case WM_LBUTTONUP: sent.lParam = AnyPosition(random); break;
        case WM_TIMER: sent.wParam = random.OneIn(8) ? sent.wParam : random.Below(10); break;
        case WM_DPICHANGED:
            if (!random.OneIn(4)) sent.wParam = random.Below(300);
            sent.lParam = SuggestedPlace(random);
            break;
        case WM_ENDSESSION: sent.wParam = 0; break;
        case WM_GETOBJECT:
            if (random.OneIn(2)) sent.lParam = static_cast<DWORD>(OBJID_CLIENT);
            break;
        case WM_POWERBROADCAST:
            if (random.OneIn(2)) sent.wParam = PBT_POWERSETTINGCHANGE;
            break;
        case WM_CAPTURECHANGED:
            if (random.OneIn(2)) sent.lParam = reinterpret_cast<LPARAM>(g_app.mainWindow);
            break;
        case kMessageTray:
            sent.lParam = random.OneIn(4) ? sent.lParam : random.OneIn(2) ? WM_LBUTTONUP : WM_RBUTTONUP;
            break;
    }
    return sent;
}

bool IsLeftOut(const Sent& sent) {
    return std::find(std::begin(kLeftOut), std::end(kLeftOut), sent.message) != std::end(kLeftOut) ||
           (sent.message == WM_ENDSESSION && sent.wParam != 0);
}

Sent AnyMessage(RandomSource& random) {
    for (;;) {
        const unsigned range = random.OneIn(2) ? 0x400 : 0x10000;
        Sent sent = {random.Below(range), AnyParameter(random), static_cast<LPARAM>(AnyParameter(random))};
        if (random.OneIn(50)) sent.message = g_app.taskbarCreatedMessage;
        FitToFrame(random, sent);
        if (sent.message == WM_TIMER) sent.lParam = 0;
        if (!IsLeftOut(sent)) return sent;
    }
}

void SendOne(RandomSource& random) {
    const Sent sent = random.OneIn(3) ? AnyMessage(random) : HandledMessage(random);
    char text[128];
    std::snprintf(text, sizeof(text), "message %#x, wParam %#llx, lParam %#llx", sent.message,
                  static_cast<unsigned long long>(sent.wParam), static_cast<unsigned long long>(sent.lParam));
    RecordStep(text);
    // The row of the next menu: none, or one of those that do not quit.
    constexpr UINT kRows[] = {0, 1, 3};
    g_platform.menuChoice = kRows[random.Below(std::size(kRows))];
    if (random.OneIn(200)) g_platform.refusesRamps = !g_platform.refusesRamps;
    if (random.OneIn(10)) {
        PostMessageW(g_app.mainWindow, sent.message, sent.wParam, sent.message == WM_TIMER ? 0 : sent.lParam);
    } else {
        Send(sent.message, sent.wParam, sent.lParam);
    }
}

void SendMessages() {
    for (int i = 0; i < g_round->steps && !Failed(); ++i) {
        SendOne(g_round->random);
        if (g_round->random.OneIn(20)) DispatchQueue();
        RequireConsistentState();
    }
    if (!Failed()) RequirePopupCanBeShown();
}

}  // namespace

void RequirePopupCanBeShown() {
    RecordStep("show the popup");
    Send(kMessageShowPopup);
    RECT window = {};
    GetWindowRect(g_app.mainWindow, &window);
    Require(IsWindowVisible(g_app.mainWindow) != FALSE && IsIconic(g_app.mainWindow) == FALSE,
            "the popup cannot be shown");
    Require(window.right - window.left == ScaleByDpi(kCanvasWidth) &&
                window.bottom - window.top == ScaleByDpi(kCanvasHeight),
            "the popup is shown at another size");
}

void AttackWithMessages() {
    RunSessionWith(SendMessages);
}
