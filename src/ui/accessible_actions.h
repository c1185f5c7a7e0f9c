// Actions that assistive technology requests: pressing a control or setting a slider's value. They are
// queued. The message loop performs them later, never during the request and never during an operation on the
// displays. Window thread only.
#pragma once

#include "ui/regions.h"

// Queues a click on the region. False if the queue is full or no message can be posted.
bool RequestPress(Region region);

// Queues a value for the slider of the region; the value is clamped as in a drag. False if the queue is full
// or no message can be posted.
bool RequestSliderValue(Region region, double value);

// Handles kMessageAccessibleActions: performs the queued requests, each as the click or the drag would be.
// One whose control is no longer shown, or is disabled by a message box, is dropped. During an operation on
// the displays the requests stay queued, and the end of the operation posts the message again.
void PerformAccessibleActions();
