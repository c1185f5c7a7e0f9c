#include "ui/accessible_navigation.h"

#include <algorithm>

#include "app/state/dpi.h"
#include "ui/accessible_controls.h"

#include <oleacc.h>

namespace {

constexpr int kNone = -1;

bool Overlap(LONG low, LONG high, LONG otherLow, LONG otherHigh) {
    return low < otherHigh && otherLow < high;
}

// The distance to a control that lies in that direction, in design units; kNone if it does not.
LONG DistanceTo(const RECT& to, const RECT& from, LONG direction) {
    const bool sideways = direction == NAVDIR_LEFT || direction == NAVDIR_RIGHT;
    const bool inLine = sideways ? Overlap(to.top, to.bottom, from.top, from.bottom)
                                 : Overlap(to.left, to.right, from.left, from.right);
    if (!inLine) return kNone;
    LONG distance = kNone;
    switch (direction) {
        case NAVDIR_LEFT: distance = from.left - to.right; break;
        case NAVDIR_RIGHT: distance = to.left - from.right; break;
        case NAVDIR_UP: distance = from.top - to.bottom; break;
        case NAVDIR_DOWN: distance = to.top - from.bottom; break;
        default: break;
    }
    return std::max<LONG>(distance, kNone);
}

int NearestBeside(const ShownPanel& panel, int child, LONG direction) {
    int nearest = kNone;
    LONG least = 0;
    for (int i = 0; i < panel.count; ++i) {
        const LONG distance = DistanceTo(panel.controls[i].rect, panel.controls[child - 1].rect, direction);
        if (distance == kNone || (nearest != kNone && distance >= least)) continue;
        nearest = i + 1;
        least = distance;
    }
    return nearest;
}

}  // namespace

int ChildAtScreenPoint(LONG x, LONG y) {
    const POINT point = {x, y};
    RECT client = {};
    GetClientRect(g_app.mainWindow, &client);
    MapWindowPoints(g_app.mainWindow, nullptr, reinterpret_cast<POINT*>(&client), 2);
    if (!PtInRect(&client, point)) return kNone;
    const POINT unit = {UnscaleForDpi(x - client.left), UnscaleForDpi(y - client.top)};
    const Region region = HitTest(unit.x, unit.y);
    const ShownPanel panel = ReadShownPanel();
    for (int i = 0; i < panel.count; ++i) {
        const ShownControl& control = panel.controls[i];
        const bool hit = region != Region::None
                             ? control.region == region
                             : control.region == Region::None && PtInRect(&control.rect, unit);
        if (hit) return i + 1;
    }
    return CHILDID_SELF;
}

int NavigateFrom(int child, LONG direction) {
    const ShownPanel panel = ReadShownPanel();
    if (child > panel.count) return kNone;
    const bool fromPopup = child == CHILDID_SELF;
    switch (direction) {
        case NAVDIR_FIRSTCHILD: return fromPopup ? 1 : kNone;
        case NAVDIR_LASTCHILD: return fromPopup ? panel.count : kNone;
        case NAVDIR_NEXT: return fromPopup || child == panel.count ? kNone : child + 1;
        case NAVDIR_PREVIOUS: return child <= 1 ? kNone : child - 1;
        default: return fromPopup ? kNone : NearestBeside(panel, child, direction);
    }
}
