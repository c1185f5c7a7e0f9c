#include "filter/gamma_restart.h"

#include <ctime>

#include "app/state/app_state.h"
#include "win32/platform.h"

bool WasStartedAfter(std::uint64_t epoch, std::uint64_t now, std::uint64_t tick) {
    if (epoch == 0) return false;
    // Signed: negative if the clock is set so close to 1970 that the uptime exceeds it.
    const auto bootTime = static_cast<std::int64_t>(now - tick / 1000);
    return bootTime > 0 && static_cast<std::uint64_t>(bootTime) > epoch;
}

bool IsRestartDoneSinceFix() {
    if (!g_app.gammaRangeExpanded) return false;
    return WasStartedAfter(g_app.gammaFixEpoch, static_cast<std::uint64_t>(std::time(nullptr)),
                           GetTickCount64());
}
