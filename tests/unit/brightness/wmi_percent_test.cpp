// Conversion of a panel's CurrentBrightness from every type that a driver may use.
#include <gtest/gtest.h>

#include <climits>

#include "brightness/wmi.h"

namespace {

// A VARIANT of the type with all bits of its value set, so that reading it as a wider type is detected.
VARIANT Of(VARTYPE type) {
    VARIANT variant;
    VariantInit(&variant);
    variant.ullVal = ~0ULL;
    variant.vt = type;
    return variant;
}

std::uint32_t PercentOfI2(SHORT number) {
    VARIANT variant = Of(VT_I2);
    variant.iVal = number;
    return PercentFromVariant(variant);
}

std::uint32_t PercentOfI4(LONG number) {
    VARIANT variant = Of(VT_I4);
    variant.lVal = number;
    return PercentFromVariant(variant);
}

std::uint32_t PercentOfUi1(BYTE number) {
    VARIANT variant = Of(VT_UI1);
    variant.bVal = number;
    return PercentFromVariant(variant);
}

std::uint32_t PercentOfUi2(USHORT number) {
    VARIANT variant = Of(VT_UI2);
    variant.uiVal = number;
    return PercentFromVariant(variant);
}

std::uint32_t PercentOfUi4(ULONG number) {
    VARIANT variant = Of(VT_UI4);
    variant.ulVal = number;
    return PercentFromVariant(variant);
}

}  // namespace

TEST(WmiPercent, EveryPercentReadsAsItselfInEveryIntegerType) {
    for (int percent = 0; percent <= 100; ++percent) {
        const auto expected = static_cast<std::uint32_t>(percent);
        EXPECT_EQ(PercentOfI2(static_cast<SHORT>(percent)), expected);
        EXPECT_EQ(PercentOfI4(percent), expected);
        EXPECT_EQ(PercentOfUi1(static_cast<BYTE>(percent)), expected);
        EXPECT_EQ(PercentOfUi2(static_cast<USHORT>(percent)), expected);
        EXPECT_EQ(PercentOfUi4(expected), expected);
    }
}

TEST(WmiPercent, NegativeNumbersReadAs0) {
    EXPECT_EQ(PercentOfI2(-1), 0U);
    EXPECT_EQ(PercentOfI2(SHRT_MIN), 0U);
    EXPECT_EQ(PercentOfI4(-1), 0U);
    EXPECT_EQ(PercentOfI4(LONG_MIN), 0U);
}

TEST(WmiPercent, NumbersAbove100ReadAs100) {
    EXPECT_EQ(PercentOfI2(101), 100U);
    EXPECT_EQ(PercentOfI2(SHRT_MAX), 100U);
    EXPECT_EQ(PercentOfI4(120), 100U);
    EXPECT_EQ(PercentOfI4(LONG_MAX), 100U);
    EXPECT_EQ(PercentOfUi1(120), 100U);
    EXPECT_EQ(PercentOfUi1(255), 100U);
    EXPECT_EQ(PercentOfUi2(101), 100U);
    EXPECT_EQ(PercentOfUi2(USHRT_MAX), 100U);
    EXPECT_EQ(PercentOfUi4(101), 100U);
}

TEST(WmiPercent, LargeUnsignedNumbersAreNotTreatedAsNegative) {
    EXPECT_EQ(PercentOfUi1(0x80), 100U);
    EXPECT_EQ(PercentOfUi2(0x8000), 100U);
    EXPECT_EQ(PercentOfUi4(0x80000000), 100U);
    EXPECT_EQ(PercentOfUi4(ULONG_MAX), 100U);
}

TEST(WmiPercent, OnlyTheBytesOfTheTypeAreRead) {
    // Of() sets the remaining bits.
    EXPECT_EQ(PercentOfUi1(7), 7U);
    EXPECT_EQ(PercentOfUi2(7), 7U);
    EXPECT_EQ(PercentOfI2(7), 7U);
}

TEST(WmiPercent, EveryOtherTypeReadsAs0) {
    for (const VARTYPE type :
         {VT_EMPTY, VT_NULL, VT_R4, VT_R8, VT_CY, VT_DATE, VT_BSTR, VT_DISPATCH, VT_ERROR, VT_BOOL,
          VT_VARIANT, VT_UNKNOWN, VT_DECIMAL, VT_I1, VT_I8, VT_UI8, VT_INT, VT_UINT}) {
        EXPECT_EQ(PercentFromVariant(Of(type)), 0U) << type;
    }
}

TEST(WmiPercent, AnArrayOrAReferenceOfAnIntegerReadsAs0) {
    for (const VARTYPE type : {VT_I2, VT_I4, VT_UI1, VT_UI2, VT_UI4}) {
        for (const VARTYPE kind : {VT_ARRAY, VT_BYREF, VT_VECTOR})
            EXPECT_EQ(PercentFromVariant(Of(static_cast<VARTYPE>(type | kind))), 0U) << type << " " << kind;
    }
}
