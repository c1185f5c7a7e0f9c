// Mouse input on the popup: drags of the sliders, and presses, whose actions are in ui/popup_actions.
// Positions are client pixels, as in the messages.
#pragma once

// A button press: starts a slider's drag without moving its value, or performs the action of the region under
// the pointer. First ends a drag whose release never arrived.
void OnMouseDown(int x, int y);

// Moves the dragged slider by the vertical distance since the press. Ignores x.
void OnMouseMove(int x, int y);

// Ends a drag and schedules a save.
void OnMouseUp();

// The mouse capture was lost: ends the drag without saving.
void OnCaptureLost();

// Ends a drag and schedules a save if the mouse button is no longer down because another window received the
// release.
void EndDragIfReleased();
