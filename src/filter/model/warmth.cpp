#include "filter/model/warmth.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kCoolestKelvin = 25000.0;
constexpr double kWarmestKelvin = 2000.0;    // the locus ends here; below it the colour fades to red
constexpr double kPublishedKelvin = 1667.0;  // lower limit of the published approximation

struct Chromaticity {
    double x;
    double y;
};

// The calibrated curve uses 234358.0 as the second coefficient of the low branch, not the published value.
double PlanckianX(double t) {
    const double t2 = t * t;
    const double t3 = t2 * t;
    if (t <= 4000.0) return (-266123900.0 / t3 - 234358.0 / t2) + 877.6956 / t + 0.17991;
    return (2107037.9 / t2 - 3025846900.0 / t3) + 222.6347 / t + 0.24039;
}

double PlanckianY(double t, double x) {
    const double x2 = x * x;
    const double x3 = x2 * x;
    if (t <= 2222.0) return -1.1063814 * x3 - 1.3481102 * x2 + 2.18555832 * x - 0.20219683;
    if (t <= 4000.0) return -0.9549476 * x3 - 1.37418593 * x2 + 2.09137015 * x - 0.16748867;
    return 3.081758 * x3 - 5.8733867 * x2 + 3.75112997 * x - 0.37001483;
}

Chromaticity PlanckianLocus(double kelvin) {
    const double x = PlanckianX(kelvin);
    return {x, PlanckianY(kelvin, x)};
}

// Fades without a kink at either end: 3t^2 - 2t^3.
double SmoothStep(double t) {
    return std::clamp((3.0 - 2.0 * t) * t * t, 0.0, 1.0);
}

double Mix(double from, double to, double weight) {
    return (to - from) * weight + from;
}

}  // namespace

double IntensityToKelvin(double intensity) {
    return (1.0 - std::clamp(intensity, 0.0, 1.0)) * kNeutralKelvin;
}

void KelvinToRgb(double kelvin, double* red, double* green, double* blue) {
    const double clamped = std::clamp(kelvin, kWarmestKelvin, kCoolestKelvin);
    const Chromaticity c = PlanckianLocus(std::clamp(clamped, kPublishedKelvin, kCoolestKelvin));
    const double x = c.x / c.y;
    const double z = (1.0 - c.x - c.y) / c.y;
    *red = std::clamp(3.2406 * x - 1.5372 - 0.4986 * z, 0.0, 4.0);
    *green = std::clamp(1.8758 - 0.9689 * x + 0.0415 * z, 0.0, 4.0);
    *blue = std::clamp(0.0557 * x - 0.204 + 1.057 * z, 0.0, 4.0);
}

void KelvinToFilterRgb(double kelvin, double* red, double* green, double* blue) {
    double whiteRed, whiteGreen, whiteBlue;
    KelvinToRgb(kNeutralKelvin, &whiteRed, &whiteGreen, &whiteBlue);
    KelvinToRgb(kelvin, red, green, blue);
    *red = std::clamp(*red / whiteRed, 0.0, 1.0);
    *green = std::clamp(*green / whiteGreen, 0.0, 1.0);
    *blue = std::clamp(*blue / whiteBlue, 0.0, 1.0);
}

void IntensityToFilterRgb(double intensity, double* red, double* green, double* blue) {
    const double kelvin = IntensityToKelvin(intensity);
    if (kelvin > kWarmestKelvin) {
        KelvinToFilterRgb(kelvin, red, green, blue);
        return;
    }
    KelvinToFilterRgb(kWarmestKelvin, red, green, blue);
    const double weight = SmoothStep(std::clamp(1.0 - kelvin / kWarmestKelvin, 0.0, 1.0));
    *red = std::clamp(Mix(*red, 1.0, weight), 0.0, 1.0);
    *green = std::clamp(Mix(*green, 0.0, weight), 0.0, 1.0);
    *blue = std::clamp(Mix(*blue, 0.0, weight), 0.0, 1.0);
}

double ClampBrightness(double brightness, bool allowExtremeDim) {
    return std::clamp(brightness, allowExtremeDim ? 0.0 : 0.1, 1.0);
}

FilterPreset RecognisePreset(double intensity) {
    for (const PresetRow& row : kPresets) {
        if (std::fabs(intensity - row.intensity) < kPresetTolerance) return row.preset;
    }
    return FilterPreset::None;
}
