/* The one place of the version: read by the resource compiler and by the program. The manifest's number is
   the manifest's own. */
#pragma once

#define AMBREL_VERSION "2.23"
#define AMBREL_VERSION_NUMBERS 2, 23, 0, 0
