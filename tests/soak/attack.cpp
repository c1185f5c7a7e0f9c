#include "soak/attack.h"

#include <cstdio>
#include <cstring>
#include <deque>

#include "faults/session.h"

Round* g_round = nullptr;

namespace {

constexpr std::size_t kStepsPrinted = 6;

std::deque<std::string> g_steps;
std::size_t g_caseLength = 0;  // of g_currentCase without the step

}  // namespace

RandomSource::RandomSource(std::uint64_t seed, unsigned part, unsigned round) {
    std::seed_seq sequence{static_cast<unsigned>(seed), static_cast<unsigned>(seed >> 32), part, round};
    engine_.seed(sequence);
}

void Require(bool holds, const std::string& fault) {
    if (!holds && g_round->fault.empty()) g_round->fault = fault;
}

void RecordStep(const std::string& step) {
    if (Failed()) return;
    // For the report of a crash or a hang.
    std::snprintf(g_currentCase + g_caseLength, sizeof(g_currentCase) - g_caseLength, ": %s", step.c_str());
    g_steps.push_back(step);
    if (g_steps.size() > kStepsPrinted) g_steps.pop_front();
}

bool RunRound(Round* round, void (*attack)()) {
    g_round = round;
    g_steps.clear();
    g_caseLength = std::strlen(g_currentCase);
    attack();
    NoteProgress();
    g_currentCase[g_caseLength] = '\0';
    if (!Failed()) return true;
    std::printf("FAULT: %s: %s\n", g_currentCase, round->fault.c_str());
    for (const std::string& step : g_steps)
        std::printf("    %s\n", step.c_str());
    std::fflush(stdout);
    return false;
}
