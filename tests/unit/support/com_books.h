// Every BSTR and VARIANT of the unit under test: what is allocated or initialised, and what is given back.
#pragma once

#include <string>

#include "support/seam.h"
#include "win32/platform.h"

#include <oleauto.h>

AMBREL_USES_SEAMS(com_books);

// Forgets everything and lets every allocation succeed.
void OpenComBooks();

// Whatever is still held, and whatever was given back that was not held, fails the test.
void CloseComBooks();

// The allocation of that number, from 1, and only that one, runs out of memory; 0: none.
void LetAllocationFail(int number);
int AllocationsMade();

// A text that the other side puts into a VARIANT: from then on the unit under test has to free it.
BSTR HandOutText(const std::wstring& text);

// How many are held now.
int TextsHeld();
int VariantsHeld();
