// Tracks the objects of the GDI recorder: existing objects and device contexts, and the selections.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "ui/gdi_recorder.h"
#include "win32/platform.h"

enum class Kind { Pen, Brush, Font, Bitmap, Region, Icon };

struct Object {
    Kind kind;
    std::string name;
    bool lasting;  // stock objects, defaults of a context, fonts and icons that live for the whole run
};

struct Context {
    std::map<Kind, std::uintptr_t> selected;
    std::map<Kind, std::uintptr_t> initial;
    std::string clip = "none";
    std::string textColour = "#000000";
    std::string brushColour = "#FFFFFF";  // of the context's own brush
    bool transparent = false;
    POINT position = {};
};

extern std::map<std::uintptr_t, Object> g_objects;
extern std::map<std::uintptr_t, Context> g_contexts;

template <typename Handle>
std::uintptr_t IdOf(Handle handle) {
    return reinterpret_cast<std::uintptr_t>(handle);
}

std::uintptr_t Make(Kind kind, const std::string& name, bool lasting = false);
std::uintptr_t MakeContext();
Context& ContextOf(HDC dc);

// The name of the selected object.
std::string NameOf(HDC dc, Kind kind);

void Problem(const std::string& text);
