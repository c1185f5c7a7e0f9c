// Double of Magnification.dll, which Wine lacks. Records every call in C:\lab\magnification.log and returns
// the results that C:\lab\magnification.script defines. The applied matrix is stored in the file
// C:\lab\magnification.effect.PROCESS. The file is deleted when the process ends, even if it is killed, so
// the effect ends with the process. The gamma ramp does not change.
//
// The script is read at every call, so it may change while the program runs. It contains name=value lines:
//     initialize=ERROR        error of MagInitialize; 0 for success
//     effect=ERROR,ERROR,...  errors of successive effect calls; the last one applies to all later calls
//     hold=1                  an effect call is recorded and does not return before this line is removed
//     show=1                  also show the matrix's diagonal as a gamma ramp, for use on a real display
// When the script changes or the library is reloaded, the list starts at its first error. Without a script
// every call succeeds.
//
// The same file builds a variant for each missing entry point: see LAB_EXPORT_* in CMakeLists.txt.
#include <windows.h>

#include "script_file.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

namespace {

constexpr wchar_t kScriptPath[] = L"C:\\lab\\magnification.script";
constexpr wchar_t kLogPath[] = L"C:\\lab\\magnification.log";
constexpr wchar_t kEffectPath[] = L"C:\\lab\\magnification.effect";
constexpr int kMatrixCells = 25;
constexpr float kIdentity[kMatrixCells] = {1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1,
                                           0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1};
// Arbitrary: the real library's error for a call before MagInitialize is not documented.
constexpr DWORD kNotInitialized = ERROR_NOT_READY;
// Wine refuses a channel that does not rise and one that rises at its last entry only. At this factor the
// last entry is 32, which is still displayed as black.
constexpr double kMinFactor = 32.0 / 65535.0;
// The period with which the script is read while it holds a call.
constexpr DWORD kHoldCheckMs = 10;

HANDLE g_effect = INVALID_HANDLE_VALUE;
int g_initialized = 0;
int g_effectCalls = 0;
char g_script[4096] = {};

void ReadScript() {
    char text[sizeof(g_script)] = {};
    ReadScriptFile(kScriptPath, text);
    if (std::strcmp(text, g_script) != 0) {
        std::memcpy(g_script, text, sizeof(text));
        g_effectCalls = 0;
    }
}

// The number at `index` of a comma-separated list, or its last one; 0 if the script has no such line.
DWORD ScriptedNumber(const char* name, int index) {
    const char* position = std::strstr(g_script, name);
    if (!position) {
        return ERROR_SUCCESS;
    }
    char* end = nullptr;
    DWORD error = std::strtoul(position + std::strlen(name), &end, 10);
    for (; index > 0 && *end == ','; --index) {
        error = std::strtoul(end + 1, &end, 10);
    }
    return error;
}

void Record(const char* function, DWORD error, const float* matrix) {
    char line[1024];
    int length = std::snprintf(line, sizeof(line), "%s\t%d\t%lu\t", function, error == ERROR_SUCCESS, error);
    for (int i = 0; matrix && i < kMatrixCells; ++i) {
        length += std::snprintf(line + length, sizeof(line) - static_cast<size_t>(length), "%s%.9g",
                                i ? " " : "", static_cast<double>(matrix[i]));
    }
    line[length++] = '\n';
    const HANDLE file = CreateFileW(kLogPath, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_ALWAYS, 0, nullptr);
    DWORD written = 0;
    WriteFile(file, line, static_cast<DWORD>(length), &written, nullptr);
    CloseHandle(file);
}

void ShowDiagonalAsRamp(double red, double green, double blue) {
    static WORD ramp[3][256];
    const double factors[3] = {red, green, blue};
    for (int channel = 0; channel < 3; ++channel) {
        const double factor = std::clamp(factors[channel], kMinFactor, 1.0);
        for (int i = 0; i < 256; ++i) {
            ramp[channel][i] = static_cast<WORD>(i * 257 * factor + 0.5);
        }
    }
    const HDC screen = GetDC(nullptr);
    SetDeviceGammaRamp(screen, ramp);
    ReleaseDC(nullptr, screen);
}

// Writes the file in one call, so that a reader never sees parts of two matrices.
void ApplyMatrix(const float* matrix) {
    if (g_effect == INVALID_HANDLE_VALUE) {
        wchar_t path[MAX_PATH] = {};
        wsprintfW(path, L"%s.%lu", kEffectPath, GetCurrentProcessId());
        g_effect =
            CreateFileW(path, GENERIC_WRITE | DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                        nullptr, CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    }
    SetFilePointer(g_effect, 0, nullptr, FILE_BEGIN);
    DWORD written = 0;
    WriteFile(g_effect, matrix, kMatrixCells * sizeof(float), &written, nullptr);
    if (ScriptedNumber("show=", 0) != 0) {
        ShowDiagonalAsRamp(static_cast<double>(matrix[0]), static_cast<double>(matrix[6]),
                           static_cast<double>(matrix[12]));
    }
}

BOOL Finish(DWORD error) {
    SetLastError(error);
    return error == ERROR_SUCCESS;
}

}  // namespace

#ifdef LAB_EXPORT_INITIALIZE
extern "C" __declspec(dllexport) BOOL WINAPI MagInitialize() {
    ReadScript();
    const DWORD error = ScriptedNumber("initialize=", 0);
    Record("MagInitialize", error, nullptr);
    g_initialized += error == ERROR_SUCCESS;
    return Finish(error);
}
#endif

#ifdef LAB_EXPORT_UNINITIALIZE
extern "C" __declspec(dllexport) BOOL WINAPI MagUninitialize() {
    const DWORD error = g_initialized > 0 ? ERROR_SUCCESS : kNotInitialized;
    Record("MagUninitialize", error, nullptr);
    if (g_initialized > 0 && --g_initialized == 0) {
        ApplyMatrix(kIdentity);
    }
    return Finish(error);
}
#endif

#ifdef LAB_EXPORT_EFFECT
extern "C" __declspec(dllexport) BOOL WINAPI MagSetFullscreenColorEffect(const float* matrix) {
    ReadScript();
    DWORD error = ScriptedNumber("effect=", g_effectCalls++);
    if (!matrix) {
        error = ERROR_INVALID_PARAMETER;
    } else if (g_initialized == 0) {
        error = kNotInitialized;
    }
    Record("MagSetFullscreenColorEffect", error, matrix);
    for (; ScriptedNumber("hold=", 0) != 0; ReadScript()) {
        Sleep(kHoldCheckMs);
    }
    if (error == ERROR_SUCCESS) {
        ApplyMatrix(matrix);
    }
    return Finish(error);
}
#endif
