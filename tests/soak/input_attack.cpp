// Attacks the shipped objects with random input on the simulated platform.
//
//     input_attack [--quick] [--only PART] [--count N] [--seed S] [--round R]
//
// Prints the seed, one row for each part, and for a fault the round that repeats it.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "faults/handle_count.h"
#include "faults/session.h"
#include "faults/simulated_platform.h"
#include "soak/attack.h"
#include "support/gdi_counts.h"

namespace {

struct Part {
    const char* name;
    const char* unit;
    int quick;
    int full;
    int perRound;
    void (*attack)();
};

constexpr Part kParts[] = {
    {"messages", "messages", 4000, 1000000, 500, AttackWithMessages},
    {"mouse", "sequences", 600, 100000, 100, AttackWithMouse},
    {"painting", "frames", 40, 5000, 8, AttackPainting},
    {"settings", "files", 60, 20000, 12, AttackSettings},
    {"log", "files", 30, 5000, 6, AttackLog},
    {"registry", "machines", 30, 5000, 6, AttackRegistry},
    {"clipboard", "owners", 20, 2000, 4, AttackClipboard},
};

constexpr int kWarmUpRounds = 2;  // Windows and Wine create cached objects once

struct Options {
    bool quick = false;
    const char* only = nullptr;
    int count = 0;
    std::uint64_t seed = 0;
    int round = -1;  // this round alone
};

struct Held {
    GdiCounts objects;
    int handles;
};

Held CountHeld() {
    return {CurrentGdiCounts(), CountHandles()};
}

// Of this process; Wine's server is another one.
double ProcessorSeconds() {
    FILETIME created = {};
    FILETIME ended = {};
    ULARGE_INTEGER kernel = {};
    ULARGE_INTEGER user = {};
    FILETIME kernelTime = {};
    FILETIME userTime = {};
    GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernelTime, &userTime);
    kernel.LowPart = kernelTime.dwLowDateTime;
    kernel.HighPart = kernelTime.dwHighDateTime;
    user.LowPart = userTime.dwLowDateTime;
    user.HighPart = userTime.dwHighDateTime;
    return static_cast<double>(kernel.QuadPart + user.QuadPart) / 1e7;
}

bool RunNumberedRound(const Part& part, unsigned number, const Options& options, int steps) {
    const auto partNumber = static_cast<unsigned>(&part - kParts);
    Round round = {RandomSource(options.seed, partNumber, number), steps, {}};
    std::snprintf(g_currentCase, sizeof(g_currentCase), "%s: --only %s --seed %llu --round %u", part.name,
                  part.name, static_cast<unsigned long long>(options.seed), number);
    return RunRound(&round, part.attack);
}

// A leak grows with each round.
bool CheckHeld(const Part& part, int rounds, const Held& before) {
    const Held after = CountHeld();
    const bool leaks = after.objects.gdiObjects >= before.objects.gdiObjects + rounds ||
                       after.objects.icons >= before.objects.icons + rounds ||
                       after.handles >= before.handles + rounds;
    if (!leaks) return true;
    std::printf("FAULT: %s leaks: %d GDI objects, %d icons, %d handles more after %d rounds\n", part.name,
                after.objects.gdiObjects - before.objects.gdiObjects,
                after.objects.icons - before.objects.icons, after.handles - before.handles, rounds);
    return false;
}

bool RunPart(const Part& part, const Options& options) {
    const int total = options.count != 0 ? options.count : options.quick ? part.quick : part.full;
    const int rounds = (total + part.perRound - 1) / part.perRound;
    const double start = ProcessorSeconds();
    int failed = 0;
    int run = 0;
    Held before = CountHeld();
    for (int number = 0; number < rounds; ++number) {
        if (options.round >= 0 && number != options.round) continue;
        if (number == kWarmUpRounds) before = CountHeld();
        failed += RunNumberedRound(part, static_cast<unsigned>(number), options, part.perRound) ? 0 : 1;
        run += 1;
    }
    if (options.round < 0 && rounds > 2 * kWarmUpRounds && !CheckHeld(part, rounds - kWarmUpRounds, before))
        failed += 1;
    std::printf("%-10s %9d %-10s %7d rounds %5d failed %8.1f s of processor time\n", part.name,
                run * part.perRound, part.unit, run, failed, ProcessorSeconds() - start);
    std::fflush(stdout);
    return failed == 0;
}

Options ReadOptions(int argc, char** argv) {
    Options options;
    options.seed = GetTickCount64();
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quick") == 0) {
            options.quick = true;
            options.seed = 1;
        }
        if (i + 1 == argc) break;
        if (std::strcmp(argv[i], "--only") == 0) options.only = argv[++i];
        if (std::strcmp(argv[i], "--count") == 0) options.count = std::atoi(argv[++i]);
        if (std::strcmp(argv[i], "--seed") == 0) options.seed = std::strtoull(argv[++i], nullptr, 10);
        if (std::strcmp(argv[i], "--round") == 0) options.round = std::atoi(argv[++i]);
    }
    return options;
}

}  // namespace

int main(int argc, char** argv) {
    const Options options = ReadOptions(argc, argv);
    ReportCrashesAndHangs();
    InstallSimulatedPlatform();
    std::printf("seed %llu\n", static_cast<unsigned long long>(options.seed));
    std::fflush(stdout);
    bool good = true;
    for (const Part& part : kParts) {
        if (options.only == nullptr || std::strcmp(options.only, part.name) == 0)
            good = RunPart(part, options) && good;
    }
    return good ? 0 : 1;
}
