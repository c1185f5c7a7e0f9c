#include "ui/gdi_tracker.h"

#include <iterator>

#include "app/state/app_state.h"

GdiRecorder g_gdi;
std::map<std::uintptr_t, Object> g_objects;
std::map<std::uintptr_t, Context> g_contexts;

namespace {

std::uintptr_t g_next = 0;
std::uintptr_t g_screen = 0;

}  // namespace

std::uintptr_t Make(Kind kind, const std::string& name, bool lasting) {
    g_next += 4;
    g_objects[g_next] = {kind, name, lasting};
    return g_next;
}

void Problem(const std::string& text) {
    g_gdi.problems.push_back(text);
}

std::uintptr_t MakeContext() {
    g_next += 4;
    const std::uintptr_t id = g_next;
    Context& context = g_contexts[id];
    context.initial = {{Kind::Pen, Make(Kind::Pen, "default", true)},
                       {Kind::Brush, Make(Kind::Brush, "default", true)},
                       {Kind::Font, Make(Kind::Font, "default", true)},
                       {Kind::Bitmap, Make(Kind::Bitmap, "default", true)}};
    context.selected = context.initial;
    return id;
}

Context& ContextOf(HDC dc) {
    const auto found = g_contexts.find(IdOf(dc));
    if (found != g_contexts.end()) return found->second;
    Problem("a device context that is not there");
    static Context nowhere;
    return nowhere;
}

std::string NameOf(HDC dc, Kind kind) {
    return g_objects[ContextOf(dc).selected[kind]].name;
}

void ResetGdi() {
    static constexpr const char* roles[] = {"Title", "Caption", "Small",  "Value",
                                            "Label", "Preset",  "Toggle", "Glyph"};
    g_gdi = GdiRecorder{};
    g_objects.clear();
    g_contexts.clear();
    g_next = 0x10000;
    g_screen = MakeContext();
    for (std::size_t i = 0; i < std::size(roles); ++i) {
        g_app.fonts[i] = reinterpret_cast<HFONT>(Make(Kind::Font, roles[i], true));
    }
}

HDC ScreenContext() {
    return reinterpret_cast<HDC>(g_screen);
}

std::string ClipOf(HDC dc) {
    return ContextOf(dc).clip;
}

void SetClipOf(HDC dc, const std::string& clip) {
    ContextOf(dc).clip = clip;
}

Drawing GdiLeftovers() {
    Drawing leftovers = g_gdi.problems;
    for (const auto& [id, object] : g_objects) {
        if (!object.lasting) leftovers.push_back("not deleted: " + object.name);
    }
    for (const auto& [id, context] : g_contexts) {
        if (id != g_screen) leftovers.push_back("a context is not deleted");
        for (const auto& [kind, selected] : context.selected) {
            if (selected != context.initial.at(kind)) {
                leftovers.push_back("still selected: " + g_objects[selected].name);
            }
        }
    }
    return leftovers;
}

HICON NamedIcon(const std::string& name) {
    return reinterpret_cast<HICON>(Make(Kind::Icon, name, true));
}
