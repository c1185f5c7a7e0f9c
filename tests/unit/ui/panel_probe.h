// A picture of the panel, read in design units.
#pragma once

#include "ui/expected_drawing.h"
#include "ui/panel_rendering.h"

struct Panel1x {
    Picture picture;
    std::uint32_t dpi;

    // The pixel in the middle of the unit.
    std::uint32_t At(int x, int y) const {
        const auto middle = [&](int unit) { return (ScaledTo(dpi, unit) + ScaledTo(dpi, unit + 1)) / 2; };
        return picture.At(middle(x), middle(y));
    }
};

inline Panel1x Render(const char* state, std::uint32_t dpi) {
    return {RenderPanel(StateNamed(state), dpi).picture, dpi};
}
