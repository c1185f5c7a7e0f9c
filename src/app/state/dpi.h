// Conversion between design units, in which the popup is laid out, and pixels of the popup's monitor.
#pragma once

// Design units (96 DPI) to pixels at the DPI in AppState, and back. A DPI of 0 is treated as 96.
int ScaleByDpi(int units);
int UnscaleForDpi(int pixels);
