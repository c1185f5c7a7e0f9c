// Random messages of another program of the same user.
#include <algorithm>
#include <iterator>
#include <random>

#include "tool.h"

namespace {

constexpr UINT kTray = WM_USER + 1;
constexpr UINT kFirstPrivate = WM_APP + 104;
constexpr UINT kPrivateCount = 5;
constexpr UINT kAnswerTimeout = 200;  // ms; a message that opens a box or a menu is answered when that closes
constexpr unsigned kReleasePeriod = 20;  // messages between two attempts to close a menu
constexpr unsigned kHitTestEnd = 22;     // after HTHELP, the last part of a window

constexpr UINT kHandled[] = {
    WM_MOUSEMOVE,  WM_LBUTTONDOWN,   WM_LBUTTONUP,     WM_CAPTURECHANGED, WM_TIMER, WM_POWERBROADCAST,
    WM_DPICHANGED, WM_DISPLAYCHANGE, WM_MOUSEACTIVATE, WM_ACTIVATE,       WM_PAINT, WM_CLOSE,
    WM_ERASEBKGND, WM_GETOBJECT,     WM_CREATE,        WM_ENDSESSION,     kTray,    kFirstPrivate,
    WM_SYSCOMMAND, WM_NCLBUTTONDOWN, WM_NCRBUTTONDOWN,
};

struct Range {
    UINT first;
    UINT last;
};

constexpr Range kLeftOut[] = {
    {WM_DESTROY, WM_DESTROY},  // they end the program
    {WM_NCDESTROY, WM_NCDESTROY},
    {WM_QUIT, WM_QUIT},
    // Their parameters are pointers.
    {WM_SETTEXT, WM_GETTEXT},
    {WM_SETTINGCHANGE, WM_DEVMODECHANGE},
    {WM_GETMINMAXINFO, WM_GETMINMAXINFO},
    {WM_DRAWITEM, WM_VKEYTOITEM},
    {WM_COMPAREITEM, WM_COMPAREITEM},
    {WM_WINDOWPOSCHANGING, WM_WINDOWPOSCHANGED},
    {WM_COPYDATA, WM_COPYDATA},
    {WM_NOTIFY, WM_HELP},
    {WM_STYLECHANGING, WM_STYLECHANGED},
    {WM_NCCREATE, WM_NCCREATE},
    {WM_NCCALCSIZE, WM_NCCALCSIZE},
    {WM_GETDLGCODE, WM_GETDLGCODE},
    {0x91, 0x95},    // menus drawn by the theme
    {0x118, 0x118},  // a timer of the system: DispatchMessageW calls lParam
    {WM_NEXTMENU, WM_MOVING},
    {WM_DEVICECHANGE, WM_MDICREATE},
    {WM_DROPFILES, WM_DROPFILES},
    {WM_IME_SETCONTEXT, WM_IME_REQUEST},
    {0x10D, 0x10F},  // input methods
    {WM_ASKCBFORMATNAME, WM_ASKCBFORMATNAME},
    {0x33F, 0x33F},  // WM_GETTITLEBARINFOEX
    {0x3E0, 0x3E8},  // DDE
};

struct Sender {
    HWND window;
    std::mt19937_64 engine;
    int sent = 0;
    int posted = 0;
    int unanswered = 0;

