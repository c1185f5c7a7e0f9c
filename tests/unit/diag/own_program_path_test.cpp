// Whether an autostart entry names the running program.
#include <gtest/gtest.h>

#include <algorithm>

#include "support/seam.h"
#include "win32/own_path.h"

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

TEST(OwnProgramPath, IsEqualInAnyLetterCase) {
    g_module = L"C:\\Tools\\Ambrel.exe";
    EXPECT_TRUE(IsOwnProgramPath(L"C:\\Tools\\Ambrel.exe"));
    EXPECT_TRUE(IsOwnProgramPath(L"c:\\TOOLS\\aMBREL.EXE"));
}

TEST(OwnProgramPath, IsEqualInAnyCaseOfLettersOutsideAscii) {
    g_module = L"C:\\Zo\u00eb\\\u0416\\Ambrel.exe";
    EXPECT_TRUE(IsOwnProgramPath(L"C:\\ZO\u00cb\\\u0436\\AMBREL.EXE"));
    EXPECT_FALSE(IsOwnProgramPath(L"C:\\Zoe\\\u0416\\Ambrel.exe"));
}

TEST(OwnProgramPath, DiffersFromAnyOtherPath) {
    g_module = L"C:\\Tools\\Ambrel.exe";
    EXPECT_FALSE(IsOwnProgramPath(L"C:\\Tools\\Ambrel2.exe"));
    EXPECT_FALSE(IsOwnProgramPath(L"D:\\Tools\\Ambrel.exe"));
    EXPECT_FALSE(IsOwnProgramPath(L"C:\\Tools\\Ambrel.ex"));
    EXPECT_FALSE(IsOwnProgramPath(L"C:\\Tools\\Ambrel.exe "));
    EXPECT_FALSE(IsOwnProgramPath(L"\"C:\\Tools\\Ambrel.exe\""));
    EXPECT_FALSE(IsOwnProgramPath(L"C:\\Tools\\Ambrel.exe --switch"));
    EXPECT_FALSE(IsOwnProgramPath(L""));
}

TEST(OwnProgramPath, IgnoresNoCharacterAsALinguisticComparisonWould) {
    g_module = L"C:\\co-op\\Ambrel.exe";
    EXPECT_FALSE(IsOwnProgramPath(L"C:\\coop\\Ambrel.exe"));
}

TEST(OwnProgramPath, MayHave259Characters) {
    g_module = L"C:\\" + std::wstring(256, L'p');
    EXPECT_EQ(OwnProgramPath(), g_module);
    EXPECT_TRUE(IsOwnProgramPath(g_module));
}

TEST(OwnProgramPath, IsEmptyInsteadOfTruncated) {
    for (const std::size_t length : {257U, 400U}) {
        g_module = L"C:\\" + std::wstring(length, L'p');
        EXPECT_EQ(OwnProgramPath(), L"");
        EXPECT_FALSE(IsOwnProgramPath(g_module));
        EXPECT_FALSE(IsOwnProgramPath(g_module.substr(0, 259)));
        EXPECT_FALSE(IsOwnProgramPath(L"")) << "nothing is not this program";
    }
}
