// A poll of PWM-safe mode that finds nothing changed: bench_polls NAME MONITORS [real]. The displays are the
// lab's doubles; native.py sets them up with all brightness at 100%. "real": they take as long as real ones,
// so long that the first poll is measured too.
#include <objbase.h>

#include <cstdlib>

#include "app/state/app_state.h"
#include "brightness/pwm_safe.h"
#include "floor_polls.h"
#include "measure.h"

namespace {

void Poll(int) {
    RefreshPwmSafeTargets(true);
}

}  // namespace

int main(int count, char** words) {
    const bool real = count == 4 && std::string(words[3]) == "real";
    if (count != 3 && !real) return 2;
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    g_app.pwmSafe = true;
    const int expected = std::atoi(words[2]);
    int answered = 0;
    const auto floor = [&answered](int) { answered = FloorPoll(); };
    const Figure figure = {words[1], 1.05};
    if (real) {
        CompareTimes(
            figure, [] { return TimeOf(Poll, 1, nullptr); }, [&] { return TimeOf(floor, 1, nullptr); });
    } else {
        Compare(figure, Poll, floor);
    }
    if (answered == expected && g_app.pwmTargetsAt100 == expected) return 0;
    std::fprintf(stderr, "%d of %d displays at 100%%, %d answered\n", g_app.pwmTargetsAt100, expected,
                 answered);
    return 1;
}
