// SetSystemCursor as Windows performs it: it takes the cursor over and destroys the one that it replaces.
// Wine keeps both, so the benchmarks collect the cursors and destroy them outside the measured time.
#pragma once

void CollectReplacedCursors();
void DestroyReplacedCursors();
