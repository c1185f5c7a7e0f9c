#include "support/fake_clock.h"

#include <ctime>

#include "support/seam.h"

AMBREL_SEAM_SET(fake_clock);

namespace {

__time64_t __cdecl FakeTime(__time64_t* out) {
    const auto now = static_cast<__time64_t>(g_clock);
    if (out != nullptr) *out = now;
    return now;
}

ULONGLONG WINAPI FakeGetTickCount64() {
    return g_tick;
}

}  // namespace

AMBREL_SEAM(_time64, FakeTime);
AMBREL_SEAM(GetTickCount64, FakeGetTickCount64);
