#include "filter/model/displayed_values.h"

#include <cmath>

#include "filter/model/warmth.h"
#include "win32/format_text.h"

int RoundedKelvin(double intensity) {
    return static_cast<int>(std::lround(IntensityToKelvin(intensity)));
}

void FormatKelvinLabel(double intensity, wchar_t* label, std::size_t capacity) {
    const int kelvin = RoundedKelvin(intensity);
    if (kelvin >= 1000) {
        FormatTextInto(label, capacity, "%d,%03dK", kelvin / 1000, kelvin % 1000);
    } else {
        FormatTextInto(label, capacity, "%dK", kelvin);
    }
}

int TruncatedPercent(double brightness) {
    return static_cast<int>(brightness * 100.0);
}
