#include "ui/accessible_events.h"

#include <cwchar>

#include "ui/accessible_controls.h"

#include <oleacc.h>

namespace {

void Notify(DWORD event, LONG child) {
    NotifyWinEvent(event, g_app.mainWindow, OBJID_CLIENT, child);
}

bool SameText(const wchar_t* one, const wchar_t* other) {
    if (one == nullptr || other == nullptr) return one == other;
    return std::wcscmp(one, other) == 0;
}

AnnouncedPopup ReadPopup() {
    AnnouncedPopup popup;
    const ShownPanel panel = ReadShownPanel();
    popup.shown = true;
    popup.settings = g_app.panel == Panel::Settings;
    popup.count = panel.count;
    for (int i = 0; i < panel.count; ++i)
        popup.controls[i] = panel.controls[i].facts;
    return popup;
}

// Whether the strip has become a different kind of control.
bool HasOtherRole(const AnnouncedPopup& before, const AnnouncedPopup& now) {
    for (int i = 0; i < now.count; ++i) {
        if (before.controls[i].role != now.controls[i].role) return true;
    }
    return false;
}

void AnnounceControl(const ControlFacts& before, const ControlFacts& now, LONG child) {
    if (!SameText(before.name, now.name)) Notify(EVENT_OBJECT_NAMECHANGE, child);
    if (!SameText(before.description, now.description)) {
        Notify(EVENT_OBJECT_DESCRIPTIONCHANGE, child);
        Notify(EVENT_OBJECT_HELPCHANGE, child);  // The help text repeats the description.
    }
    if (before.state != now.state) Notify(EVENT_OBJECT_STATECHANGE, child);
    if (!SameText(before.value, now.value)) Notify(EVENT_OBJECT_VALUECHANGE, child);
}

}  // namespace

void AnnouncePopup(bool shown) {
    if (g_app.announcedPopup.shown == shown) return;
    g_app.announcedPopup = shown ? ReadPopup() : AnnouncedPopup{};
    Notify(shown ? EVENT_OBJECT_SHOW : EVENT_OBJECT_HIDE, CHILDID_SELF);
}

void AnnouncePanel() {
    if (!g_app.announcedPopup.shown) return;
    const AnnouncedPopup before = g_app.announcedPopup;
    const AnnouncedPopup now = ReadPopup();
    // Stored first: a client's hook in this process may dispatch messages.
    g_app.announcedPopup = now;
    const bool otherPanel = before.settings != now.settings || before.count != now.count;
    if (otherPanel || HasOtherRole(before, now)) Notify(EVENT_OBJECT_REORDER, CHILDID_SELF);
    if (otherPanel) return;
    for (int i = 0; i < now.count; ++i)
        AnnounceControl(before.controls[i], now.controls[i], i + 1);
}

void AnnounceEnabling() {
    if (!g_app.announcedPopup.shown) return;
    const int count = g_app.announcedPopup.count;
    for (LONG child = CHILDID_SELF; child <= count; ++child)
        Notify(EVENT_OBJECT_STATECHANGE, child);
}
