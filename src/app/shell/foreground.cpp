#include "app/shell/foreground.h"

#include <cstdint>

namespace {

bool IsForeground(HWND window) {
    return GetForegroundWindow() == window;
}

bool RequestForeground(HWND window) {
    BringWindowToTop(window);
    SetForegroundWindow(window);
    return IsForeground(window);
}

// While the time-out is not 0, Windows refuses the foreground to a program that the user is not working in. A
// time-out that cannot be read is left alone, since it could not be restored.
struct [[nodiscard]] SuspendedForegroundLock {
    DWORD timeout = 0;  // ms
    bool read;

    SuspendedForegroundLock()
        : read(SystemParametersInfoW(SPI_GETFOREGROUNDLOCKTIMEOUT, 0, &timeout, 0) != FALSE) {
        if (read) Set(0);
    }
    ~SuspendedForegroundLock() {
        if (read) Set(timeout);
    }
    SuspendedForegroundLock(const SuspendedForegroundLock&) = delete;
    SuspendedForegroundLock& operator=(const SuspendedForegroundLock&) = delete;

    // SPI_SETFOREGROUNDLOCKTIMEOUT takes the value itself in the pointer argument.
    static void Set(DWORD value) {
        SystemParametersInfoW(SPI_SETFOREGROUNDLOCKTIMEOUT, 0,
                              reinterpret_cast<void*>(static_cast<std::uintptr_t>(value)), 0);
    }
};

// Attaches to the input of the foreground window's thread, and so shares its right to set the foreground
// window.
struct [[nodiscard]] AttachedInput {
    DWORD thread;
    bool attached = false;

    AttachedInput(HWND foreground, DWORD foregroundThread) : thread(foregroundThread) {
        const DWORD current = GetCurrentThreadId();
        if (thread == 0 || thread == current || IsHungAppWindow(foreground)) return;
        attached = AttachThreadInput(current, thread, TRUE) != FALSE;
    }
    ~AttachedInput() {
        if (attached) AttachThreadInput(GetCurrentThreadId(), thread, FALSE);
    }
    AttachedInput(const AttachedInput&) = delete;
    AttachedInput& operator=(const AttachedInput&) = delete;
};

}  // namespace

bool BringToForeground(HWND window) {
    if (RequestForeground(window)) return true;
    {
        HWND foreground = GetForegroundWindow();
        const DWORD thread = foreground != nullptr ? GetWindowThreadProcessId(foreground, nullptr) : 0;
        const SuspendedForegroundLock suspended;
        AllowSetForegroundWindow(ASFW_ANY);
        const AttachedInput attached(foreground, thread);
        RequestForeground(window);
    }
    return IsForeground(window);
}
