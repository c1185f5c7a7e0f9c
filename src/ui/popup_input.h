// Mouse input on the popup: slider drags and clicks. Positions are client pixels, as in the messages.
#pragma once

#include "app/state/app_state.h"
#include "ui/regions.h"

// A button press: starts a slider's drag without moving its value, or performs the action of the region under
// the pointer. First ends a drag whose release never arrived.
void OnMouseDown(int x, int y);

// Performs the action of a clickable region. A press on a slider does nothing by itself.
void PressRegion(Region region);

// Sets a slider as a drag does: clamps the value, applies the filter and refreshes the popup. Does not save.
void MoveSlider(Slider slider, double value);

// Moves the dragged slider by the vertical distance since the press. Ignores x.
void OnMouseMove(int x, int y);

// Ends a drag and schedules a save.
void OnMouseUp();

// The mouse capture was lost: ends the drag without saving.
void OnCaptureLost();
