// A month of use on a simulated clock: polls, re-assertions, resumes, display changes, a monitor that comes
// and goes, 10,000 openings of the popup and 200,000 steps of drags. Prints the objects, the memory and the
// log by day, which must not grow.
//
//     month [--quick] [--days N] [--bad-only]
//
// The short form is a day, and three hours with the bad monitor.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "app/state/app_state.h"
#include "app/state/messages.h"
#include "faults/fault_injector.h"
#include "faults/handle_count.h"
#include "faults/session.h"
#include "faults/simulated_platform.h"
#include "soak/attack.h"
#include "soak/properties.h"
#include "soak/simulated_time.h"
#include "support/gdi_counts.h"
#include "ui/regions.h"

namespace {

constexpr std::uint64_t kDay = 86400000;     // ms
constexpr std::uint64_t kUse = 258000;       // ms between two uses of the popup: 334 a day
constexpr std::uint64_t kRareUse = 3600000;  // in the short form and with the bad monitor
constexpr int kDragSteps = 20;               // in each use
constexpr UINT kMenuLegacyMode = 3;
constexpr std::uint64_t kMaxLog = 4 * 1024 * 1024 + 1024;
constexpr std::uint64_t kHeapTolerance = 128 * 1024;  // 500 lines of the log of any length
constexpr std::uint64_t kPrivateTolerance = 4 * 1024 * 1024;

struct Sample {
    std::uint64_t time;
    GdiCounts objects;
    int handles;
    std::uint64_t heap;    // bytes in use
    std::uint64_t memory;  // private bytes
    std::uint64_t log;     // bytes
    std::uint64_t logged;  // bytes since the start
    std::uint64_t polls;
    int openings;
    int steps;
};

struct Month {
    std::uint64_t length;
    std::uint64_t sampleEvery;
    std::uint64_t useEvery;
    bool monitorMissesAnswers;
    std::vector<Sample> samples;
    int openings = 0;
    int steps = 0;
};

Month* g_month = nullptr;
std::uint64_t g_logged = 0;
decltype(&std::fwrite) g_write = nullptr;

// Counts the bytes that are appended to the log. A trim writes 64 KiB in one call.
std::size_t CountWrite(const void* data, std::size_t size, std::size_t count, std::FILE* file) {
    constexpr std::size_t kMaxLine = 4096;
    if (size * count < kMaxLine) g_logged += size * count;
    return g_write(data, size, count, file);
}

std::uint64_t HeapBytes() {
    HANDLE heaps[64];
    const DWORD count = GetProcessHeaps(64, heaps);
    std::uint64_t bytes = 0;
    for (DWORD i = 0; i < count && i < 64; ++i) {
        PROCESS_HEAP_ENTRY entry = {};
        HeapLock(heaps[i]);
        while (HeapWalk(heaps[i], &entry) != FALSE) {
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) bytes += entry.cbData;
        }
        HeapUnlock(heaps[i]);
    }
    return bytes;
}

// Committed pages that are neither shared nor of a file.
std::uint64_t PrivateBytes() {
    std::uint64_t bytes = 0;
    MEMORY_BASIC_INFORMATION pages = {};
    const char* address = nullptr;
    while (VirtualQuery(address, &pages, sizeof(pages)) == sizeof(pages)) {
        if (pages.State == MEM_COMMIT && pages.Type == MEM_PRIVATE) bytes += pages.RegionSize;
        address = static_cast<const char*>(pages.BaseAddress) + pages.RegionSize;
    }
    return bytes;
}

std::uint64_t LogBytes() {
    WIN32_FILE_ATTRIBUTE_DATA file = {};
    GetFileAttributesExW((ProgramFolder() + L"events.log").c_str(), GetFileExInfoStandard, &file);
    return file.nFileSizeLow;
}

void TakeSample() {
    const Sample sample = {SimulatedTime(),   CurrentGdiCounts(), CountHandles(), HeapBytes(),
                           PrivateBytes(),    LogBytes(),         g_logged,       g_platform.monitorAnswers,
                           g_month->openings, g_month->steps};
    g_month->samples.push_back(sample);
    std::printf("%7.2f %10llu %8d %8d %6d %6d %8d %10.1f %10.1f %10.1f %12.1f\n",
                static_cast<double>(sample.time) / static_cast<double>(kDay),
                static_cast<unsigned long long>(sample.polls), sample.openings, sample.steps,
                sample.objects.gdiObjects, sample.objects.icons, sample.handles,
                static_cast<double>(sample.heap) / 1024, static_cast<double>(sample.memory) / 1024,
                static_cast<double>(sample.log) / 1024, static_cast<double>(sample.logged) / 1024);
    std::fflush(stdout);
}

