// The number of this process's open handles. Counts in the system's list of all handles, because
// GetProcessHandleCount returns 0 under Wine.
#pragma once

int CountHandles();
