// Linked into a test program, counts everything that it allocates in C++.
#pragma once

int AllocationsSoFar();
