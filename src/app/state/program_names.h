// The names under which Windows and the user know the program.
#pragma once

constexpr wchar_t kProgramTitle[] = L"Ambrel";  // the window's, and that of every message box
constexpr wchar_t kWindowClassName[] = L"Ambrel2Class";
// Where users write to, as a literal that longer texts can be joined with.
#define AMBREL_SUPPORT_ADDRESS L"support@ambrel.example"
#define AMBREL_SUPPORT_ADDRESS_CAPITALS L"SUPPORT@AMBREL.EXAMPLE"

constexpr wchar_t kSingleInstanceName[] = L"Global\\Ambrel2SingleInstance";
