#include "filter/filter_colour.h"

#include "app/state/app_state.h"

Rgb FilterColourOf(double intensity, double brightness) {
    Rgb colour;
    IntensityToFilterRgb(intensity, &colour.red, &colour.green, &colour.blue);
    return {colour.red * brightness, colour.green * brightness, colour.blue * brightness};
}

Rgb CurrentFilterColour() {
    FilterColour& kept = g_app.filterColour;
    if (kept.intensity != g_app.intensity || kept.brightness != g_app.brightness) {
        const Rgb colour = FilterColourOf(g_app.intensity, g_app.brightness);
        kept = {g_app.intensity, g_app.brightness, colour.red, colour.green, colour.blue};
    }
    return {kept.red, kept.green, kept.blue};
}
