// The numbers of GDI objects and of icons and cursors of this process, as the system counts them.
#pragma once

#include <ostream>

struct GdiCounts {
    int gdiObjects;
    int icons;

    bool operator==(const GdiCounts&) const = default;
};

// Use no seam.
int CountGdiObjects();
GdiCounts CurrentGdiCounts();

// For the messages of a failing comparison.
void PrintTo(const GdiCounts& counts, std::ostream* out);
