#include "filter/fake_model.h"

#include <gtest/gtest.h>

#include <string>

#include "filter/model/warmth.h"
#include "support/seam.h"

AMBREL_SEAM_SET(fake_model);

// Else the linker takes a member that the standard library needs from an object of the program, which brings
// the real model with it.
template class std::basic_string<wchar_t>;

FakeModel g_model;

AMBREL_REPLACE(void, IntensityToFilterRgb, (double intensity, double* red, double* green, double* blue)) {
    // The caller's own values are neutral: a model that wrote nothing would colour nothing.
    EXPECT_EQ(*red, 1.0);
    EXPECT_EQ(*green, 1.0);
    EXPECT_EQ(*blue, 1.0);
    g_model.askedIntensity = intensity;
    g_model.calls += 1;
    *red = g_model.red;
    *green = g_model.green;
    *blue = g_model.blue;
}
