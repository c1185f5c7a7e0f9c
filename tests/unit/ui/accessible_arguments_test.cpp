// The arguments and results of the accessible object: wrong and missing arguments, cleared out-parameters, no
// memory.
#include <gtest/gtest.h>

#include <climits>
#include <cwchar>
#include <vector>

#include "ui/accessible_fixture.h"

namespace {

bool g_noMemory = false;

BSTR WINAPI FakeSysAllocString(const OLECHAR* text) {
    return g_noMemory ? nullptr : SysAllocStringLen(text, static_cast<UINT>(std::wcslen(text)));
}

constexpr LONG kStrange[] = {-1, 12, 13, 1000, LONG_MIN, LONG_MAX, static_cast<LONG>(0xFFFFFFFC)};

class AccessibleArguments : public AccessibleTest {
protected:
    // The result of every method that takes a child id.
    std::vector<HRESULT> ResultsFor(const VARIANT& child) const {
        BSTR text = nullptr;
        VARIANT answer = {};
        IDispatch* dispatch = nullptr;
        LONG number = 0;
        return {object->get_accName(child, &text),
                object->get_accValue(child, &text),
                object->get_accDescription(child, &text),
                object->get_accDefaultAction(child, &text),
                object->get_accHelp(child, &text),
                object->get_accKeyboardShortcut(child, &text),
                object->get_accHelpTopic(&text, child, &number),
                object->get_accRole(child, &answer),
                object->get_accState(child, &answer),
                object->get_accChild(child, &dispatch),
                object->accLocation(&number, &number, &number, &number, child),
                object->accNavigate(NAVDIR_NEXT, child, &answer),
                object->accSelect(SELFLAG_TAKEFOCUS, child),
                object->accDoDefaultAction(child),
                object->put_accName(child, nullptr),
                object->put_accValue(child, nullptr)};
    }

    static constexpr std::size_t kMethodsWithChild = 16;

    void SetUp() override {
        AccessibleTest::SetUp();
        g_noMemory = false;
    }
    void TearDown() override {
        g_noMemory = false;
        AccessibleTest::TearDown();
    }

    // Calls every method that has out-parameters with values left over in them, and expects them to be
    // cleared.
    void ExpectClearedOutParameters(const VARIANT& child) const {
        for (const auto method : {&IAccessible::get_accName, &IAccessible::get_accValue,
                                  &IAccessible::get_accDescription, &IAccessible::get_accDefaultAction,
                                  &IAccessible::get_accHelp, &IAccessible::get_accKeyboardShortcut}) {
            BSTR text = kOldText;
            EXPECT_TRUE(FAILED((object->*method)(child, &text)));
            EXPECT_EQ(text, nullptr);
        }
        for (const auto method : {&IAccessible::get_accRole, &IAccessible::get_accState}) {
            VARIANT number = ChildId(7);
            EXPECT_TRUE(FAILED((object->*method)(child, &number)));
            EXPECT_EQ(number.vt, VT_EMPTY);
        }
        VARIANT end = ChildId(7);
        EXPECT_TRUE(FAILED(object->accNavigate(NAVDIR_NEXT, child, &end)));
        EXPECT_EQ(end.vt, VT_EMPTY);
        IDispatch* dispatch = object;
        EXPECT_TRUE(FAILED(object->get_accChild(child, &dispatch)));
        EXPECT_EQ(dispatch, nullptr);
        BSTR file = kOldText;
        LONG topic = 7;
        EXPECT_TRUE(FAILED(object->get_accHelpTopic(&file, child, &topic)));
        EXPECT_EQ(file, nullptr);
        EXPECT_EQ(topic, 0);
        LONG edges[] = {7, 7, 7, 7};
        EXPECT_TRUE(FAILED(object->accLocation(&edges[0], &edges[1], &edges[2], &edges[3], child)));
        for (const LONG edge : edges)
            EXPECT_EQ(edge, 0);
    }

    static inline wchar_t kOldText[] = L"?";
};

}  // namespace

AMBREL_SEAM(SysAllocString, FakeSysAllocString);

TEST_F(AccessibleArguments, WithoutMemoryForATextTheCallReturnsOutOfMemory) {
    g_app.pwmTargetsPresent = true;
    g_noMemory = true;
    const TextAnswer refused = {E_OUTOFMEMORY, L""};
    EXPECT_EQ(Name(kIdStrip), refused);
    EXPECT_EQ(Description(kIdStrip), refused);
    EXPECT_EQ(Action(kIdStrip), refused);
    EXPECT_EQ(Text(&IAccessible::get_accHelp, kIdStrip), refused);
    EXPECT_EQ(Value(kIdWarmth), refused);
    EXPECT_EQ(Action(kIdTitle), (TextAnswer{S_FALSE, L""})) << "there is no text to copy";
}

