// Compares a piece of the program's work with its floor: the least that the platform can do it with. Both run
// alternately in short batches, so that the load of the machine affects both alike. One line of JSON per
// figure on standard output, for native.py.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "win32/platform.h"

constexpr double kNoGoal = -1.0;

struct Figure {
    std::string name;
    double goal = kNoGoal;  // of the ratio or, without a floor, of the value
    const char* unit = "us";
    bool exact = false;  // a number that is the same in every round
};

inline double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

inline double Microseconds() {
    LARGE_INTEGER now, frequency;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(now.QuadPart) * 1e6 / static_cast<double>(frequency.QuadPart);
}

// The number of rounds; bench.py sets it.
inline int Rounds() {
    const char* rounds = std::getenv("AMBREL_BENCH_ROUNDS");
    return rounds != nullptr ? std::max(1, std::atoi(rounds)) : 20;
}

// Work that is undone between two batches, outside the measured time.
using AfterBatch = void (*)();

// Microseconds of one of `repeats` executions. Work gets a running number, to vary its input.
template <typename Work>
double TimeOf(Work work, int repeats, AfterBatch after) {
    static int number = 0;
    const double start = Microseconds();
    for (int i = 0; i < repeats; ++i)
        work(++number);
    const double time = (Microseconds() - start) / repeats;
    if (after != nullptr) after();
    return time;
}

// As many repeats as take about 2 ms, at least one.
template <typename Work>
int RepeatsFor(Work work, AfterBatch after) {
    constexpr double kBatchTime = 2000.0;  // us
    const double first = TimeOf(work, 1, after);
    if (first >= kBatchTime) return 1;
    const double one = std::max(TimeOf(work, 1, after), 0.01);
    return std::clamp(static_cast<int>(kBatchTime / one), 1, 10000);
}

inline void PrintNumbers(const char* name, const std::vector<double>& numbers) {
    std::printf(", \"%s\": [", name);
    for (std::size_t i = 0; i < numbers.size(); ++i)
        std::printf(i == 0 ? "%.6g" : ", %.6g", numbers[i]);
    std::printf("]");
}

// Prints the value of each round and, unless the figure has no floor, the floor's.
inline void PrintFigure(const Figure& figure, const std::vector<double>& values,
                        const std::vector<double>& floors = {}) {
    std::printf("{\"name\": \"%s\", \"unit\": \"%s\"", figure.name.c_str(), figure.unit);
    if (figure.goal != kNoGoal) std::printf(", \"goal\": %.6g", figure.goal);
    if (figure.exact) std::printf(", \"exact\": true");
    PrintNumbers("values", values);
    if (!floors.empty()) PrintNumbers("floors", floors);
    std::printf("}\n");
    std::fflush(stdout);
}

// `time` and `floorTime` return the microseconds of one batch. A round is subject, floor, floor, subject, so
// that each follows each equally often. Returns the subject's time of each round.
template <typename Time, typename FloorTime>
std::vector<double> CompareTimes(const Figure& figure, Time time, FloorTime floorTime) {
    std::vector<double> times, floors;
    for (int round = 0; round < Rounds(); ++round) {
        const double before = time();
        const double floorBefore = floorTime();
        const double floorAfter = floorTime();
        // The geometric mean: the quotient of two is the mean of both orders' ratios.
        times.push_back(std::sqrt(before * time()));
        floors.push_back(std::sqrt(floorBefore * floorAfter));
    }
    PrintFigure(figure, times, floors);
    return times;
}

// CompareTimes of work that is short or whose first execution takes longer than the others.
template <typename Subject, typename Floor>
std::vector<double> Compare(const Figure& figure, Subject subject, Floor floor, AfterBatch after = nullptr) {
    const int repeats = RepeatsFor(floor, after);
    TimeOf(subject, 1, after);
    return CompareTimes(
        figure, [&] { return TimeOf(subject, repeats, after); },
        [&] { return TimeOf(floor, repeats, after); });
}
