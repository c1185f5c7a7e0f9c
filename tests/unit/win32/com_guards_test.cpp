#include "win32/com_guards.h"

#include <gtest/gtest.h>

#include "support/com_tracker.h"
#include "win32/guards.h"

namespace {

class ComGuards : public testing::Test {
protected:
    void SetUp() override { StartComTracking(); }
    void TearDown() override { ExpectNoComLeaks(); }
};

struct Counted : IUnknown {
    ULONG references = 1;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
};

}  // namespace

TEST_F(ComGuards, ATextIsACopyThatIsFreedAtTheEndOfItsScope) {
    const wchar_t source[] = L"ROOT\\WMI";
    {
        const Bstr copy(source);
        EXPECT_NE(copy.text, source);
        EXPECT_STREQ(copy.text, source);
        EXPECT_EQ(SysStringLen(copy.text), 8U);
        EXPECT_EQ(TextsHeld(), 1);
    }
    EXPECT_EQ(TextsHeld(), 0);
}

TEST_F(ComGuards, AnEmptyTextIsNotNull) {
    const Bstr empty(L"");
    ASSERT_NE(empty.text, nullptr);
    EXPECT_EQ(SysStringLen(empty.text), 0U);
}

TEST_F(ComGuards, ATextIsNullWhenMemoryRunsOutAndCanBeFreed) {
    LetAllocationFail(1);
    const Bstr copy(L"WQL");
    EXPECT_EQ(copy.text, nullptr);
}

TEST_F(ComGuards, AVariantStartsEmpty) {
    const Variant variant;
    EXPECT_EQ(variant.value.vt, VT_EMPTY);
    EXPECT_EQ(VariantsHeld(), 1);
}

TEST_F(ComGuards, AVariantFreesTheTextInIt) {
    {
        Variant variant;
        variant.value.vt = VT_BSTR;
        variant.value.bstrVal = AllocateReturnedText(L"panel");
    }
    EXPECT_EQ(TextsHeld(), 0);
    EXPECT_EQ(VariantsHeld(), 0);
}

TEST_F(ComGuards, AVariantReleasesTheObjectInIt) {
    Counted object;
    {
        Variant variant;
        variant.value.vt = VT_UNKNOWN;
        variant.value.punkVal = &object;
    }
    EXPECT_EQ(object.references, 0U);
}

TEST_F(ComGuards, AnInterfaceIsReleasedOnceAtTheEndOfItsScope) {
    Counted object;
    {
        ComPointer<IUnknown> pointer;
        *pointer.Out() = &object;
        EXPECT_EQ(object.references, 1U);
    }
    EXPECT_EQ(object.references, 0U);
}

TEST_F(ComGuards, ANullPointerReleasesNothing) {
    ComPointer<IUnknown> pointer;
    EXPECT_EQ(*pointer.Out(), nullptr);
}
