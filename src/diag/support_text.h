// Formats the support report from AppState and SupportFacts, without a call to Windows. Every line ends with
// CR LF.
#pragma once

#include <cstdint>
#include <string>

#include "app/state/app_state.h"
#include "diag/support_facts.h"

// "Ambrel Windows 2.23 - Feedback (0123456789abcdef, Windows 11 Pro b22631)"
std::wstring SupportSubjectText(const SupportFacts& facts);

// The whole report, including the address and the subject of the e-mail.
std::wstring SupportBundleText(const AppState& state, const SupportFacts& facts);

// Formats a duration in ms, beginning with its largest unit: "1d 0h 0m", "3h 0m", "1m 1s" or "59s".
std::wstring UptimeText(std::uint64_t elapsed);
