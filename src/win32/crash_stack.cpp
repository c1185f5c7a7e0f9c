#include "win32/crash_stack.h"

#include "win32/platform.h"

void ReserveCrashStack() {
    ULONG bytes = 64 * 1024;
    SetThreadStackGuarantee(&bytes);
}
