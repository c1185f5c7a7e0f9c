// Pictures in memory and in PNG files. PNG keeps every pixel as it is.
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

// The way from `actual` to `expected`, in words with the place and number of the differences; empty when
// equal.
std::string Difference(const Picture& actual, const Picture& expected);

// Paths are as the build knows them, Linux or Windows. COM must be initialised. False on any failure; a file
// that cannot be read leaves the picture empty.
bool ReadPng(const std::string& path, Picture* picture);
bool WritePng(const std::string& path, const Picture& picture);
