#include "support/com_tracker.h"

#include <gtest/gtest.h>

#include <set>

#include "support/seam.h"

AMBREL_SEAM_SET(com_tracker);

namespace {

std::set<BSTR> g_texts;
std::set<VARIANTARG*> g_variants;
int g_allocations = 0;
int g_failing = 0;

BSTR Allocate(const wchar_t* text, UINT length) {
    BSTR made = SysAllocStringLen(text, length);
    g_texts.insert(made);
    return made;
}

void Untrack(BSTR text) {
    if (text == nullptr) return;
    EXPECT_EQ(g_texts.erase(text), 1U) << "a freed string was not allocated";
}

BSTR WINAPI FakeSysAllocString(const OLECHAR* text) {
    ++g_allocations;
    if (g_allocations == g_failing) return nullptr;
    return Allocate(text, static_cast<UINT>(std::char_traits<wchar_t>::length(text)));
}

void WINAPI FakeSysFreeString(BSTR text) {
    Untrack(text);
    Real (&SysFreeString)(text);
}

void WINAPI FakeVariantInit(VARIANTARG* variant) {
    EXPECT_TRUE(g_variants.insert(variant).second) << "a variant is initialised twice";
    Real (&VariantInit)(variant);
}

HRESULT WINAPI FakeVariantClear(VARIANTARG* variant) {
    EXPECT_EQ(g_variants.erase(variant), 1U) << "a cleared variant was not initialised";
    if (variant->vt == VT_BSTR) Untrack(variant->bstrVal);
    return Real(&VariantClear)(variant);
}

}  // namespace

AMBREL_SEAM(SysAllocString, FakeSysAllocString);
AMBREL_SEAM(SysFreeString, FakeSysFreeString);
AMBREL_SEAM(VariantInit, FakeVariantInit);
AMBREL_SEAM(VariantClear, FakeVariantClear);

void StartComTracking() {
    g_texts.clear();
    g_variants.clear();
    g_allocations = 0;
    g_failing = 0;
}

void ExpectNoComLeaks() {
    EXPECT_EQ(TextsHeld(), 0);
    EXPECT_EQ(VariantsHeld(), 0);
}

void LetAllocationFail(int number) {
    g_failing = number;
}

int AllocationsMade() {
    return g_allocations;
}

BSTR AllocateReturnedText(const std::wstring& text) {
    return Allocate(text.data(), static_cast<UINT>(text.size()));
}

int TextsHeld() {
    return static_cast<int>(g_texts.size());
}

int VariantsHeld() {
    return static_cast<int>(g_variants.size());
}
