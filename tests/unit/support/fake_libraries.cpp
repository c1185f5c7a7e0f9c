#include "support/fake_libraries.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/call_record.h"
#include "support/seam.h"

AMBREL_SEAM_SET(fake_libraries);

namespace {

struct Library {
    std::wstring name;
    LibraryFunctions functions;
};

std::vector<Library> g_libraries;

constexpr std::uintptr_t kFirstModule = 0xD110;

const Library* FindLibrary(HMODULE module) {
    const std::uintptr_t index = ValueOf(module) - kFirstModule;
    if (index >= g_libraries.size()) return nullptr;
    return &g_libraries[index];
}

HMODULE WINAPI FakeLoadLibraryEx(const wchar_t* name, HANDLE file, DWORD flags) {
    EXPECT_EQ(file, nullptr);
    EXPECT_EQ(flags, 0x800U) << "searched elsewhere than in System32";
    Record("load ", Narrow(name));
    for (std::size_t i = 0; i < g_libraries.size(); ++i) {
        if (g_libraries[i].name == name) return MakeHandle<HMODULE>(kFirstModule + i);
    }
    SetLastError(ERROR_MOD_NOT_FOUND);
    return nullptr;
}

FARPROC WINAPI FakeGetProcAddress(HMODULE module, const char* name) {
    const Library* library = FindLibrary(module);
    if (library == nullptr) return Real(&GetProcAddress)(module, name);
    const auto function = library->functions.find(name);
    return function != library->functions.end() ? function->second : nullptr;
}

BOOL WINAPI FakeFreeLibrary(HMODULE module) {
    if (const Library* library = FindLibrary(module)) {
        Record("free ", Narrow(library->name));
        return TRUE;
    }
    return Real(&FreeLibrary)(module);
}

}  // namespace

AMBREL_SEAM(LoadLibraryExW, FakeLoadLibraryEx);
AMBREL_SEAM(GetProcAddress, FakeGetProcAddress);
AMBREL_SEAM(FreeLibrary, FakeFreeLibrary);

void InstallLibrary(const std::wstring& name, const LibraryFunctions& functions) {
    g_libraries.push_back({name, functions});
}

void RemoveLibraries() {
    g_libraries.clear();
}
