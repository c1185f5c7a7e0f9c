// Compares a piece of the program's work with its floor: the least that the platform can do it with. Both run
// alternately in short batches, so that the load of the machine affects both alike. One line of JSON per
// figure on standard output, for bench.py.
#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "win32/platform.h"

constexpr double kNoGoal = 0.0;

struct Figure {
    std::string name;
    double goal = kNoGoal;  // of the ratio or, without a floor, of the value
    const char* unit = "us";
};

struct Summary {
    double median;
    double spread;  // half the range of the middle half, as a share of the median
};

inline double Quantile(const std::vector<double>& sorted, double share) {
    return sorted[static_cast<std::size_t>(static_cast<double>(sorted.size() - 1) * share + 0.5)];
}

inline Summary Summarise(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const double median = Quantile(values, 0.5);
    const double range = Quantile(values, 0.75) - Quantile(values, 0.25);
    return {median, median > 0.0 ? range / 2.0 / median : 0.0};
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
    return rounds != nullptr ? std::max(1, std::atoi(rounds)) : 41;
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

inline void PrintOptional(const char* name, double number) {
    if (number > 0.0) {
        std::printf(", \"%s\": %.6g", name, number);
    } else {
        std::printf(", \"%s\": null", name);
    }
}

// `floor` and `ratio` are 0 for a figure without a floor.
inline void PrintFigure(const Figure& figure, double value, double floor, double ratio, double spread) {
    std::printf("{\"name\": \"%s\", \"unit\": \"%s\", \"value\": %.6g", figure.name.c_str(), figure.unit,
                value);
    PrintOptional("floor", floor);
    PrintOptional("ratio", ratio);
    PrintOptional("goal", figure.goal);
    std::printf(", \"spread\": %.4f}\n", spread);
    std::fflush(stdout);
}

// Prints the medians of both and the median of the rounds' ratios with its spread. Returns the subject's
// median in microseconds.
template <typename Subject, typename Floor>
double Compare(const Figure& figure, Subject subject, Floor floor, AfterBatch after = nullptr) {
    const int repeats = RepeatsFor(floor, after);
    TimeOf(subject, 1, after);
    std::vector<double> times, floors, ratios;
    for (int round = 0; round < Rounds(); ++round) {
        // The order changes from round to round: neither always follows the other.
        double time = 0.0;
        if (round % 2 == 0) time = TimeOf(subject, repeats, after);
        floors.push_back(TimeOf(floor, repeats, after));
        if (round % 2 != 0) time = TimeOf(subject, repeats, after);
        times.push_back(time);
        ratios.push_back(time / floors.back());
    }
    const Summary ratio = Summarise(ratios);
    const double value = Summarise(times).median;
    PrintFigure(figure, value, Summarise(floors).median, ratio.median, ratio.spread);
    return value;
}
