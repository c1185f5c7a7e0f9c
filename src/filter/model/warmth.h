// The warmth and brightness model: pure arithmetic, without Windows.
#pragma once

enum class FilterPreset { None, Day, Evening, Night };

// A colour, or the factor of each channel.
struct Rgb {
    double red = 1.0;
    double green = 1.0;
    double blue = 1.0;
};

struct PresetRow {
    FilterPreset preset;
    const wchar_t* label;  // on its button
    double intensity;
    double brightness;
};

constexpr double kNeutralKelvin = 6500.0;  // warmth intensity 0

// Converts a colour temperature to an intensity. Use no other expression: 1 - 4000/6500 and 2500/6500 differ
// in the last bit.
constexpr double PresetIntensity(double kelvin) {
    return 1.0 - kelvin / kNeutralKelvin;
}

inline constexpr PresetRow kPresets[] = {
    {FilterPreset::Day, L"DAY", PresetIntensity(4000.0), 1.0},
    {FilterPreset::Evening, L"EVENING", PresetIntensity(2700.0), 0.85},
    {FilterPreset::Night, L"NIGHT", PresetIntensity(0.0), 0.7},
};

constexpr double kPresetTolerance = 0.02;  // of the intensity, exclusive

// Colour temperature in kelvin of a warmth intensity, linear from 6500 at 0 to 0 at 1; clamps the intensity.
double IntensityToKelvin(double intensity);

// Raw linear RGB of a black body at `kelvin` (clamped to 2000..25000 K), each channel 0..4.
// Source: Kim et al., cubic approximation of the Planckian locus in CIE 1931 xy; sRGB matrix of IEC 61966-2-1
// (D65), rounded to four decimals. One coefficient differs from the source; see warmth.cpp.
void KelvinToRgb(double kelvin, double* red, double* green, double* blue);

// KelvinToRgb relative to 6500 K, each channel 0..1; (1, 1, 1) at 6500 K.
void KelvinToFilterRgb(double kelvin, double* red, double* green, double* blue);

// The filter's colour, each channel 0..1: a black body down to 2000 K, then a fade to pure red at 0 K.
void IntensityToFilterRgb(double intensity, double* red, double* green, double* blue);

// Software brightness between its floor (0.1, or 0.0 with extreme dim) and 1.0.
double ClampBrightness(double brightness, bool allowExtremeDim);

// The preset whose intensity is within the tolerance, regardless of brightness.
FilterPreset RecognisePreset(double intensity);
