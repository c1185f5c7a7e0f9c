#include "app/crash_guard.h"

#include <atomic>
#include <cstdint>

#include "app/state/app_state.h"
#include "filter/cursor_tint.h"
#include "filter/screen_ramp.h"
#include "store/event_log.h"
#include "win32/abnormal_end.h"
#include "win32/crash_stack.h"
#include "win32/format_text.h"

// As functions of kernel32, which needs no other DLL for them.
#define PSAPI_VERSION 2
#include <psapi.h>

namespace {

// The exit code of every process that fails fast.
constexpr DWORD kFailFastStatus = 0xC0000409;  // STATUS_STACK_BUFFER_OVERRUN

constinit std::atomic_flag g_crashed;

// The module that contains the address, and the distance from its start. The name is empty outside every
// module.
struct CodeLocation {
    wchar_t module[64] = {};
    std::uintptr_t offset;

    // Neither call takes the loader lock, which another thread may hold.
    explicit CodeLocation(const void* address) : offset(reinterpret_cast<std::uintptr_t>(address)) {
        MEMORY_BASIC_INFORMATION memory = {};
        if (VirtualQuery(address, &memory, sizeof(memory)) == 0 || memory.Type != MEM_IMAGE) return;
        offset -= reinterpret_cast<std::uintptr_t>(memory.AllocationBase);
        if (GetModuleBaseNameW(GetCurrentProcess(), static_cast<HMODULE>(memory.AllocationBase), module,
                               static_cast<DWORD>(std::size(module))) == 0) {
            FormatText(module, "?");
        }
    }
};

void LogCrash(DWORD code, const void* address) {
    const CodeLocation location(address);
    wchar_t message[kLogMessageCapacity];
    FormatText(message, "Crashed: exception %08lX at %ls+%llX", code, location.module,
               static_cast<unsigned long long>(location.offset));
    LogInCrash(message);
}

LONG WINAPI OnUnhandledException(EXCEPTION_POINTERS* exception) {
    OnCrash(exception->ExceptionRecord->ExceptionCode, exception->ExceptionRecord->ExceptionAddress);
    return EXCEPTION_CONTINUE_SEARCH;
}

void OnRuntimeError(const void* address) {
    OnCrash(kFailFastStatus, address);
}

}  // namespace

void InstallCrashGuard() {
    g_crashed.clear();
    ReserveCrashStack();
    SetAbnormalEndHandler(OnRuntimeError);
    SetUnhandledExceptionFilter(OnUnhandledException);
}

void OnCrash(DWORD code, const void* address) {
    if (g_crashed.test_and_set()) return;
    g_app.ending = true;  // nothing restores the screen later, so a refusal is tried once more
    if (g_app.rampApplied) LoadIdentityRamp();
    // Even if none is recorded as tinted: the fault may have occurred between two of the sixteen.
    ResetSystemCursors();
    LogCrash(code, address);
}
