#include "win32/abnormal_end.h"

#include "win32/fast_fail.h"

#if defined(_MSC_VER)
#include <intrin.h>
#endif

namespace {

AbnormalEndHandler g_handler = nullptr;

}  // namespace

void SetAbnormalEndHandler(AbnormalEndHandler handler) {
    g_handler = handler;
}

void EndProcessAbnormally() {
#if defined(_MSC_VER)
    const void* address = _ReturnAddress();
#else
    const void* address = __builtin_return_address(0);
#endif
    if (g_handler != nullptr) g_handler(address);
    FastFail(FAST_FAIL_FATAL_APP_EXIT);
}
