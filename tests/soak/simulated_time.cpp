#include "soak/simulated_time.h"

#include <algorithm>
#include <map>

#include "faults/fault_injector.h"
#include "faults/simulated_platform.h"
#include "soak/attack.h"

namespace {

constexpr std::uint64_t kStart = 100000000;          // ms since the machine was started
constexpr std::uint64_t kStartSeconds = 1700000000;  // since 1970
constexpr std::uint64_t kUnits = 10000;              // of a FILETIME in a ms
constexpr std::uint64_t kFileTimeStart = 133445088000000000;
constexpr int kTimersPerDispatch = 50;

struct Timer {
    UINT period;
    std::uint64_t due;
};

std::map<UINT_PTR, Timer> g_timers;
std::uint64_t g_now = 0;  // ms since the start

ULONGLONG WINAPI ClockTickCount() {
    return kStart + g_now;
}

std::int64_t ClockSeconds(std::int64_t* seconds) {
    const auto now = static_cast<std::int64_t>(kStartSeconds + g_now / 1000);
    if (seconds != nullptr) *seconds = now;
    return now;
}

void WINAPI ClockLocalTime(SYSTEMTIME* time) {
    ULARGE_INTEGER now = {};
    now.QuadPart = kFileTimeStart + g_now * kUnits;
    const FILETIME fileTime = {now.LowPart, now.HighPart};
    FileTimeToSystemTime(&fileTime, time);
}

UINT_PTR WINAPI StartClockTimer(HWND, UINT_PTR id, UINT period, TIMERPROC) {
    g_timers[id] = {period, g_now + period};
    g_platform.timers.insert(id);
    return id;
}

BOOL WINAPI StopClockTimer(HWND, UINT_PTR id) {
    g_platform.timers.erase(id);
    return g_timers.erase(id) != 0;
}

template <typename Function>
void* Address(Function* function) {
    return reinterpret_cast<void*>(function);
}

}  // namespace

void InstallSimulatedTime() {
    ReplaceImport("GetTickCount64", Address(&ClockTickCount));
    ReplaceImport("_time64", Address(&ClockSeconds));
    ReplaceImport("GetLocalTime", Address(&ClockLocalTime));
    ReplaceImport("SetTimer", Address(&StartClockTimer));
    ReplaceImport("KillTimer", Address(&StopClockTimer));
}

void ResetSimulatedTime() {
    g_timers.clear();
    g_now = 0;
}

void RunUntil(std::uint64_t time) {
    for (int sent = 0;; ++sent) {
        const auto next = std::min_element(
            g_timers.begin(), g_timers.end(),
            [](const auto& one, const auto& other) { return one.second.due < other.second.due; });
        if (next == g_timers.end() || next->second.due > time) break;
        g_now = next->second.due;
        next->second.due += next->second.period;
        Send(WM_TIMER, next->first);
        if (sent % kTimersPerDispatch == 0) DispatchQueue();
    }
    g_now = time;
    DispatchQueue();
}

std::uint64_t SimulatedTime() {
    return g_now;
}
