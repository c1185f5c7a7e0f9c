#include "app/state/dpi.h"

#include "app/state/app_state.h"

namespace {

int EffectiveDpi() {
    return static_cast<int>(g_app.dpi != 0 ? g_app.dpi : kDesignDpi);
}

}  // namespace

int ScaleByDpi(int units) {
    return MulDiv(units, EffectiveDpi(), static_cast<int>(kDesignDpi));
}

int UnscaleForDpi(int pixels) {
    return MulDiv(pixels, static_cast<int>(kDesignDpi), EffectiveDpi());
}
