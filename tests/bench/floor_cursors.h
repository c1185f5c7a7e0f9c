// The floor of a tint of the system cursors.
#pragma once

#include "win32/platform.h"

// Creates `count` coloured cursors of `size` pixels with a mask and partial transparency.
void CreatePlainCursors(HCURSOR* cursors, int count, int size);

// Rebuilds each cursor from its own picture and sets it as the system cursor of its id.
void FloorReplaceCursors(const HCURSOR* cursors, const DWORD* ids, int count, int size);
