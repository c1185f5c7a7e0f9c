// The expected colours were computed in exact rational arithmetic from the published formulas and rounded
// once.
#include <gtest/gtest.h>

#include <cmath>

#include "filter/model/warmth.h"

namespace {

constexpr double kClose = 1e-12;

struct Colour {
    double red = 1.0;
    double green = 1.0;
    double blue = 1.0;
};

Colour Raw(double kelvin) {
    Colour c;
    KelvinToRgb(kelvin, &c.red, &c.green, &c.blue);
    return c;
}

Colour Filter(double kelvin) {
    Colour c;
    KelvinToFilterRgb(kelvin, &c.red, &c.green, &c.blue);
    return c;
}

Colour Warmth(double intensity) {
    Colour c;
    IntensityToFilterRgb(intensity, &c.red, &c.green, &c.blue);
    return c;
}

void ExpectSame(const Colour& one, const Colour& other) {
    EXPECT_EQ(one.red, other.red);
    EXPECT_EQ(one.green, other.green);
    EXPECT_EQ(one.blue, other.blue);
}

struct Sample {
    double at;
    double red;
    double green;
    double blue;
};

void ExpectClose(const Sample& sample, const Colour& colour, double tolerance) {
    EXPECT_NEAR(colour.red, sample.red, tolerance) << "at " << sample.at;
    EXPECT_NEAR(colour.green, sample.green, tolerance) << "at " << sample.at;
    EXPECT_NEAR(colour.blue, sample.blue, tolerance) << "at " << sample.at;
}

}  // namespace

TEST(IntensityToKelvin, IsLinearFrom6500DownTo0) {
    EXPECT_EQ(IntensityToKelvin(0.0), 6500.0);
    EXPECT_EQ(IntensityToKelvin(0.25), 4875.0);
    EXPECT_EQ(IntensityToKelvin(0.5), 3250.0);
    EXPECT_EQ(IntensityToKelvin(0.385), 3997.5);
    EXPECT_EQ(IntensityToKelvin(1.0), 0.0);
}

TEST(IntensityToKelvin, ClampsTheIntensity) {
    EXPECT_EQ(IntensityToKelvin(-0.1), 6500.0);
    EXPECT_EQ(IntensityToKelvin(-1e300), 6500.0);
    EXPECT_EQ(IntensityToKelvin(1.0000001), 0.0);
    EXPECT_EQ(IntensityToKelvin(HUGE_VAL), 0.0);
}

TEST(KelvinToRgb, FollowsTheThreeBranchesOfTheLocus) {
    constexpr Sample samples[] = {
        {2000, 2.5223004689735808, 0.64648399699652248, 0.020048253792803037},
        {2001, 2.5211476028760424, 0.64680498155989663, 0.020263277662382},
        {2100, 2.4122827964145714, 0.67694296876650961, 0.042276496921930515},
        {2500, 2.0625048064025036, 0.77097498701606049, 0.14073949361353782},
        {2700, 1.9294669404408027, 0.80524760378162019, 0.19297266106368294},
        {3000, 1.7667626834955941, 0.84557018391462468, 0.27262824440441935},
        {3500, 1.5635499201013336, 0.89261918374414773, 0.40492910243139957},
        {4500, 1.3002767454353437, 0.94580768241453483, 0.65325726440353493},
        {5000, 1.2123183916359717, 0.96088919140053231, 0.76285328779918693},
        {6000, 1.0877816903921749, 0.97870764461412985, 0.95303977644699467},
        {6500, 1.0426330294200981, 0.98386347133398977, 1.0349047165935217},
        {6600, 1.0346025212961432, 0.98469442692414866, 1.0503187471403799},
        {8000, 0.94735710342817891, 0.99178868068979309, 1.2369320693599113},
        {10000, 0.87251762371548858, 0.99450626518342189, 1.4303698909935258},
        {15000, 0.78528501477400758, 0.99259715954144379, 1.7061268119614976},
        {20000, 0.74768761750571067, 0.98971110204381629, 1.8454154841821557},
        {25000, 0.72726148714141481, 0.98754219402340793, 1.9270416887386383},
    };
    for (const Sample& sample : samples)
        ExpectClose(sample, Raw(sample.at), kClose);
}

