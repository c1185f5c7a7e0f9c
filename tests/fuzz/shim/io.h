#pragma once

#include <cstdio>

#define _fileno fileno
int _commit(int file);
