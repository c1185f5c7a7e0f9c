#include "support/fake_libraries.h"

#include <gtest/gtest.h>
#include <winternl.h>

#include <vector>

#include "support/call_record.h"
#include "support/seam.h"

extern "C" __declspec(dllimport) NTSTATUS NTAPI
    LdrGetProcedureAddress(HMODULE module, const ANSI_STRING* name, ULONG ordinal, void** address);

namespace {

struct Library {
    std::wstring name;
    LibraryFunctions functions;
};

// The C runtime asks for functions before anything of ours is constructed: it meets a null pointer here.
std::vector<Library>* g_libraries = nullptr;

constexpr std::uintptr_t kFirstModule = 0xD110;

const Library* FindLibrary(HMODULE module) {
    const std::uintptr_t index = ValueOf(module) - kFirstModule;
    if (g_libraries == nullptr || index >= g_libraries->size()) return nullptr;
    return &(*g_libraries)[index];
}

// GetProcAddress itself is replaced, so Windows' own is not to be had.
FARPROC RealGetProcAddress(HMODULE module, const char* name) {
    void* address = nullptr;
    if (IS_INTRESOURCE(name)) {
        LdrGetProcedureAddress(module, nullptr, LOWORD(name), &address);
    } else {
        ANSI_STRING text = {};
        text.Length = static_cast<USHORT>(std::string_view(name).size());
        text.MaximumLength = static_cast<USHORT>(text.Length + 1);
        text.Buffer = const_cast<char*>(name);
        LdrGetProcedureAddress(module, &text, 0, &address);
    }
    return reinterpret_cast<FARPROC>(address);
}

HMODULE WINAPI FakeLoadLibraryEx(const wchar_t* name, HANDLE file, DWORD flags) {
    EXPECT_EQ(file, nullptr);
    EXPECT_EQ(flags, 0x800U) << "searched elsewhere than in System32";
    Record("load ", Narrow(name));
    for (std::size_t i = 0; g_libraries != nullptr && i < g_libraries->size(); ++i) {
        if ((*g_libraries)[i].name == name) return MakeHandle<HMODULE>(kFirstModule + i);
    }
    SetLastError(ERROR_MOD_NOT_FOUND);
    return nullptr;
}

FARPROC WINAPI FakeGetProcAddress(HMODULE module, const char* name) {
    const Library* library = FindLibrary(module);
    if (library == nullptr) return RealGetProcAddress(module, name);
    const auto function = library->functions.find(name);
    return function != library->functions.end() ? function->second : nullptr;
}

BOOL WINAPI FakeFreeLibrary(HMODULE module) {
    if (const Library* library = FindLibrary(module)) {
        Record("free ", Narrow(library->name));
        return TRUE;
    }
    const auto real = reinterpret_cast<decltype(&FreeLibrary)>(
        RealGetProcAddress(GetModuleHandleW(L"kernel32.dll"), "FreeLibrary"));
    return real(module);
}

}  // namespace

AMBREL_SEAM(LoadLibraryExW, FakeLoadLibraryEx);
AMBREL_SEAM(GetProcAddress, FakeGetProcAddress);
AMBREL_SEAM(FreeLibrary, FakeFreeLibrary);

void InstallLibrary(const std::wstring& name, const LibraryFunctions& functions) {
    static std::vector<Library> libraries;
    g_libraries = &libraries;
    libraries.push_back({name, functions});
}

void RemoveLibraries() {
    if (g_libraries != nullptr) g_libraries->clear();
}