TEST(KelvinToRgb, TheLowBranchUses234358AndNotTheTextbookCoefficient) {
    // With 234358.9 the red of 2000 K would be 2.5222981296408453.
    EXPECT_NEAR(Raw(2000.0).red, 2.5223004689735808, 1e-9);
}

TEST(KelvinToRgb, At2222TheLowestBranchStillApplies) {
    // The branch above would give 2.2916816, 0.7098832, 0.0710894.
    ExpectClose({2222, 2.2917224673806023, 0.70986936614464091, 0.071105720513691156}, Raw(2222.0), kClose);
    ExpectClose({2222.5, 2.2912142156118245, 0.71000992411038066, 0.071209936480477534}, Raw(2222.5), kClose);
}

TEST(KelvinToRgb, At4000TheLowBranchesStillApply) {
    // The high branches would give 1.4143832 (of x) and 1.4148194 (of y) for red.
    ExpectClose({4000, 1.4147825699714895, 0.92387984012003532, 0.53331044726866905}, Raw(4000.0), kClose);
    ExpectClose({4000.5, 1.414284771269211, 0.92397364592461562, 0.53384698129245645}, Raw(4000.5), kClose);
}

TEST(KelvinToRgb, TheWhitePointIsAsPublished) {
    ExpectClose({6500, 1.04263, 0.98386, 1.03490}, Raw(6500.0), 0.000005);
}

TEST(KelvinToRgb, ClampsTheTemperatureTo2000And25000) {
    ExpectSame(Raw(1999.0), Raw(2000.0));
    ExpectSame(Raw(1667.0), Raw(2000.0));
    ExpectSame(Raw(1000.0), Raw(2000.0));
    ExpectSame(Raw(0.0), Raw(2000.0));
    ExpectSame(Raw(-5000.0), Raw(2000.0));
    ExpectSame(Raw(25001.0), Raw(25000.0));
    ExpectSame(Raw(1e9), Raw(25000.0));
    EXPECT_NE(Raw(24999.0).red, Raw(25000.0).red);
    EXPECT_NE(Raw(2001.0).red, Raw(2000.0).red);
}

TEST(KelvinToRgb, EachChannelStaysBetween0And4OverTheWholeRange) {
    for (double kelvin = 2000.0; kelvin <= 25000.0; kelvin += 23.0) {
        const Colour c = Raw(kelvin);
        for (const double channel : {c.red, c.green, c.blue}) {
            EXPECT_GE(channel, 0.0) << kelvin;
            EXPECT_LE(channel, 4.0) << kelvin;
        }
    }
}

TEST(KelvinToFilterRgb, IsRelativeTo6500AndCapped) {
    constexpr Sample samples[] = {
        {1000, 1, 0.65708710185161656, 0.019372076937472657},
        {2000, 1, 0.65708710185161656, 0.019372076937472657},
        {2400, 1, 0.76333986108867657, 0.11128502089876786},
        {3000, 1, 0.85943853852825991, 0.26343318378313979},
        {4000, 1, 0.93903256604026109, 0.51532323577005867},
        {5500, 1, 0.98730343165572321, 0.83350753487675222},
        {6499, 1, 0.99999125049563442, 0.99984955088154204},
        {7000, 0.96416722088450957, 1, 1},
        {25000, 0.69752392895696991, 1, 1},
    };
    for (const Sample& sample : samples)
        ExpectClose(sample, Filter(sample.at), kClose);
}

TEST(KelvinToFilterRgb, At6500IsExactlyWhite) {
    ExpectSame(Filter(6500.0), {1.0, 1.0, 1.0});
}

TEST(IntensityToFilterRgb, NeutralIsExactlyWhite) {
    ExpectSame(Warmth(0.0), {1.0, 1.0, 1.0});
}

TEST(IntensityToFilterRgb, TheWarmestEndIsExactlyPureRed) {
    ExpectSame(Warmth(1.0), {1.0, 0.0, 0.0});
}

