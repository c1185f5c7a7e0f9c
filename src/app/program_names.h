// The names under which Windows and the user know the program.
#pragma once

constexpr wchar_t kProgramTitle[] = L"Ambrel";  // the window's, and that of every message box
constexpr wchar_t kWindowClassName[] = L"Ambrel2Class";
constexpr wchar_t kSingleInstanceName[] = L"Global\\Ambrel2SingleInstance";
