#include "win32/system_library.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <string>

#include "store/temp_folder.h"
#include "support/seam.h"

namespace {

int g_freed = 0;

BOOL WINAPI CountingFreeLibrary(HMODULE module) {
    ++g_freed;
    return Real(&FreeLibrary)(module);
}

std::wstring PathOf(HMODULE module) {
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(module, path, MAX_PATH);
    return path;
}

std::wstring InSystemFolder(const wchar_t* name) {
    wchar_t folder[MAX_PATH] = {};
    GetSystemDirectoryW(folder, MAX_PATH);
    return std::wstring(folder) + L"\\" + name;
}

constexpr wchar_t kPlantedDll[] = L"ambrel_stranger.dll";

// A DLL with a unique name in the current folder, which an ordinary search finds.
struct PlantedDllInCurrentFolder {
    TempFolder folder;
    wchar_t previous[MAX_PATH] = {};

    PlantedDllInCurrentFolder() {
        GetCurrentDirectoryW(MAX_PATH, previous);
        EXPECT_TRUE(
            CopyFileW(InSystemFolder(L"version.dll").c_str(), folder.Child(kPlantedDll).c_str(), FALSE));
        SetCurrentDirectoryW(folder.path.c_str());
    }
    ~PlantedDllInCurrentFolder() { SetCurrentDirectoryW(previous); }
    PlantedDllInCurrentFolder(const PlantedDllInCurrentFolder&) = delete;
    PlantedDllInCurrentFolder& operator=(const PlantedDllInCurrentFolder&) = delete;
};

}  // namespace

AMBREL_SEAM(FreeLibrary, CountingFreeLibrary);

TEST(SystemLibrary, ADllOfTheSystemFolderIsLoadedFromThere) {
    const HMODULE module = LoadSystemLibrary(L"version.dll");
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(_wcsicmp(PathOf(module).c_str(), InSystemFolder(L"version.dll").c_str()), 0);
    FreeLibrary(module);
}

TEST(SystemLibrary, AMissingDllIsNullAndSetsTheLastError) {
    SetLastError(ERROR_SUCCESS);
    const HMODULE module = LoadSystemLibrary(L"ambrel_no_such.dll");
    const DWORD error = GetLastError();
    EXPECT_EQ(module, nullptr);
    EXPECT_EQ(error, static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
}

TEST(SystemLibrary, ADllNextToTheProgramIsNotLoaded) {
    const PlantedDllInCurrentFolder planted;

    // Windows' ordinary search finds it: without the restriction it would have been loaded.
    const HMODULE found = LoadLibraryW(kPlantedDll);
    EXPECT_NE(found, nullptr);
    if (found != nullptr) FreeLibrary(found);

    EXPECT_EQ(LoadSystemLibrary(kPlantedDll), nullptr);

    RestrictDllSearchToSystem32();
    EXPECT_EQ(LoadLibraryW(kPlantedDll), nullptr);
    EXPECT_EQ(LoadSystemLibrary(kPlantedDll), nullptr);
    const HMODULE ordinary = LoadLibraryW(L"version.dll");
    EXPECT_NE(ordinary, nullptr);
    FreeLibrary(ordinary);
}

TEST(SystemLibrary, AnEntryPointIsFoundByName) {
    using GetVersionFunction = LONG(WINAPI*)(OSVERSIONINFOW*);
    const SystemLibrary ntdll(L"ntdll.dll");
    EXPECT_NE(ntdll.Find<GetVersionFunction>("RtlGetVersion"), nullptr);
}

TEST(SystemLibrary, AMissingEntryPointIsNull) {
    using AnyFunction = void(WINAPI*)();
    const SystemLibrary ntdll(L"ntdll.dll");
    EXPECT_EQ(ntdll.Find<AnyFunction>("AmbrelNoSuchEntryPoint"), nullptr);
}

TEST(SystemLibrary, AMissingLibraryHasNoEntryPoints) {
    using AnyFunction = void(WINAPI*)();
    const SystemLibrary missing(L"ambrel_no_such.dll");
    EXPECT_EQ(missing.module, nullptr);
    EXPECT_EQ(missing.Find<AnyFunction>("RtlGetVersion"), nullptr);
}

TEST(SystemLibrary, ALibraryIsFreedOnceAtTheEndOfItsScope) {
    g_freed = 0;
    {
        const SystemLibrary version(L"version.dll");
        EXPECT_NE(version.module, nullptr);
        EXPECT_EQ(g_freed, 0);
    }
    EXPECT_EQ(g_freed, 1);
}

TEST(SystemLibrary, ALibraryThatWasNotLoadedIsNotFreed) {
    g_freed = 0;
    { const SystemLibrary missing(L"ambrel_no_such.dll"); }
    EXPECT_EQ(g_freed, 0);
}
