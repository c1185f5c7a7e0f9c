#include "filter/magnification.h"

#include <algorithm>
#include <utility>

#include "app/state/app_state.h"
#include "app/state/program_names.h"
#include "filter/model/warmth.h"
#include "win32/format_text.h"
#include "win32/system_library.h"

#include <magnification.h>

namespace {

constexpr std::size_t kBoxCapacity = 256;

// The matrix is applied to the row vector (R, G, B, A, 1): alpha and the constant pass through.
MAGCOLOREFFECT DiagonalMatrix(float red, float green, float blue) {
    MAGCOLOREFFECT effect = {};
    const float diagonal[] = {red, green, blue, 1.0F, 1.0F};
    for (int i = 0; i < 5; ++i)
        effect.transform[i][i] = diagonal[i];
    return effect;
}

// Clamped in double precision and only then narrowed.
float MatrixCell(double channel, double brightness) {
    return static_cast<float>(std::clamp(channel * brightness, 0.0, 1.0));
}

void ForgetModule() {
    FreeLibrary(g_app.magnificationModule);
    g_app.magnificationModule = nullptr;
}

// The box dispatches messages, and one of them may load the library anew: what is freed after it is this
// attempt's.
void GiveUp(const wchar_t* text, UINT icon) {
    HMODULE failed = std::exchange(g_app.magnificationModule, nullptr);
    MessageBoxW(nullptr, text, kProgramTitle, icon);
    FreeLibrary(failed);
}

template <typename Function>
void FindEntryPoint(Function* entryPoint, const char* name) {
    *entryPoint = reinterpret_cast<Function>(GetProcAddress(g_app.magnificationModule, name));
}

bool FindEntryPoints() {
    FindEntryPoint(&g_app.magInitialize, "MagInitialize");
    FindEntryPoint(&g_app.magUninitialize, "MagUninitialize");
    FindEntryPoint(&g_app.magSetFullscreenColorEffect, "MagSetFullscreenColorEffect");
    return g_app.magInitialize != nullptr && g_app.magUninitialize != nullptr &&
           g_app.magSetFullscreenColorEffect != nullptr;
}

}  // namespace

void InitMagnification() {
    if (g_app.useLegacyGamma || g_app.ending || IsMagnificationUsable()) return;
    ShutdownMagnification();

    wchar_t text[kBoxCapacity];
    g_app.magnificationModule = LoadSystemLibrary(L"Magnification.dll");
    if (g_app.magnificationModule == nullptr) {
        const DWORD error = GetLastError();
        FormatText(text, "Failed to load Magnification.dll\nError code: %d", static_cast<int>(error));
        MessageBoxW(nullptr, text, kProgramTitle, MB_ICONERROR);
        return;
    }
    if (!FindEntryPoints()) {
        GiveUp(L"Failed to get Magnification API functions.\n\nThis requires Windows 8 or later.",
               MB_ICONERROR);
        return;
    }
    if (g_app.magInitialize() == FALSE) {
        const DWORD error = GetLastError();
        FormatText(text, "MagInitialize failed.\nError code: %d", static_cast<int>(error));
        GiveUp(text, MB_ICONWARNING);
        return;
    }
    g_app.magnificationReady = true;
}

void ShutdownMagnification() {
    if (g_app.magnificationReady) {
        SetIdentityMatrix();
        if (g_app.magUninitialize != nullptr) g_app.magUninitialize();
        g_app.magnificationReady = false;
    }
    if (g_app.magnificationModule != nullptr) ForgetModule();
    g_app.magInitialize = nullptr;
    g_app.magUninitialize = nullptr;
    g_app.magSetFullscreenColorEffect = nullptr;
}

bool IsMagnificationUsable() {
    return g_app.magnificationReady && g_app.magSetFullscreenColorEffect != nullptr;
}

MatrixResult SetFilterMatrix() {
    double red = 1.0, green = 1.0, blue = 1.0;
    IntensityToFilterRgb(g_app.intensity, &red, &green, &blue);
    MAGCOLOREFFECT effect =
        DiagonalMatrix(MatrixCell(red, g_app.brightness), MatrixCell(green, g_app.brightness),
                       MatrixCell(blue, g_app.brightness));
    if (g_app.magSetFullscreenColorEffect(&effect) != FALSE) return {true, ERROR_SUCCESS};
    return {false, GetLastError()};
}

void SetIdentityMatrix() {
    if (!IsMagnificationUsable()) return;
    MAGCOLOREFFECT identity = DiagonalMatrix(1.0F, 1.0F, 1.0F);
    g_app.magSetFullscreenColorEffect(&identity);
}
