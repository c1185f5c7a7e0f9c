// The warmth model with an answer that the test chooses, so that what the pipelines make of it is known
// exactly.
#pragma once

#include "support/seam.h"

AMBREL_USES_SEAMS(fake_model);

struct FakeModel {
    double red = 1.0;
    double green = 1.0;
    double blue = 1.0;
    double askedIntensity = -1.0;  // of the last call
    int calls = 0;
};

extern FakeModel g_model;
