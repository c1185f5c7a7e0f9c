#include "win32/abnormal_end.h"

#include "win32/fast_fail.h"

void EndProcessAbnormally() {
    FastFail(FAST_FAIL_FATAL_APP_EXIT);
}
