// The entry of the window procedure: a frame with an exception handler around HandleWindowMessage.
#include "app/crash_guard.h"
#include "app/window_proc.h"

#if defined(_MSC_VER)

namespace {

int OnException(const EXCEPTION_POINTERS* exception) {
    OnCrash(exception->ExceptionRecord->ExceptionCode, exception->ExceptionRecord->ExceptionAddress);
    return EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

LRESULT CALLBACK MainWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    __try {
        return HandleWindowMessage(window, message, wParam, lParam);
    } __except (OnException(GetExceptionInformation())) {
        return 0;
    }
}

#else

// GCC has no __try. A frame's exception handler is part of its unwind information ("x64 exception handling"
// in Microsoft's documentation): Windows calls it for each exception that no frame below it handles, and once
// more if the stack is unwound.
extern "C" EXCEPTION_DISPOSITION OnWindowProcException(EXCEPTION_RECORD* record, void* frame,
                                                       CONTEXT* context, void* dispatcher);

EXCEPTION_DISPOSITION OnWindowProcException(EXCEPTION_RECORD* record, void*, CONTEXT*, void*) {
    constexpr DWORD kUnwindFlags = 0x66;  // unwinding, exit unwind, target unwind, collided unwind
    if ((record->ExceptionFlags & kUnwindFlags) == 0)
        OnCrash(record->ExceptionCode, record->ExceptionAddress);
    return ExceptionContinueSearch;
}

// The arguments stay in their registers. The callee owns 32 bytes above the return address; 8 more align the
// stack. The nop keeps the return address inside the frame.
__asm__(
    "\t.text\n"
    "\t.p2align 4\n"
    "\t.globl MainWindowProc\n"
    "\t.def MainWindowProc; .scl 2; .type 32; .endef\n"
    "\t.seh_proc MainWindowProc\n"
    "MainWindowProc:\n"
    "\tsubq $40, %rsp\n"
    "\t.seh_stackalloc 40\n"
    "\t.seh_endprologue\n"
    "\tcall HandleWindowMessage\n"
    "\tnop\n"
    "\taddq $40, %rsp\n"
    "\tret\n"
    "\t.seh_handler OnWindowProcException, @except\n"
    "\t.seh_endproc\n");

#endif