TEST_F(AccessibleArguments, AFailedCallClearsItsOutParameters) {
    ExpectClearedOutParameters(ChildId(12));
    VARIANT reference = ChildId(1);
    reference.vt = VT_BYREF | VT_I4;
    ExpectClearedOutParameters(reference);
    g_app.windowDestroyed = true;
    ExpectClearedOutParameters(ChildId(kIdWarmth));
    IDispatch* parent = object;
    EXPECT_EQ(object->get_accParent(&parent), CO_E_OBJNOTCONNECTED);
    EXPECT_EQ(parent, nullptr);
    VARIANT child = ChildId(7);
    EXPECT_EQ(object->accHitTest(1600, 600, &child), CO_E_OBJNOTCONNECTED);
    EXPECT_EQ(child.vt, VT_EMPTY);
    for (const auto method : {&IAccessible::get_accFocus, &IAccessible::get_accSelection}) {
        child = ChildId(7);
        EXPECT_EQ((object->*method)(&child), CO_E_OBJNOTCONNECTED);
        EXPECT_EQ(child.vt, VT_EMPTY);
    }
}

TEST_F(AccessibleArguments, ANullPointerDoesNotKeepTheOtherOutParametersFromBeingCleared) {
    for (int missing = 0; missing < 4; ++missing) {
        LONG edges[] = {7, 7, 7, 7};
        LONG* outs[] = {&edges[0], &edges[1], &edges[2], &edges[3]};
        outs[missing] = nullptr;
        EXPECT_EQ(object->accLocation(outs[0], outs[1], outs[2], outs[3], ChildId(kIdWarmth)), E_INVALIDARG);
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(edges[i], i == missing ? 7 : 0) << missing;
    }
    LONG topic = 7;
    EXPECT_EQ(object->get_accHelpTopic(nullptr, ChildId(kIdWarmth), &topic), E_INVALIDARG);
    EXPECT_EQ(topic, 0);
    BSTR file = kOldText;
    EXPECT_EQ(object->get_accHelpTopic(&file, ChildId(kIdWarmth), nullptr), E_INVALIDARG);
    EXPECT_EQ(file, nullptr);
}

TEST_F(AccessibleArguments, ChildIdsOutsideThePanelAreInvalid) {
    for (const LONG id : kStrange)
        EXPECT_EQ(ResultsFor(ChildId(id)), std::vector<HRESULT>(kMethodsWithChild, E_INVALIDARG)) << id;
    g_app.panel = Panel::Settings;
    EXPECT_EQ(ResultsFor(ChildId(7)), std::vector<HRESULT>(kMethodsWithChild, E_INVALIDARG));
}

TEST_F(AccessibleArguments, OnlyALongIsAChildId) {
    // The value is no address: a variant that refers to something must not be followed.
    for (const int type :
         {int{VT_EMPTY}, int{VT_NULL}, int{VT_I2}, int{VT_UI4}, int{VT_INT}, int{VT_BSTR}, int{VT_DISPATCH},
          int{VT_VARIANT}, int{VT_I8}, VT_BYREF | VT_I4, VT_BYREF | VT_VARIANT, VT_ARRAY | VT_I4,
          VT_VECTOR | VT_I4, VT_RESERVED | VT_I4, 0xFFFF}) {
        VARIANT child = ChildId(1);
        child.vt = static_cast<VARTYPE>(type);
        EXPECT_EQ(ResultsFor(child), std::vector<HRESULT>(kMethodsWithChild, E_INVALIDARG)) << type;
    }
}

TEST_F(AccessibleArguments, NullPointersAreInvalid) {
    const VARIANT child = ChildId(kIdWarmth);
    LONG number = 0;
    EXPECT_EQ(object->get_accName(child, nullptr), E_INVALIDARG);
    EXPECT_EQ(object->get_accHelp(child, nullptr), E_INVALIDARG);
    EXPECT_EQ(object->get_accHelpTopic(nullptr, child, &number), E_INVALIDARG);
    EXPECT_EQ(object->get_accHelpTopic(nullptr, child, nullptr), E_INVALIDARG);
    EXPECT_EQ(object->get_accRole(child, nullptr), E_INVALIDARG);
    EXPECT_EQ(object->get_accParent(nullptr), E_INVALIDARG);
    EXPECT_EQ(object->get_accChild(child, nullptr), E_INVALIDARG);
    EXPECT_EQ(object->get_accChildCount(nullptr), E_INVALIDARG);
    EXPECT_EQ(object->get_accFocus(nullptr), E_INVALIDARG);
    EXPECT_EQ(object->get_accSelection(nullptr), E_INVALIDARG);
    EXPECT_EQ(object->accHitTest(0, 0, nullptr), E_INVALIDARG);
    EXPECT_EQ(object->accNavigate(NAVDIR_NEXT, child, nullptr), E_INVALIDARG);
    for (int missing = 0; missing < 4; ++missing) {
        LONG* outs[] = {&number, &number, &number, &number};
        outs[missing] = nullptr;
        EXPECT_EQ(object->accLocation(outs[0], outs[1], outs[2], outs[3], child), E_INVALIDARG);
    }
    EXPECT_EQ(object->GetTypeInfoCount(nullptr), E_NOTIMPL);
    EXPECT_EQ(object->GetTypeInfo(0, 0, nullptr), E_NOTIMPL);
}

