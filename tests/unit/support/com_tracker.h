// Tracks every BSTR and VARIANT of the unit under test from allocation or initialisation to release.
#pragma once

#include <string>

#include "support/seam.h"
#include "win32/platform.h"

#include <oleauto.h>

AMBREL_USES_SEAMS(com_tracker);

// Resets the tracker; every allocation succeeds.
void StartComTracking();

// Fails the test if a string or variant has not been released. A release of one that is not tracked fails the
// test immediately.
void ExpectNoComLeaks();

// Makes only the allocation of that number fail, counted from 1 since StartComTracking; 0: none.
void LetAllocationFail(int number);

// The number of allocations since StartComTracking.
int AllocationsMade();

// Allocates a string that a fake returns in a VARIANT: the unit under test has to free it.
BSTR AllocateReturnedText(const std::wstring& text);

// The number of strings and variants that have not been released.
int TextsHeld();
int VariantsHeld();
