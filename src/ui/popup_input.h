// The mouse on the popup: slider drags and clicks. Positions are client pixels, as the messages give them.
#pragma once

// A press begins a slider's drag, without moving its value, or performs the action of the region under it.
void OnMouseDown(int x, int y);

// Moves the dragged slider by the way that the pointer has gone since the press. Only y counts.
void OnMouseMove(int x, int y);

// Ends a drag and has its value saved soon.
void OnMouseUp();

// The capture went elsewhere: the drag ends, and nothing is saved.
void OnCaptureLost();
