// The system cursors in the filter's colour. Neither pipeline changes hardware cursors, so an untinted arrow
// would stay white on a warm, dim screen. A failure is silent and leaves that cursor untinted. Window thread
// only.
#pragma once

// Replaces the system cursors with copies in the filter's colour. Does nothing if both warmth and brightness
// have changed by less than 0.002 since the last tint. If the filter is off or the program is terminating,
// restores the cursors.
void TintSystemCursors();

// Makes Windows reload its own cursors if they are tinted.
void RestoreSystemCursors();

// Makes Windows reload its own cursors in any case: an earlier run may have terminated with tinted cursors. A
// refusal is ignored; when the program terminates, it is tried once more.
void ResetSystemCursors();

// Restores the cursors and destroys the copies that they are tinted from.
void ReleaseCursorCopies();
