// The message loop.
#pragma once

// Dispatches messages until WM_QUIT and returns its exit code, which is 0 unless another program posted it.
// Returns 1 if GetMessageW fails ten times in a row. Either way the window is destroyed and everything
// restored when the loop returns.
int RunMessageLoop();
