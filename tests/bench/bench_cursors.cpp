// A tint of all sixteen system cursors.
#include "app/state/app_state.h"
#include "filter/cursor_tint.h"
#include "floor_cursors.h"
#include "measure.h"
#include "replaced_cursors.h"

namespace {

constexpr DWORD kIds[kSystemCursorCount] = {32512, 32513, 32514, 32515, 32516, 32640, 32641, 32642,
                                            32643, 32644, 32645, 32646, 32648, 32649, 32650, 32651};

void MeasureTint(int size) {
    CreatePlainCursors(g_app.baseCursors, kSystemCursorCount, size);
    g_app.baseCursorsLoaded = true;
    const auto tint = [](int i) {
        g_app.intensity = 0.3 + 0.01 * (i % 10);
        TintSystemCursors();
    };
    const auto floor = [size](int) {
        FloorReplaceCursors(g_app.baseCursors, kIds, kSystemCursorCount, size);
    };
    Compare({"re-tint of all cursors, " + std::to_string(size) + " pixels", 1.15}, tint, floor,
            DestroyReplacedCursors);
    for (HCURSOR cursor : g_app.baseCursors)
        DestroyCursor(cursor);
}

}  // namespace

int main() {
    CollectReplacedCursors();
    g_app.filterOn = true;
    for (const int size : {32, 48, 64, 96})
        MeasureTint(size);
    return 0;
}
