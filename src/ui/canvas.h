// The popup's logical canvas in design units (96 DPI). The window has this size, scaled to its DPI.
#pragma once

constexpr int kCanvasWidth = 320;
constexpr int kCanvasHeight = 540;
constexpr int kHeaderHeight = 56;
