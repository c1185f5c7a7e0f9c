#include "app/shell/foreground.h"

#include <cstdint>

namespace {

bool IsForeground(HWND window) {
    return GetForegroundWindow() == window;
}

bool AskForForeground(HWND window) {
    BringWindowToTop(window);
    SetForegroundWindow(window);
    return IsForeground(window);
}

// While it is not 0, Windows refuses the foreground to a program that the user is not working in.
struct [[nodiscard]] LiftedForegroundLock {
    DWORD timeout = 0;  // ms
    bool read;

    LiftedForegroundLock()
        : read(SystemParametersInfoW(SPI_GETFOREGROUNDLOCKTIMEOUT, 0, &timeout, 0) != FALSE) {
        Set(0);
    }
    ~LiftedForegroundLock() {
        if (read) Set(timeout);
    }
    LiftedForegroundLock(const LiftedForegroundLock&) = delete;
    LiftedForegroundLock& operator=(const LiftedForegroundLock&) = delete;

    // The value itself travels in the pointer argument.
    static void Set(DWORD value) {
        SystemParametersInfoW(SPI_SETFOREGROUNDLOCKTIMEOUT, 0,
                              reinterpret_cast<void*>(static_cast<std::uintptr_t>(value)), 0);
    }
};

// Shares the input of the foreground window's thread, whose right to set the foreground window comes with it.
struct [[nodiscard]] AttachedInput {
    DWORD thread;
    bool attached = false;

    AttachedInput(HWND foreground, DWORD foregroundThread) : thread(foregroundThread) {
        const DWORD own = GetCurrentThreadId();
        if (thread == 0 || thread == own || IsHungAppWindow(foreground)) return;
        attached = AttachThreadInput(own, thread, TRUE) != FALSE;
    }
    ~AttachedInput() {
        if (attached) AttachThreadInput(GetCurrentThreadId(), thread, FALSE);
    }
    AttachedInput(const AttachedInput&) = delete;
    AttachedInput& operator=(const AttachedInput&) = delete;
};

}  // namespace

bool BringToForeground(HWND window) {
    if (AskForForeground(window)) return true;
    {
        HWND foreground = GetForegroundWindow();
        const DWORD thread = foreground != nullptr ? GetWindowThreadProcessId(foreground, nullptr) : 0;
        const LiftedForegroundLock lifted;
        AllowSetForegroundWindow(ASFW_ANY);
        const AttachedInput attached(foreground, thread);
        AskForForeground(window);
    }
    return IsForeground(window);
}
