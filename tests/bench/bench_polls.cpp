// A poll of PWM-safe mode that finds nothing changed: bench_polls NAME MONITORS. The displays are the lab's
// doubles; bench.py sets them up with all brightness at 100%.
#include <objbase.h>

#include <cstdlib>

#include "app/state/app_state.h"
#include "brightness/pwm_safe.h"
#include "floor_polls.h"
#include "measure.h"

int main(int count, char** words) {
    if (count != 3) return 2;
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    g_app.pwmSafe = true;
    const int expected = std::atoi(words[2]);
    RefreshPwmSafeTargets(true);
    if (FloorPoll() != expected || g_app.pwmTargetsAt100 != expected) {
        std::fprintf(stderr, "%d of %d displays at 100%%\n", g_app.pwmTargetsAt100, expected);
        return 1;
    }
    Compare(
        {words[1], 1.05}, [](int) { RefreshPwmSafeTargets(true); }, [](int) { FloorPoll(); });
    return 0;
}