    unsigned Below(unsigned end) { return static_cast<unsigned>(engine() % end); }
    unsigned long long Parameter() {
        switch (Below(4)) {
            case 0: return Below(10);
            case 1: return Below(0x10000);
            case 2: return engine() & 0xFFFFFFFF;
            default: return engine();
        }
    }
};

bool IsLeftOut(UINT message) {
    return std::any_of(std::begin(kLeftOut), std::end(kLeftOut), [message](const Range& range) {
        return message >= range.first && message <= range.last;
    });
}

struct Message {
    UINT number;
    WPARAM wParam;
    LPARAM lParam;
};

// Neither the task list nor the screen saver nor the monitor's power is the program's. Windows uses the low
// bits.
WPARAM AnyCommand(Sender& sender) {
    const WPARAM command = sender.Below(10) == 0 ? SC_KEYMENU : SC_SIZE + 0x10 * sender.Below(10);
    return command + sender.Below(10);
}

// Fits the parameters to a message that the program or DefWindowProcW handles.
void FitParameters(Sender& sender, Message& message) {
    switch (message.number) {
        case WM_MOUSEMOVE:
        case WM_LBUTTONDOWN:
        case WM_LBUTTONUP:
            if (sender.Below(5) != 0) {
                message.lParam = MAKELPARAM(sender.Below(340), sender.Below(560));
            }
            break;
        case WM_TIMER:
            message.wParam = sender.Below(10);
            message.lParam = 0;
            break;
        case WM_ENDSESSION: message.wParam = FALSE; break;
        case WM_GETOBJECT: message.lParam = sender.Below(2) == 0 ? OBJID_CLIENT : message.lParam; break;
        case kTray: message.lParam = sender.Below(2) == 0 ? WM_LBUTTONUP : WM_RBUTTONUP; break;
        case WM_SYSCOMMAND: message.wParam = AnyCommand(sender); break;
        case WM_NCLBUTTONDOWN:
        case WM_NCLBUTTONDBLCLK:
        case WM_NCRBUTTONDOWN: message.wParam = sender.Below(kHitTestEnd); break;
        default: break;
    }
}

Message AnyMessage(Sender& sender) {
    Message message = {};
    do {
        const unsigned kind = sender.Below(4);
        message.number = kind == 0   ? sender.Below(0x10000)
                         : kind == 1 ? sender.Below(0x400)
                                     : kHandled[sender.Below(std::size(kHandled))];
        if (message.number == kFirstPrivate) {
            message.number += sender.Below(kPrivateCount);
        }
    } while (IsLeftOut(message.number));
    message.wParam = sender.Parameter();
    message.lParam = static_cast<LPARAM>(sender.Parameter());
    FitParameters(sender, message);
    return message;
}

bool IsKey(UINT message) {
    return message >= WM_KEYFIRST && message <= WM_KEYLAST;
}

// A posted key would choose a row of an open menu, Quit among them, and a posted mouse message as well.
bool MayBePosted(UINT message) {
    return !IsKey(message) && !(message >= WM_MOUSEFIRST && message <= WM_MOUSELAST);
}

// Closes a menu, as the user would with Escape.
void CloseMenu(HWND window) {
    PostMessageW(window, WM_CANCELMODE, 0, 0);
    PostMessageW(window, WM_KEYDOWN, VK_ESCAPE, 1);
}

void SendOne(Sender& sender) {
    const Message message = AnyMessage(sender);
    // The shell posts the messages of the icon; a sent one is posted again.
    if (MayBePosted(message.number) && sender.Below(4) == 0) {
        PostMessageW(sender.window, message.number, message.wParam, message.lParam);
        ++sender.posted;
    } else {
        DWORD_PTR result = 0;
        if (!SendMessageTimeoutW(sender.window, message.number, message.wParam, message.lParam, SMTO_NORMAL,
                                 kAnswerTimeout, &result)) {
            ++sender.unanswered;
        }
        ++sender.sent;
    }
    if (message.number == kTray || sender.Below(kReleasePeriod) == 0) {
        CloseMenu(sender.window);
    }
}

}  // namespace

// messages-random TARGET SEED COUNT: sends and posts random messages to a window. Left out are those that end
// it and those whose parameters are pointers. The answer is {sent, posted, unanswered}.
int SendAtRandom(const Arguments& arguments, Json& answer) {
    Sender sender = {FindTarget(arguments[0]), std::mt19937_64(static_cast<unsigned>(Number(arguments[1])))};
    if (!sender.window) {
        return kToolNotFound;
    }
    for (long long left = Number(arguments[2]); left > 0; --left) {
        SendOne(sender);
    }
    answer =
        JsonObject({{"sent", sender.sent}, {"posted", sender.posted}, {"unanswered", sender.unanswered}});
    return kToolOk;
}
