// SetSystemCursor as Windows performs it: it takes ownership of the cursor and destroys the one that it
// replaces. Wine keeps both, so the benchmarks collect the cursors and destroy them outside the measured
// time.
#pragma once

void CollectReplacedCursors();
void DestroyReplacedCursors();
