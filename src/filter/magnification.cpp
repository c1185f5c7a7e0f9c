#include "filter/magnification.h"

#include <algorithm>
#include <utility>

#include "app/shell/notice_box.h"
#include "app/state/app_state.h"
#include "filter/filter_colour.h"
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

bool IsIdentity(const MAGCOLOREFFECT& filter) {
    return filter.transform[0][0] == 1.0F && filter.transform[1][1] == 1.0F && filter.transform[2][2] == 1.0F;
}

// Clamps in double precision before narrowing.
float MatrixCell(double factor) {
    return static_cast<float>(std::clamp(factor, 0.0, 1.0));
}

void UnloadModule() {
    FreeLibrary(g_app.magnificationModule);
    g_app.magnificationModule = nullptr;
}

// The box dispatches messages, and one of them may load the library again. Only the module of this attempt is
// freed afterwards.
void FailInitialisation(NoticeBox box, const wchar_t* text, UINT icon) {
    HMODULE failed = std::exchange(g_app.magnificationModule, nullptr);
    ShowNoticeBox(box, nullptr, text, icon);
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
        ShowNoticeBox(NoticeBox::LibraryMissing, nullptr, text, MB_ICONERROR);
        return;
    }
    if (!FindEntryPoints()) {
        FailInitialisation(NoticeBox::FunctionsMissing,
                           L"Failed to get Magnification API functions.\n\nThis requires Windows 8 or later.",
                           MB_ICONERROR);
        return;
    }
    if (g_app.magInitialize() == FALSE) {
        const DWORD error = GetLastError();
        FormatText(text, "MagInitialize failed.\nError code: %d", static_cast<int>(error));
        FailInitialisation(NoticeBox::InitializeFailed, text, MB_ICONWARNING);
        return;
    }
    g_app.magnificationReady = true;
}

void ShutdownMagnification() {
    if (g_app.magnificationReady) {
        SetIdentityMatrix();
        if (g_app.magUninitialize != nullptr) g_app.magUninitialize();
        g_app.magnificationReady = false;
        g_app.matrixApplied = false;
    }
    if (g_app.magnificationModule != nullptr) UnloadModule();
    g_app.magInitialize = nullptr;
    g_app.magUninitialize = nullptr;
    g_app.magSetFullscreenColorEffect = nullptr;
}

bool IsMagnificationUsable() {
    return g_app.magnificationReady && g_app.magSetFullscreenColorEffect != nullptr;
}

MatrixResult SetFilterMatrix() {
    const Rgb colour = CurrentFilterColour();
    MAGCOLOREFFECT effect =
        DiagonalMatrix(MatrixCell(colour.red), MatrixCell(colour.green), MatrixCell(colour.blue));
    if (g_app.magSetFullscreenColorEffect(&effect) == FALSE) return {false, GetLastError()};
    g_app.matrixApplied = !IsIdentity(effect);
    return {true, ERROR_SUCCESS};
}

bool SetIdentityMatrix() {
    if (!IsMagnificationUsable()) return false;
    MAGCOLOREFFECT identity = DiagonalMatrix(1.0F, 1.0F, 1.0F);
    if (g_app.magSetFullscreenColorEffect(&identity) == FALSE) return false;
    g_app.matrixApplied = false;
    return true;
}

void RemoveAppliedMatrix() {
    if (!g_app.matrixApplied || SetIdentityMatrix()) return;
    g_app.matrixApplied = false;
    if (g_app.magUninitialize == nullptr || g_app.magInitialize == nullptr) return;
    g_app.magUninitialize();
    g_app.magnificationReady = g_app.magInitialize() != FALSE;
}
