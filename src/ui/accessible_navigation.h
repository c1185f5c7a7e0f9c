// Where the controls of the popup are, for assistive technology: hit test and navigation by child id.
#pragma once

#include "win32/platform.h"

// The child at a point of the screen, in pixels: the control that a click there would reach, else the text
// there, else 0 for the popup itself; -1 outside the popup.
int ChildAtScreenPoint(LONG x, LONG y);

// The child that a NAVDIR_... direction leads to from a child of the current panel, or from the popup itself
// (0); -1 if there is none. Left, right, up and down lead to the nearest control beside, above or below.
int NavigateFrom(int child, LONG direction);
