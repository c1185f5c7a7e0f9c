// A warmth model that returns a colour chosen by the test, so that the results of the pipelines are known
// exactly.
#pragma once

#include "support/seam.h"

AMBREL_USES_SEAMS(fake_model);

struct FakeModel {
    double red = 1.0;
    double green = 1.0;
    double blue = 1.0;
    double requestedIntensity = -1.0;  // of the last call
    int calls = 0;
};

extern FakeModel g_model;
