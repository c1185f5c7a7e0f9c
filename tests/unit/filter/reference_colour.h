// A second computation of the filter's colour, in extended precision and with powers, from the published
// approximation of the Planckian locus.
#pragma once

#include <cmath>

struct ReferenceColour {
    long double red, green, blue;
};

inline long double Bounded(long double value, long double low, long double high) {
    return std::fmin(std::fmax(value, low), high);
}

inline ReferenceColour RawReferenceColour(long double t) {
    const long double x = t <= 4000.0L ? -0.2661239e9L * std::pow(t, -3.0L) -
                                             0.234358e6L * std::pow(t, -2.0L) + 0.8776956e3L / t + 0.179910L
                                       : -3.0258469e9L * std::pow(t, -3.0L) +
                                             2.1070379e6L * std::pow(t, -2.0L) + 0.2226347e3L / t + 0.240390L;
    const long double x2 = std::pow(x, 2.0L);
    const long double x3 = std::pow(x, 3.0L);
    long double y = 3.0817580L * x3 - 5.87338670L * x2 + 3.75112997L * x - 0.37001483L;
    if (t <= 4000.0L) y = -0.9549476L * x3 - 1.37418593L * x2 + 2.09137015L * x - 0.16748867L;
    if (t <= 2222.0L) y = -1.1063814L * x3 - 1.34811020L * x2 + 2.18555832L * x - 0.20219683L;
    const long double bigX = x / y;
    const long double bigZ = (1.0L - x - y) / y;
    return {Bounded(3.2406L * bigX - 1.5372L - 0.4986L * bigZ, 0.0L, 4.0L),
            Bounded(-0.9689L * bigX + 1.8758L + 0.0415L * bigZ, 0.0L, 4.0L),
            Bounded(0.0557L * bigX - 0.2040L + 1.0570L * bigZ, 0.0L, 4.0L)};
}

inline ReferenceColour ReferenceFilterColour(double intensity) {
    // In double precision like the program, because 4000 K is a boundary of the curve.
    const double kelvin = (1.0 - intensity) * 6500.0;
    const ReferenceColour white = RawReferenceColour(6500.0L);
    const ReferenceColour raw = RawReferenceColour(std::fmax(kelvin, 2000.0));
    ReferenceColour colour = {Bounded(raw.red / white.red, 0.0L, 1.0L),
                              Bounded(raw.green / white.green, 0.0L, 1.0L),
                              Bounded(raw.blue / white.blue, 0.0L, 1.0L)};
    if (kelvin < 2000.0) {
        const long double t = 1.0L - static_cast<long double>(kelvin) / 2000.0L;
        const long double s = 3.0L * std::pow(t, 2.0L) - 2.0L * std::pow(t, 3.0L);
        colour.red += (1.0L - colour.red) * s;
        colour.green -= colour.green * s;
        colour.blue -= colour.blue * s;
    }
    return colour;
}
