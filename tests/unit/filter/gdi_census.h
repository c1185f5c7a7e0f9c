// How many GDI objects and how many icons and cursors this process has, as the system counts them.
#pragma once

#include <ostream>

struct GdiCensus {
    int gdiObjects;
    int icons;

    bool operator==(const GdiCensus&) const = default;
};

// Takes part in no seam.
GdiCensus TakeGdiCensus();

// For the messages of a failing comparison.
void PrintTo(const GdiCensus& census, std::ostream* out);