TEST(IntensityToFilterRgb, ReturnsThePublishedSamples) {
    constexpr double kPublished = 0.00005;  // four decimals
    ExpectClose({0, 1, 1, 1}, Warmth(0.0), kPublished);
    ExpectClose({0.3846, 1.0000, 0.9390, 0.5153}, Warmth(1.0 - 4000.0 / 6500.0), kPublished);
    ExpectClose({0.5846, 1.0000, 0.8185, 0.1865}, Warmth(1.0 - 2700.0 / 6500.0), kPublished);
    ExpectClose({0.6923, 1.0000, 0.6571, 0.0194}, Warmth(0.6923), kPublished);
    ExpectClose({0.9, 1.0000, 0.1631, 0.0048}, Warmth(0.9), kPublished);
    ExpectClose({1, 1, 0, 0}, Warmth(1.0), kPublished);
}

TEST(IntensityToFilterRgb, ReturnsTheExactCurveBetweenTheSamples) {
    constexpr Sample samples[] = {
        {0.1, 1, 0.99279265597943089, 0.89558375827383763},
        {0.25, 1, 0.97332663831752653, 0.71155485747797309},
        {0.385, 1, 0.93890177852629686, 0.51471572080654482},
        {0.5, 1, 0.88591827554859781, 0.32765072672631512},
        {0.625, 1, 0.7711930369995581, 0.12049708511731196},
        {0.69, 1, 0.6619448663570241, 0.022504385484362139},
        {0.7, 1, 0.65587559750757773, 0.019336359670619193},
        {0.75, 1, 0.59644771598738044, 0.017584321790410973},
        {0.8, 1, 0.47195281090492347, 0.013913994260339733},
        {0.9, 1, 0.16310133906273089, 0.0048085127223232898},
        {0.95, 1, 0.046414476807745325, 0.0013683799502356199},
        {0.999, 1, 2.0776334403586638e-05, 6.1252267379892755e-07},
    };
    for (const Sample& sample : samples)
        ExpectClose(sample, Warmth(sample.at), kClose);
}

TEST(IntensityToFilterRgb, IsContinuousAcross2000Kelvin) {
    const double at2000 = 1.0 - 2000.0 / 6500.0;
    ASSERT_EQ(IntensityToKelvin(at2000), 2000.0);
    ExpectSame(Warmth(at2000), Filter(2000.0));

    const Colour warmer = Warmth(at2000 + 1e-9);
    const Colour cooler = Warmth(at2000 - 1e-9);
    EXPECT_NEAR(warmer.green, cooler.green, 1e-6);
    EXPECT_NEAR(warmer.blue, cooler.blue, 1e-6);
}

TEST(IntensityToFilterRgb, HalfwayThroughTheRedFadeIsHalfTheColourOf2000Kelvin) {
    // 1000 K: t = 0.5, s = 0.5.
    const Colour halfway = Warmth(1.0 - 1000.0 / 6500.0);
    EXPECT_NEAR(halfway.green, 0.65708710185161656 / 2.0, kClose);
    EXPECT_NEAR(halfway.blue, 0.019372076937472657 / 2.0, kClose);
    EXPECT_EQ(halfway.red, 1.0);
}

TEST(IntensityToFilterRgb, OutsideItsRangeTheIntensityIsItsNearestEnd) {
    ExpectSame(Warmth(-0.001), {1.0, 1.0, 1.0});
    ExpectSame(Warmth(-HUGE_VAL), {1.0, 1.0, 1.0});
    ExpectSame(Warmth(1.001), {1.0, 0.0, 0.0});
    ExpectSame(Warmth(HUGE_VAL), {1.0, 0.0, 0.0});
}

TEST(IntensityToFilterRgb, RedStaysFullAndGreenAndBlueOnlyFallOnTheWayToWarm) {
    Colour before = Warmth(0.0);
    for (int step = 1; step <= 1000; ++step) {
        const Colour now = Warmth(step / 1000.0);
        EXPECT_EQ(now.red, 1.0) << step;
        EXPECT_LE(now.green, before.green) << step;
        EXPECT_LE(now.blue, before.blue) << step;
        EXPECT_GE(now.green, 0.0) << step;
        EXPECT_GE(now.blue, 0.0) << step;
        before = now;
    }
}
