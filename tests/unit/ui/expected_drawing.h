// The lines of gdi_recorder.h, built from literal design units and 0xRRGGBB colours: the popup's design,
// computed without the program's drawing code.
#pragma once

#include <cstdint>
#include <string>

#include "ui/gdi_recorder.h"

struct Rect {
    int left, top, right, bottom;
};

// Design units to device pixels, rounded half up; a DPI of 0 is treated as 96.
int ScaledTo(std::uint32_t dpi, int units);

std::string Fill(Rect rect, std::uint32_t colour);
std::string Round(Rect rect, int corner, const std::string& pen, const std::string& fill);
std::string Outline(Rect rect, int corner, std::uint32_t colour);  // one-unit pen, not filled
std::string Stroke(Rect ends, int width, std::uint32_t colour);    // from left, top to right, bottom
std::string Gradient(Rect rect, std::uint32_t top, std::uint32_t bottom);
std::string Clip(Rect rect, int radius, std::uint32_t dpi);
std::string Text(const std::string& text, const char* font, std::uint32_t colour, Rect rect,
                 const char* alignment);

constexpr char kTopLeft[] = "left top";
constexpr char kLeft[] = "left middle";
constexpr char kRight[] = "right middle";
constexpr char kCentre[] = "centre middle";
constexpr char kTopCentre[] = "centre top";

Drawing operator+(Drawing first, const Drawing& second);

Drawing RoundedGradient(Rect rect, int radius, std::uint32_t top, std::uint32_t bottom, std::uint32_t dpi);

struct ExpectedSlider {
    int cx;
    double value;
    bool red;  // the accent: pure red or white
    bool active;
    const char* caption;
    std::string text;
    int boxWidth;
};

Drawing SliderDrawing(const ExpectedSlider& slider, std::uint32_t dpi);

// The greys of the thumb's 28 rows, computed independently in single precision.
inline constexpr int kThumbGreys[28] = {89, 85, 81, 77, 73, 69, 65, 61, 57, 55, 54, 53, 52, 51,
                                        51, 50, 49, 48, 47, 46, 46, 49, 51, 53, 55, 57, 59, 61};
