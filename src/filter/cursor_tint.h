// The system cursors in the filter's colour. Hardware cursors are composed beside both pipelines, so a white
// arrow would stay white on a warm, dim screen. Every failure is silent and costs one cursor its tint. Window
// thread only.
#pragma once

// Replaces the system cursors by copies in the filter's colour. Does nothing while neither warmth nor
// brightness has moved by 0.002 since the last tint. With the filter off, or at the program's
// end, it restores them.
void TintSystemCursors();

// Has Windows load its own cursors again, if they are tinted.
void RestoreSystemCursors();

// The same whatever is known: an earlier run may have ended with tinted cursors.
void ResetSystemCursors();

// Restores the cursors and frees the copies that tints are made from.
void ReleaseCursorCopies();
