// The names under which Windows and the user know the program.
#pragma once

constexpr wchar_t kProgramTitle[] = L"Ambrel";  // of the window and of every message box
constexpr wchar_t kWindowClassName[] = L"Ambrel2Class";
// The support address, as literals that can be concatenated with longer texts.
#define AMBREL_SUPPORT_ADDRESS L"support@ambrel.example"
#define AMBREL_SUPPORT_ADDRESS_CAPITALS L"SUPPORT@AMBREL.EXAMPLE"

constexpr wchar_t kSingleInstanceName[] = L"Global\\Ambrel2SingleInstance";