TEST_F(AccessibleArguments, OnlyTheDocumentedCombinationsOfFlagsSelect) {
    const LONG add = SELFLAG_ADDSELECTION;
    const LONG remove = SELFLAG_REMOVESELECTION;
    const LONG extend = SELFLAG_EXTENDSELECTION;
    const LONG take = SELFLAG_TAKESELECTION;
    for (const LONG flags : {add | remove, add | take, remove | take, extend | take, extend | add | remove,
                             LONG{SELFLAG_VALID}, 0x20L, 0x40L, take | 0x20L, -1L, LONG_MIN})
        EXPECT_EQ(object->accSelect(flags, ChildId(kIdDay)), E_INVALIDARG) << flags;
    // The popup has no selection that several controls share.
    for (const LONG flags : {LONG{SELFLAG_NONE}, add, remove, extend, add | extend, remove | extend})
        EXPECT_EQ(object->accSelect(flags, ChildId(kIdDay)), DISP_E_MEMBERNOTFOUND) << flags;
    EXPECT_EQ(g_calls, CallRecord{});
    EXPECT_EQ(object->accSelect(SELFLAG_TAKEFOCUS | take, ChildId(kIdDay)), S_OK) << "as a click";
    EXPECT_EQ(g_calls.size(), 1U);
}

TEST_F(AccessibleArguments, ItLeavesScriptsToWindows) {
    UINT count = 7;
    EXPECT_EQ(object->GetTypeInfoCount(&count), E_NOTIMPL);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(object->GetIDsOfNames(__uuidof(IUnknown), nullptr, 0, 0, nullptr), E_NOTIMPL);
    DISPID ids[] = {7, 7, 7};
    EXPECT_EQ(object->GetIDsOfNames(__uuidof(IUnknown), nullptr, 2, 0, ids), E_NOTIMPL);
    EXPECT_EQ(ids[0], DISPID_UNKNOWN);
    EXPECT_EQ(ids[1], DISPID_UNKNOWN);
    EXPECT_EQ(ids[2], 7);
    EXPECT_EQ(object->Invoke(0, __uuidof(IUnknown), 0, 0, nullptr, nullptr, nullptr, nullptr), E_NOTIMPL);
    VARIANT result = ChildId(7);
    EXCEPINFO exception = {};
    exception.bstrSource = kOldText;
    UINT argument = 7;
    EXPECT_EQ(object->Invoke(0, __uuidof(IUnknown), 0, 0, nullptr, &result, &exception, &argument),
              E_NOTIMPL);
    EXPECT_EQ(result.vt, VT_EMPTY);
    EXPECT_EQ(exception.bstrSource, nullptr);
    EXPECT_EQ(argument, 0U);
}

TEST_F(AccessibleArguments, AfterTheWindowEveryMethodReportsThatItIsNotConnected) {
    g_app.windowDestroyed = true;
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(ResultsFor(ChildId(kIdWarmth)),
                  std::vector<HRESULT>(kMethodsWithChild, CO_E_OBJNOTCONNECTED));
        VARIANT answer = {};
        IDispatch* parent = nullptr;
        LONG count = 7;
        EXPECT_EQ(object->get_accParent(&parent), CO_E_OBJNOTCONNECTED);
        EXPECT_EQ(object->get_accChildCount(&count), CO_E_OBJNOTCONNECTED);
        EXPECT_EQ(count, 0);
        EXPECT_EQ(object->get_accFocus(&answer), CO_E_OBJNOTCONNECTED);
        EXPECT_EQ(object->get_accSelection(&answer), CO_E_OBJNOTCONNECTED);
        EXPECT_EQ(object->accHitTest(1600, 600, &answer), CO_E_OBJNOTCONNECTED);
        // The window no longer exists.
        g_app.mainWindow = nullptr;
        g_app.windowDestroyed = round == 0;
    }
    EXPECT_EQ(g_calls, CallRecord{});
}
