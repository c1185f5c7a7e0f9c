#include "filter/filter_colour.h"

#include "app/state/app_state.h"

Rgb FilterColourOf(double intensity, double brightness) {
    Rgb colour;
    IntensityToFilterRgb(intensity, &colour.red, &colour.green, &colour.blue);
    return {colour.red * brightness, colour.green * brightness, colour.blue * brightness};
}

Rgb CurrentFilterColour() {
    FilterColour& cached = g_app.filterColour;
    if (cached.intensity != g_app.intensity || cached.brightness != g_app.brightness) {
        const Rgb colour = FilterColourOf(g_app.intensity, g_app.brightness);
        cached = {g_app.intensity, g_app.brightness, colour.red, colour.green, colour.blue};
    }
    return {cached.red, cached.green, cached.blue};
}
