// The wording of the support report: pure text from the program's state and what was read of the machine.
// Every line ends with CR LF; labels carry their own padding.
#pragma once

#include <cstdint>
#include <string>

#include "app/state/app_state.h"
#include "diag/support_facts.h"

// "Ambrel Windows 2.23 - Feedback (0123456789abcdef, Windows 11 Pro b22631)"
std::wstring SupportSubjectText(const SupportFacts& facts);

// The whole report, from the mail's header to its last line.
std::wstring SupportBundleText(const AppState& state, const SupportFacts& facts);

// A duration in ms in days, hours and minutes, in two smaller units, or in seconds: "1d 0h 0m", "3h 0m", "1m
// 1s", "59s".
std::wstring UptimeText(std::uint64_t elapsed);
