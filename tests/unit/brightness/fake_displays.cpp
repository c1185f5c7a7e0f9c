#include "brightness/fake_displays.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "app/state/app_state.h"
#include "brightness/display_targets.h"
#include "store/settings.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_SEAM_SET(fake_displays);

std::vector<FakeDisplay> g_displays;
std::vector<DisplaySet> g_sets;
std::vector<DisplayTargetList> g_lists;
std::function<void(Moment)> g_whileWaiting;

namespace {

std::vector<const DisplayTargetList*> g_incompleteLists;

void Wait(Moment moment) {
    // The call may replace or clear g_whileWaiting.
    const std::function<void(Moment)> dispatch = g_whileWaiting;
    if (dispatch) dispatch(moment);
}

bool IsBeingFilled(const DisplayTargetList* list) {
    return std::find(g_incompleteLists.begin(), g_incompleteLists.end(), list) != g_incompleteLists.end();
}

void React(const std::wstring& name, std::uint32_t percent, bool* accepted) {
    for (FakeDisplay& display : g_displays) {
        if (!display.present || display.name != name) continue;
        *accepted = !display.refuses;
        if (!display.refuses && !display.ignores) display.percent = std::min(percent, display.maximumPercent);
        return;
    }
}

}  // namespace

AMBREL_REPLACE(void, EnumerateTargets, (DisplayTargetList * list)) {
    Record("enumerate");
    EXPECT_FALSE(IsBeingFilled(list)) << "a list that is being filled is filled again";
    EXPECT_TRUE(list->empty());
    g_incompleteLists.push_back(list);
    Wait(Moment::BeforeListing);
    // By index: displays may connect and disconnect during the wait.
    for (std::size_t i = 0; i < g_displays.size(); ++i) {
        const FakeDisplay display = g_displays[i];
        if (display.present) list->push_back({display.kind, display.name, 0, 100, display.percent});
        if (i == 0) Wait(Moment::DuringListing);
    }
    Wait(Moment::AfterListing);
    g_incompleteLists.pop_back();
    g_lists.push_back(*list);
}

AMBREL_REPLACE(void, CountTargets, (const DisplayTargetList& list)) {
    Record("count");
    EXPECT_FALSE(IsBeingFilled(&list)) << "a list that is being filled is counted";
    std::int32_t full = 0;
    bool builtInOnly = !list.empty();
    for (const DisplayTarget& target : list) {
        if (target.percent == 99 || target.percent == 100) full += 1;
        if (target.kind != TargetKind::WmiPanel) builtInOnly = false;
    }
    g_app.pwmTargetsPresent = !list.empty();
    g_app.pwmTargetCount = static_cast<std::int32_t>(list.size());
    g_app.pwmTargetsAt100 = full;
    g_app.pwmBuiltInOnly = builtInOnly;
}

AMBREL_REPLACE(bool, SetTargetBrightness, (const DisplayTarget& target, std::uint32_t percent)) {
    // A dispatched message may free the target.
    const std::wstring name = target.name;
    Record(Narrow(name), " := ", percent);
    g_sets.push_back({name, percent});
    Wait(Moment::BeforeSet);
    bool accepted = false;
    React(name, percent, &accepted);
    Wait(Moment::AfterSet);
    return accepted;
}

AMBREL_REPLACE(void, SaveSettings, ()) {
    Record(g_app.pwmSafe ? "save on" : "save off");
}

void StartWithoutDisplays() {
    g_app = AppState{};
    g_app.mainWindow = MakeHandle<HWND>(0x1234);
    g_displays.clear();
    g_sets.clear();
    g_lists.clear();
    g_whileWaiting = nullptr;
    g_incompleteLists.clear();
    g_calls.clear();
}

FakeDisplay& Display(const std::wstring& name) {
    for (FakeDisplay& display : g_displays) {
        if (display.name == name) return display;
    }
    ADD_FAILURE() << "there is no display " << Narrow(name);
    static FakeDisplay none;
    return none;
}
