// The attack with random input. A part is split into rounds, each with its own seed, so that one round can be
// repeated without those before it.
#pragma once

#include <cstdint>
#include <random>
#include <string>

#include "win32/platform.h"

class RandomSource {
public:
    RandomSource(std::uint64_t seed, unsigned part, unsigned round);

    std::uint64_t Any() { return engine_(); }
    unsigned Below(unsigned end) { return static_cast<unsigned>(engine_() % end); }
    int Between(int first, int last) {
        return first + static_cast<int>(Below(static_cast<unsigned>(last - first + 1)));
    }
    bool OneIn(unsigned chance) { return Below(chance) == 0; }

private:
    std::mt19937_64 engine_;
};

struct Round {
    RandomSource random;
    int steps;
    std::string fault;  // the first property that did not hold; empty: none
};

// Runs a round that g_currentCase describes. Prints its fault and the last steps; false if there is one.
bool RunRound(Round* round, void (*attack)());

// The running round.
extern Round* g_round;

// Records the fault of the round if the property does not hold.
void Require(bool holds, const std::string& fault);
inline bool Failed() {
    return !g_round->fault.empty();
}

// Remembers a step, of which the last few are printed with a fault.
void RecordStep(const std::string& step);

// Runs a session whose message loop calls `attack` once, and which then quits. Screen, cursors and monitor
// must then be in their previous state.
void RunSessionWith(void (*attack)());

// Sends the message to the program's window.
LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0);

// Dispatches the queued messages. A queue that does not become empty is a fault.
void DispatchQueue();

// Sets the DPI as Windows does when the window moves to another monitor.
void MoveToMonitorOf(int dpi);

// The DPIs of Windows' scaling steps from 100 % to 250 %.
constexpr int kScalings[] = {96, 120, 144, 168, 192, 216, 240};

// The parts: one round each.
void AttackWithMessages();
void AttackWithMouse();
void AttackPainting();
void AttackSettings();
void AttackLog();
void AttackRegistry();
void AttackClipboard();
