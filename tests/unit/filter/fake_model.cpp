#include "filter/fake_model.h"

#include <gtest/gtest.h>

#include <string>

#include "filter/model/warmth.h"
#include "support/seam.h"

AMBREL_SEAM_SET(fake_model);

// Without this definition the linker takes a member of the standard library from an object of the program,
// which also contains the real model.
template class std::basic_string<wchar_t>;

FakeModel g_model;

AMBREL_REPLACE(void, IntensityToFilterRgb, (double intensity, double* red, double* green, double* blue)) {
    // The caller's initial values are neutral, so a model that writes nothing would not colour anything.
    EXPECT_EQ(*red, 1.0);
    EXPECT_EQ(*green, 1.0);
    EXPECT_EQ(*blue, 1.0);
    g_model.requestedIntensity = intensity;
    g_model.calls += 1;
    *red = g_model.red;
    *green = g_model.green;
    *blue = g_model.blue;
}
