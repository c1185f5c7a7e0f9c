// Counts the C++ allocations of a test program that links it.
#pragma once

int AllocationsSoFar();
int FreesSoFar();
