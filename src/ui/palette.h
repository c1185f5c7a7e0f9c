// The fixed dark palette, independent of the system's colours.
#pragma once

#include <cstdint>

#include "win32/platform.h"

// Converts 0xRRGGBB to a COLORREF (0x00BBGGRR).
constexpr COLORREF Hex(std::uint32_t rgb) {
    return ((rgb >> 16) & 0xFF) | (rgb & 0xFF00) | ((rgb & 0xFF) << 16);
}

constexpr COLORREF kColourBackground = Hex(0x0D0D0D);
constexpr COLORREF kColourHeader = Hex(0x191919);
constexpr COLORREF kColourDimmed = Hex(0x666666);  // title, gear, unselected text
constexpr COLORREF kColourGroove = Hex(0x1E1E1E);
constexpr COLORREF kColourHintUnlit = Hex(0x1E1E1E);
constexpr COLORREF kColourFillOff = Hex(0x282828);
constexpr COLORREF kColourThumbBarOff = Hex(0x505050);
constexpr COLORREF kColourThumbOutline = Hex(0x3C3C3C);
constexpr COLORREF kColourMajorTick = Hex(0x646464);
constexpr COLORREF kColourMinorTick = Hex(0x282828);
constexpr COLORREF kColourValueBoxRed = Hex(0xA00000);
constexpr COLORREF kColourValueBox = Hex(0x373737);
constexpr COLORREF kColourDivider = Hex(0x1C1C1C);
constexpr COLORREF kColourLowerArea = Hex(0x1A1A1A);
constexpr COLORREF kColourRed = Hex(0xFF0000);
constexpr COLORREF kColourAmber = Hex(0xFFD200);
constexpr COLORREF kColourGreen = Hex(0x00D67C);
constexpr COLORREF kColourRowSurface = Hex(0x161616);
constexpr COLORREF kColourRowOutline = Hex(0x2C2C2C);
constexpr COLORREF kColourText = Hex(0xFFFFFF);
constexpr COLORREF kColourBlack = Hex(0x000000);
