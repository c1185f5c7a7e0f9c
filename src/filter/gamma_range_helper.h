// The program's elevated run, which removes the gamma range limit.
#pragma once

// The command-line switch of that run.
constexpr wchar_t kExpandGammaRangeSwitch[] = L"--expand-gamma-range";

// Removes the limit and reports the result in a message box. Returns the exit code: 0, or 1 if Windows
// refuses.
int RunGammaRangeHelper();
