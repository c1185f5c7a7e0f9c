#include "app/frame_input.h"

namespace {

// The low four bits are for Windows: the part of the frame that was pressed.
constexpr WPARAM kCommandMask = 0xFFF0;

bool IsFrameCommand(WPARAM command) {
    switch (command & kCommandMask) {
        case SC_SIZE:
        case SC_MOVE:
        case SC_VSCROLL:
        case SC_HSCROLL:
        case SC_MOUSEMENU:
        case SC_KEYMENU: return true;
        default: return false;
    }
}

}  // namespace

bool IsFrameInput(UINT message, WPARAM wParam) {
    switch (message) {
        case WM_NCLBUTTONDOWN:
        case WM_NCRBUTTONDOWN: return true;
        case WM_SYSCOMMAND: return IsFrameCommand(wParam);
        default: return false;
    }
}
