// Pictures in memory and in PNG files. PNG preserves every pixel.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;  // 0xRRGGBB, row by row from the top

    std::uint32_t At(int x, int y) const;  // 0xFF000000 outside the picture
};

// Describes the differences between `actual` and `expected` with their positions and number; empty if equal.
std::string Difference(const Picture& actual, const Picture& expected);

// Paths are as the build knows them, Linux or Windows. COM must be initialised. False on any failure; a file
// that cannot be read leaves the picture empty.
bool ReadPng(const std::string& path, Picture* picture);
bool WritePng(const std::string& path, const Picture& picture);
