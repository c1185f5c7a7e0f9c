#include "ui/accessible_actions.h"

#include <algorithm>
#include <iterator>

#include "app/state/messages.h"
#include "app/state/timers.h"
#include "ui/popup_actions.h"
#include "ui/popup_input.h"

namespace {

bool Request(Region region, double value) {
    AccessibleActionQueue& queue = g_app.accessibleActions;
    if (queue.count == kMaxAccessibleActions) return false;
    if (!PostMessageW(g_app.mainWindow, kMessageAccessibleActions, 0, 0)) return false;
    queue.actions[queue.count++] = {region, value};
    return true;
}

AccessibleAction TakeFirst() {
    AccessibleActionQueue& queue = g_app.accessibleActions;
    const AccessibleAction first = queue.actions[0];
    std::copy(std::begin(queue.actions) + 1, std::begin(queue.actions) + queue.count,
              std::begin(queue.actions));
    --queue.count;
    return first;
}

void Perform(const AccessibleAction& action) {
    const Region region = action.region;
    if (!IsAvailable(region) || !IsWindowEnabled(g_app.mainWindow)) return;
    // Like a press, an action ends a drag.
    OnMouseUp();
    const Slider slider = SliderOf(region);
    if (slider == Slider::None) {
        PressRegion(region);
        return;
    }
    MoveSlider(slider, action.value);
    RestartTimer(TimerId::SaveSettings);
}

}  // namespace

bool RequestPress(Region region) {
    return Request(region, 0.0);
}

bool RequestSliderValue(Region region, double value) {
    return Request(region, value);
}

void PerformAccessibleActions() {
    // An action may dispatch messages, and so run this function again.
    while (g_app.accessibleActions.count != 0 && !g_app.pwmOperationRunning)
        Perform(TakeFirst());
}