LPARAM PositionOf(Region region, int distance) {
    const RECT rect = RegionRect(region);
    return MAKELPARAM((rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2 + distance);
}

void Press(Region region) {
    Send(WM_LBUTTONDOWN, MK_LBUTTON, PositionOf(region, 0));
    Send(WM_LBUTTONUP, 0, PositionOf(region, 0));
}

void Drag(Region region) {
    Send(WM_LBUTTONDOWN, MK_LBUTTON, PositionOf(region, 0));
    for (int step = 1; step <= kDragSteps; ++step) {
        Send(WM_MOUSEMOVE, MK_LBUTTON, PositionOf(region, 2 * step));
        g_month->steps += 1;
    }
    Send(WM_LBUTTONUP, 0, PositionOf(region, 0));
}

// Opens the popup, drags, and closes it two seconds later.
void UsePopup(int number) {
    constexpr Region kPresets[] = {Region::DayPreset, Region::EveningPreset, Region::NightPreset};
    Send(kMessageShowPopup);
    g_month->openings += 1;
    Press(kPresets[number % 3]);
    Drag(number % 2 == 0 ? Region::WarmthTrack : Region::BrightnessTrack);
    if (number % 5 == 0) Press(Region::Power);
    if (number % 50 == 7) {
        Press(Region::Gear);
        Press(Region::Support);
        Press(Region::Close);
    }
    DispatchQueue();
    RunUntil(SimulatedTime() + 2000);
    Send(WM_CLOSE);
}

// What happens to the machine between two uses of the popup.
void ChangeMachine(int number) {
    if (number % 40 == 20) {
        g_platform.monitorConnected = !g_platform.monitorConnected;
        Send(WM_DISPLAYCHANGE, 32, MAKELPARAM(1280, 720));
    }
    if (number % 80 == 40) {
        // The monitor does not hold the lock during sleep.
        if (g_app.pwmSafe && g_platform.monitorConnected) g_platform.monitorPercent = 60;
        Send(WM_POWERBROADCAST, PBT_APMRESUMEAUTOMATIC);
    }
    if (number % 60 == 30) {
        g_platform.menuChoice = kMenuLegacyMode;
        Send(kMessageTray, 0, WM_RBUTTONUP);
        g_platform.menuChoice = 0;
    }
    if (number % 100 == 50) Send(g_app.taskbarCreatedMessage);
    if (number % 90 == 45) Send(WM_GETOBJECT, 0, static_cast<DWORD>(OBJID_CLIENT));
}

void Live() {
    Send(kMessageShowPopup);
    Press(Region::PwmCard);
    RunUntil(1000);
    Send(WM_CLOSE);
    Require(g_app.pwmSafe && g_app.pwmLockConfirmed, "the mode cannot be switched on");
    g_platform.monitorMissesAnswers = g_month->monitorMissesAnswers;
    int number = 0;
    std::uint64_t nextSample = g_month->sampleEvery;
    for (std::uint64_t time = g_month->useEvery; time <= g_month->length; time += g_month->useEvery) {
        RunUntil(time);
        UsePopup(number);
        // The rare uses reach every change as well.
        ChangeMachine(g_month->useEvery == kUse ? number : 5 * number);
        number += 1;
        NoteProgress();
        if (!g_month->monitorMissesAnswers) RequireConsistentState();
        if (time >= nextSample) {
            TakeSample();
            nextSample += g_month->sampleEvery;
        }
    }
    // The last use may be earlier than the end of the last day.
    RunUntil(g_month->length);
    if (nextSample <= g_month->length) TakeSample();
    g_platform.monitorConnected = true;
    g_platform.monitorMissesAnswers = false;
}

// From the second sample on: the first sees what Windows and Wine create once.
void RequireFlat() {
    Require(g_month->samples.size() > 1, "too short to compare");
    if (Failed()) return;
    const Sample& first = g_month->samples[1];
    const Sample& last = g_month->samples.back();
    Require(last.objects.gdiObjects <= first.objects.gdiObjects, "more GDI objects");
    Require(last.objects.icons <= first.objects.icons, "more icons");
    Require(last.handles <= first.handles, "more handles");
    Require(last.heap <= first.heap + kHeapTolerance, "more memory in the heaps");
    Require(last.memory <= first.memory + kPrivateTolerance, "more private memory");
    for (const Sample& sample : g_month->samples)
        Require(sample.log <= kMaxLog, "events.log passes 4 MiB");
}

void LiveAndCompare() {
    ResetSimulatedTime();
    g_logged = 0;
    RunSessionWith(Live);
    RequireFlat();
}

bool Run(bool quick, std::uint64_t days, bool monitorMissesAnswers) {
    // The bad monitor fills the log's ring within minutes.
    const std::uint64_t length = quick && monitorMissesAnswers ? kDay / 8 : days * kDay;
    const bool rare = quick || monitorMissesAnswers;
    Month month = {length, std::min(kDay, length / 3), rare ? kRareUse : kUse, monitorMissesAnswers, {}};
    g_month = &month;
    const char* monitor =
        monitorMissesAnswers ? "a monitor that misses every second answer" : "a good monitor";
    std::printf("%s; memory and log in KiB\n%7s %10s %8s %8s %6s %6s %8s %10s %10s %10s %12s\n", monitor,
                "day", "answers", "openings", "steps", "GDI", "icons", "handles", "heap", "private",
                "events.log", "logged");
    std::fflush(stdout);
    std::snprintf(g_currentCase, sizeof(g_currentCase), "%s", monitor);
    Round round = {RandomSource(0, 0, 0), 0, {}};
    return RunRound(&round, LiveAndCompare);
}

}  // namespace

int main(int argc, char** argv) {
    bool quick = false;
    bool badOnly = false;
    std::uint64_t days = 30;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quick") == 0) quick = true;
        if (std::strcmp(argv[i], "--bad-only") == 0) badOnly = true;
        if (std::strcmp(argv[i], "--days") == 0 && i + 1 < argc) days = std::strtoull(argv[++i], nullptr, 10);
    }
    if (quick) days = 1;
    ReportCrashesAndHangs();
    // The simulated platform replaces GetProcAddress.
    g_write = reinterpret_cast<decltype(g_write)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"msvcrt.dll"), "fwrite")));
    InstallSimulatedPlatform();
    InstallSimulatedTime();
    ReplaceImport("fwrite", reinterpret_cast<void*>(&CountWrite));
    const bool good = badOnly || Run(quick, days, false);
    return Run(quick, days, true) && good ? 0 : 1;
}
