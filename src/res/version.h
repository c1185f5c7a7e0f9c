/* The version, for the resource compiler and the program. The version in the manifest is independent
   of it. */
#pragma once

#define AMBREL_VERSION "2.23"
#define AMBREL_VERSION_NUMBERS 2, 23, 0, 0
