// The popup's logical canvas in design units (96 DPI); the window is this size at its monitor's DPI.
#pragma once

constexpr int kCanvasWidth = 320;
constexpr int kCanvasHeight = 540;
constexpr int kHeaderHeight = 56;
