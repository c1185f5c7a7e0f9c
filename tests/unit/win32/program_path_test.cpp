#include "win32/program_path.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/seam.h"

namespace {

std::wstring g_module;

DWORD WINAPI FakeGetModuleFileName(HMODULE module, wchar_t* path, DWORD capacity) {
    EXPECT_EQ(module, nullptr);
    const std::size_t length = std::min<std::size_t>(g_module.size(), capacity);
    std::copy_n(g_module.begin(), length, path);
    if (length < capacity) path[length] = L'\0';
    return static_cast<DWORD>(length);
}

}  // namespace

AMBREL_SEAM(GetModuleFileNameW, FakeGetModuleFileName);

TEST(ProgramPath, IsEqualInAnyLetterCase) {
    g_module = L"C:\\Tools\\Ambrel.exe";
    EXPECT_TRUE(IsProgramPath(L"C:\\Tools\\Ambrel.exe"));
    EXPECT_TRUE(IsProgramPath(L"c:\\TOOLS\\aMBREL.EXE"));
}

TEST(ProgramPath, IsEqualInAnyCaseOfLettersOutsideAscii) {
    g_module = L"C:\\Zo\u00eb\\\u0416\\Ambrel.exe";
    EXPECT_TRUE(IsProgramPath(L"C:\\ZO\u00cb\\\u0436\\AMBREL.EXE"));
    EXPECT_FALSE(IsProgramPath(L"C:\\Zoe\\\u0416\\Ambrel.exe"));
}

TEST(ProgramPath, DiffersFromAnyOtherPath) {
    g_module = L"C:\\Tools\\Ambrel.exe";
    EXPECT_FALSE(IsProgramPath(L"C:\\Tools\\Ambrel2.exe"));
    EXPECT_FALSE(IsProgramPath(L"D:\\Tools\\Ambrel.exe"));
    EXPECT_FALSE(IsProgramPath(L"C:\\Tools\\Ambrel.ex"));
    EXPECT_FALSE(IsProgramPath(L"C:\\Tools\\Ambrel.exe "));
    EXPECT_FALSE(IsProgramPath(L"\"C:\\Tools\\Ambrel.exe\""));
    EXPECT_FALSE(IsProgramPath(L"C:\\Tools\\Ambrel.exe --switch"));
    EXPECT_FALSE(IsProgramPath(L""));
}

TEST(ProgramPath, IgnoresNoCharacterAsALinguisticComparisonWould) {
    g_module = L"C:\\co-op\\Ambrel.exe";
    EXPECT_FALSE(IsProgramPath(L"C:\\coop\\Ambrel.exe"));
}

TEST(ProgramPath, MayHave259Characters) {
    g_module = L"C:\\" + std::wstring(256, L'p');
    EXPECT_EQ(ProgramPath(), g_module);
    EXPECT_TRUE(IsProgramPath(g_module));
}

TEST(ProgramPath, IsEmptyInsteadOfTruncated) {
    for (const std::size_t length : {257U, 400U}) {
        g_module = L"C:\\" + std::wstring(length, L'p');
        EXPECT_EQ(ProgramPath(), L"");
        EXPECT_FALSE(IsProgramPath(g_module));
        EXPECT_FALSE(IsProgramPath(g_module.substr(0, 259)));
        EXPECT_FALSE(IsProgramPath(L"")) << "nothing is not this program";
    }
}
