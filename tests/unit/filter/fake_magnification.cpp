#include "filter/fake_magnification.h"

#include <gtest/gtest.h>

#include "app/state/app_state.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_SEAM_SET(fake_magnification);

FakeMagnification g_magnification;

namespace {

BOOL Succeed() {
    SetLastError(kUnrelatedError);
    return TRUE;
}

BOOL FailWith(DWORD error) {
    SetLastError(error);
    return FALSE;
}

BOOL WINAPI FakeInitialize() {
    Record("MagInitialize");
    return g_magnification.initializeError == 0 ? Succeed() : FailWith(g_magnification.initializeError);
}

BOOL WINAPI FakeUninitialize() {
    Record("MagUninitialize");
    return g_magnification.uninitializeError == 0 ? Succeed() : FailWith(g_magnification.uninitializeError);
}

DWORD NextEffectError() {
    if (g_magnification.effectErrors.empty()) return g_magnification.laterEffectErrors;
    const DWORD error = g_magnification.effectErrors.front();
    g_magnification.effectErrors.erase(g_magnification.effectErrors.begin());
    return error;
}

BOOL WINAPI FakeSetEffect(MAGCOLOREFFECT* effect) {
    g_magnification.seen.push_back(*effect);
    Record(IsIdentity(*effect) ? "identity matrix" : "matrix");
    const DWORD error = NextEffectError();
    return error == 0 ? Succeed() : FailWith(error);
}

HMODULE WINAPI FakeLoadLibraryExW(LPCWSTR name, HANDLE file, DWORD flags) {
    EXPECT_EQ(file, nullptr);
    EXPECT_EQ(flags, DWORD{LOAD_LIBRARY_SEARCH_SYSTEM32});
    Record("load ", Narrow(name));
    if (g_magnification.loadError != 0) {
        SetLastError(g_magnification.loadError);
        return nullptr;
    }
    g_magnification.modulesHeld += 1;
    Succeed();
    return FakeModule();
}

FARPROC WINAPI FakeGetProcAddress(HMODULE module, LPCSTR name) {
    if (module != FakeModule()) return Real(&GetProcAddress)(module, name);
    Record("find ", name);
    Succeed();
    const std::string wanted = name;
    if (wanted == "MagInitialize" && g_magnification.hasInitialize)
        return reinterpret_cast<FARPROC>(&FakeInitialize);
    if (wanted == "MagUninitialize" && g_magnification.hasUninitialize)
        return reinterpret_cast<FARPROC>(&FakeUninitialize);
    if (wanted == "MagSetFullscreenColorEffect" && g_magnification.hasSetEffect)
        return reinterpret_cast<FARPROC>(&FakeSetEffect);
    return nullptr;
}

BOOL WINAPI FakeFreeLibrary(HMODULE module) {
    if (module != FakeModule()) {
        if (module == nullptr) ADD_FAILURE() << "a module that was never loaded is freed";
        return TRUE;
    }
    Record("free");
    g_magnification.modulesHeld -= 1;
    return Succeed();
}

int WINAPI FakeMessageBoxW(HWND owner, LPCWSTR text, LPCWSTR title, UINT flags) {
    Record("box owner=", ValueOf(owner), " flags=", flags, " [", Narrow(title), "] ", Narrow(text));
    if (g_magnification.duringBox != nullptr) {
        void (*const act)() = g_magnification.duringBox;
        g_magnification.duringBox = nullptr;
        act();
    }
    Succeed();
    return IDOK;
}

}  // namespace

AMBREL_SEAM(LoadLibraryExW, FakeLoadLibraryExW);
AMBREL_SEAM(GetProcAddress, FakeGetProcAddress);
AMBREL_SEAM(FreeLibrary, FakeFreeLibrary);
AMBREL_SEAM(MessageBoxW, FakeMessageBoxW);

HMODULE FakeModule() {
    return MakeHandle<HMODULE>(0x4D414700);
}

void InstallFakeMagnification() {
    g_magnification.modulesHeld = 1;
    g_app.magnificationModule = FakeModule();
    g_app.magInitialize = &FakeInitialize;
    g_app.magUninitialize = &FakeUninitialize;
    g_app.magSetFullscreenColorEffect = &FakeSetEffect;
    g_app.magnificationReady = true;
}

bool IsIdentity(const MAGCOLOREFFECT& effect) {
    for (int row = 0; row < 5; ++row) {
        for (int column = 0; column < 5; ++column) {
            if (effect.transform[row][column] != (row == column ? 1.0F : 0.0F)) return false;
        }
    }
    return true;
}
