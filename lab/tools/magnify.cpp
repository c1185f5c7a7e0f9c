#include "tool.h"

namespace {

// mingw-w64's header does not declare the full-screen functions.
struct ColorEffect {
    float transform[5][5];
};
using InitializeFunction = BOOL(WINAPI*)();
using SetEffectFunction = BOOL(WINAPI*)(const ColorEffect*);

struct Library {
    HMODULE module;
    InitializeFunction initialize;
    InitializeFunction uninitialize;
    SetEffectFunction setEffect;
};

Library LoadMagnification() {
    const HMODULE module = LoadLibraryExW(L"Magnification.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    const auto find = [module](const char* name) {
        return module ? reinterpret_cast<void*>(GetProcAddress(module, name)) : nullptr;
    };
    return {module, reinterpret_cast<InitializeFunction>(find("MagInitialize")),
            reinterpret_cast<InitializeFunction>(find("MagUninitialize")),
            reinterpret_cast<SetEffectFunction>(find("MagSetFullscreenColorEffect"))};
}

}  // namespace

// magnify RED GREEN BLUE [keep]: sets that colour (factors in thousandths) with Magnification.dll and reports
// the functions that the library exports and their results. With "keep" the effect stays applied and the
// library stays loaded.
int CallMagnification(const Arguments& arguments, Json& answer) {
    const Library library = LoadMagnification();
    std::vector<JsonField> found = {{"loaded", library.module != nullptr},
                                    {"initialize", library.initialize != nullptr},
                                    {"uninitialize", library.uninitialize != nullptr},
                                    {"effect", library.setEffect != nullptr}};
    if (library.initialize && library.uninitialize && library.setEffect) {
        ColorEffect effect = {};
        for (size_t channel = 0; channel < 3; ++channel) {
            effect.transform[channel][channel] = static_cast<float>(Number(arguments[channel])) / 1000.0F;
        }
        effect.transform[3][3] = effect.transform[4][4] = 1.0F;
        const BOOL ready = library.initialize();
        found.push_back({"initialize_error", ready ? 0 : GetLastError()});
        const BOOL applied = library.setEffect(&effect);
        found.push_back({"effect_error", applied ? 0 : GetLastError()});
        if (ready && arguments.size() < 4) {
            library.uninitialize();
        }
    }
    if (library.module && arguments.size() < 4) {
        FreeLibrary(library.module);
    }
    answer = JsonObject(found);
    return kToolOk;
}
