// Measures two pieces of work alternately, so that both run under the same load of the machine.
#pragma once

#include <algorithm>
#include <cstdio>
#include <vector>

#include "win32/platform.h"

inline double Microseconds() {
    LARGE_INTEGER now, frequency;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(now.QuadPart) * 1e6 / static_cast<double>(frequency.QuadPart);
}

template <typename Work>
double TimeOf(Work work, int repeats) {
    const double start = Microseconds();
    for (int i = 0; i < repeats; ++i)
        work(i);
    return (Microseconds() - start) / repeats;
}

inline double Median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2),
                     values.end());
    return values[values.size() / 2];
}

// Prints the median time of one repeat of each, in microseconds, and their ratio.
template <typename Work, typename Floor>
void Compare(const char* name, Work work, Floor floor, int repeats) {
    constexpr int kRounds = 21;
    std::vector<double> workTimes, floorTimes;
    for (int round = 0; round < kRounds; ++round) {
        workTimes.push_back(TimeOf(work, repeats));
        floorTimes.push_back(TimeOf(floor, repeats));
    }
    const double workTime = Median(workTimes), floorTime = Median(floorTimes);
    std::printf("%-44s %10.2f us   floor %10.2f us   ratio %6.2f\n", name, workTime, floorTime,
                workTime / floorTime);
}
