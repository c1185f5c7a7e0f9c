// The accessible object: its arguments and results, the positions of its controls, and its lifetime.
#include "ui/accessible_object.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "ui/accessible_fixture.h"

namespace {

constexpr LONG kStrange[] = {-1, 12, 13, 1000, LONG_MIN, LONG_MAX, static_cast<LONG>(0xFFFFFFFC)};

class AccessibleObjectTest : public AccessibleTest {
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
};

}  // namespace

TEST_F(AccessibleObjectTest, ItHasTheThreeInterfacesOfOneIdentity) {
    IUnknown* unknown = nullptr;
    for (const IID& iid : {__uuidof(IUnknown), __uuidof(IDispatch), __uuidof(IAccessible)}) {
        ASSERT_EQ(object->QueryInterface(iid, reinterpret_cast<void**>(&unknown)), S_OK);
        EXPECT_EQ(unknown, object);
        EXPECT_EQ(unknown->Release(), 1U);
    }
    EXPECT_EQ(object->QueryInterface(__uuidof(IEnumVARIANT), reinterpret_cast<void**>(&unknown)),
              E_NOINTERFACE);
    EXPECT_EQ(unknown, nullptr);
    EXPECT_EQ(object->QueryInterface(__uuidof(IUnknown), nullptr), E_POINTER);
}

TEST_F(AccessibleObjectTest, ThePopupItselfIsTheClientArea) {
    EXPECT_EQ(Name(CHILDID_SELF), (TextAnswer{S_OK, L"Ambrel"}));
    EXPECT_EQ(Role(CHILDID_SELF), ROLE_SYSTEM_CLIENT);
    EXPECT_EQ(State(CHILDID_SELF), 0);
    EXPECT_EQ(Value(CHILDID_SELF), (TextAnswer{S_FALSE, L""}));
    EXPECT_EQ(Action(CHILDID_SELF), (TextAnswer{S_FALSE, L""}));
    EXPECT_EQ(Count(), 11);
    const RECT place = Location(CHILDID_SELF);
    EXPECT_EQ(place.left, 1590);
    EXPECT_EQ(place.top, 510);
    EXPECT_EQ(place.right, 1910);
    EXPECT_EQ(place.bottom, 1050);
    g_app.panel = Panel::Settings;
    EXPECT_EQ(Count(), 6);
}

TEST_F(AccessibleObjectTest, EachMethodAnswersForTheChildThatIsNamed) {
    g_app.pwmTargetsPresent = true;
    EXPECT_EQ(Name(kIdStrip), (TextAnswer{S_OK, L"PWM-SAFE MODE"}));
    EXPECT_EQ(Description(kIdStrip), (TextAnswer{S_OK, L"DISPLAY ALREADY AT 100%"}));
    EXPECT_EQ(Action(kIdStrip), (TextAnswer{S_OK, L"Check"}));
    EXPECT_EQ(Role(kIdStrip), ROLE_SYSTEM_CHECKBUTTON);
    EXPECT_EQ(Value(kIdStrip), (TextAnswer{S_FALSE, L""}));
    EXPECT_EQ(Value(kIdWarmth), (TextAnswer{S_OK, L"3,998K"}));
    EXPECT_EQ(Value(kIdBrightness), (TextAnswer{S_OK, L"100%"}));
    g_app.filterOn = true;
    EXPECT_EQ(State(kIdPower), STATE_SYSTEM_CHECKED);
    EXPECT_EQ(Action(kIdPower), (TextAnswer{S_OK, L"Uncheck"}));
}

TEST_F(AccessibleObjectTest, ChildIdsOutsideThePanelAreInvalid) {
    for (const LONG id : kStrange)
        EXPECT_EQ(ResultsFor(ChildId(id)), std::vector<HRESULT>(kMethodsWithChild, E_INVALIDARG)) << id;
    g_app.panel = Panel::Settings;
    EXPECT_EQ(ResultsFor(ChildId(7)), std::vector<HRESULT>(kMethodsWithChild, E_INVALIDARG));
}

TEST_F(AccessibleObjectTest, OnlyALongIsAChildId) {
    for (const VARTYPE type : {VT_EMPTY, VT_I2, VT_UI4, VT_BSTR, VT_DISPATCH, VT_I8}) {
        VARIANT child = ChildId(1);
        child.vt = type;
        EXPECT_EQ(ResultsFor(child), std::vector<HRESULT>(kMethodsWithChild, E_INVALIDARG)) << type;
    }
}

TEST_F(AccessibleObjectTest, NullPointersAreInvalid) {
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
    EXPECT_EQ(object->GetTypeInfoCount(nullptr), E_INVALIDARG);
    EXPECT_EQ(object->GetTypeInfo(0, 0, nullptr), E_NOTIMPL);
}

TEST_F(AccessibleObjectTest, AHiddenPopupIsInvisibleAndOneUnderAMessageBoxUnavailable) {
    g_accessibleWindow.visible = false;
    EXPECT_EQ(State(CHILDID_SELF), STATE_SYSTEM_INVISIBLE);
    EXPECT_EQ(State(kIdGear), STATE_SYSTEM_INVISIBLE);
    EXPECT_EQ(State(kIdTitle), STATE_SYSTEM_INVISIBLE | STATE_SYSTEM_READONLY);
    g_accessibleWindow.visible = true;
    g_accessibleWindow.enabled = false;
    EXPECT_EQ(State(kIdGear), STATE_SYSTEM_UNAVAILABLE);
}

TEST_F(AccessibleObjectTest, NothingHasOrTakesTheFocus) {
    VARIANT child = ChildId(1);
    EXPECT_EQ(object->get_accFocus(&child), S_FALSE);
    EXPECT_EQ(child.vt, VT_EMPTY);
    EXPECT_EQ(object->get_accSelection(&child), S_FALSE);
    EXPECT_EQ(child.vt, VT_EMPTY);
    for (int id = 0; id <= 11; ++id) {
        EXPECT_EQ(State(id) & (STATE_SYSTEM_FOCUSABLE | STATE_SYSTEM_FOCUSED | STATE_SYSTEM_SELECTABLE), 0);
        EXPECT_EQ(object->accSelect(SELFLAG_TAKEFOCUS, ChildId(id)), DISP_E_MEMBERNOTFOUND);
    }
    EXPECT_EQ(object->accSelect(0x40, ChildId(kIdDay)), E_INVALIDARG);
    EXPECT_EQ(g_calls, CallRecord{});
}

TEST_F(AccessibleObjectTest, TheChildrenHaveNoObjectsOfTheirOwn) {
    IDispatch* child = nullptr;
    EXPECT_EQ(object->get_accChild(ChildId(kIdDay), &child), S_FALSE);
    EXPECT_EQ(child, nullptr);
    ASSERT_EQ(object->get_accChild(ChildId(CHILDID_SELF), &child), S_OK);
    EXPECT_EQ(child, object);
    EXPECT_EQ(child->Release(), 1U);
}

TEST_F(AccessibleObjectTest, ItOffersNoNamesToScripts) {
    UINT count = 7;
    EXPECT_EQ(object->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(object->GetIDsOfNames(__uuidof(IUnknown), nullptr, 0, 0, nullptr), E_NOTIMPL);
    EXPECT_EQ(object->Invoke(0, __uuidof(IUnknown), 0, 0, nullptr, nullptr, nullptr, nullptr), E_NOTIMPL);
}

TEST_F(AccessibleObjectTest, RectanglesAreScaledEdgeByEdge) {
    // Of WARMTH's track, (54,107)-(106,305): edges times 1.25, rounded half up.
    g_app.dpi = 120;
    const RECT place = Location(kIdWarmth);
    EXPECT_EQ(place.left, 1590 + 68);
    EXPECT_EQ(place.top, 510 + 134);
    EXPECT_EQ(place.right, 1590 + 133);
    EXPECT_EQ(place.bottom, 510 + 381);
    g_app.dpi = 192;
    EXPECT_EQ(Location(CHILDID_SELF).right, 1590 + 640);
}

TEST_F(AccessibleObjectTest, TheMiddleOfEachControlHitsIt) {
    for (const UINT dpi : {96, 120, 144, 192, 336}) {
        g_app.dpi = dpi;
        for (const Panel panel : {Panel::Main, Panel::Settings}) {
            g_app.panel = panel;
            for (int id = 1; id <= Count(); ++id) {
                const RECT place = Location(id);
                EXPECT_EQ(HitTest((place.left + place.right) / 2, (place.top + place.bottom) / 2),
                          (ChildAnswer{S_OK, id}))
                    << dpi;
            }
        }
    }
}

TEST_F(AccessibleObjectTest, BetweenControlsThePopupIsHitAndOutsideNothing) {
    EXPECT_EQ(HitTest(1590, 510), (ChildAnswer{S_OK, CHILDID_SELF}));
    EXPECT_EQ(HitTest(1590 + 115, 510 + 447), (ChildAnswer{S_OK, CHILDID_SELF}));
    EXPECT_EQ(HitTest(1909, 1049), (ChildAnswer{S_OK, CHILDID_SELF}));
    for (const POINT outside :
         {POINT{1589, 600}, POINT{1910, 600}, POINT{1700, 509}, POINT{1700, 1050}, POINT{LONG_MIN, LONG_MIN},
          POINT{LONG_MAX, LONG_MAX}, POINT{LONG_MIN, LONG_MAX}})
        EXPECT_EQ(HitTest(outside.x, outside.y), (ChildAnswer{S_FALSE, -1}));
}

TEST_F(AccessibleObjectTest, TheHitTestFindsWhatAClickWouldReach) {
    g_app.dpi = 120;
    for (int y = 0; y < 675; y += 7) {
        for (int x = 0; x < 400; x += 3) {
            const int unitX = (x * 96 * 2 + 120) / 240;
            const int unitY = (y * 96 * 2 + 120) / 240;
            const bool day = unitX >= 30 && unitX < 110 && unitY >= 429 && unitY < 465;
            EXPECT_EQ(HitTest(1590 + x, 510 + y).child == kIdDay, day) << x << " " << y;
        }
    }
}

TEST_F(AccessibleObjectTest, NextAndPreviousFollowTheReadingOrder) {
    EXPECT_EQ(Navigate(NAVDIR_FIRSTCHILD, CHILDID_SELF), (ChildAnswer{S_OK, 1}));
    EXPECT_EQ(Navigate(NAVDIR_LASTCHILD, CHILDID_SELF), (ChildAnswer{S_OK, 11}));
    for (int id = 1; id < 11; ++id) {
        EXPECT_EQ(Navigate(NAVDIR_NEXT, id), (ChildAnswer{S_OK, id + 1}));
        EXPECT_EQ(Navigate(NAVDIR_PREVIOUS, id + 1), (ChildAnswer{S_OK, id}));
    }
    EXPECT_EQ(Navigate(NAVDIR_NEXT, 11), (ChildAnswer{S_FALSE, -1}));
    EXPECT_EQ(Navigate(NAVDIR_PREVIOUS, 1), (ChildAnswer{S_FALSE, -1}));
    EXPECT_EQ(Navigate(NAVDIR_FIRSTCHILD, 1), (ChildAnswer{S_FALSE, -1}));
    for (const LONG direction : {NAVDIR_NEXT, NAVDIR_PREVIOUS, NAVDIR_LEFT, NAVDIR_DOWN})
        EXPECT_EQ(Navigate(direction, CHILDID_SELF), (ChildAnswer{S_FALSE, -1}));
    for (const LONG direction : {0L, 9L, -1L, LONG_MIN, LONG_MAX})
        EXPECT_EQ(Navigate(direction, 1), (ChildAnswer{E_INVALIDARG, -1}));
}

TEST_F(AccessibleObjectTest, DirectionsLeadToTheNearestControlThere) {
    EXPECT_EQ(Navigate(NAVDIR_RIGHT, kIdDay).child, kIdEvening);
    EXPECT_EQ(Navigate(NAVDIR_RIGHT, kIdEvening).child, kIdNight);
    EXPECT_EQ(Navigate(NAVDIR_RIGHT, kIdNight).child, -1);
    EXPECT_EQ(Navigate(NAVDIR_LEFT, kIdNight).child, kIdEvening);
    EXPECT_EQ(Navigate(NAVDIR_RIGHT, kIdWarmth).child, kIdBrightness);
    EXPECT_EQ(Navigate(NAVDIR_UP, kIdWarmth).child, kIdWarmthCaption);
    EXPECT_EQ(Navigate(NAVDIR_DOWN, kIdWarmth).child, kIdStrip);
    EXPECT_EQ(Navigate(NAVDIR_DOWN, kIdStrip).child, kIdDay);
    EXPECT_EQ(Navigate(NAVDIR_DOWN, kIdEvening).child, kIdPower);
    EXPECT_EQ(Navigate(NAVDIR_DOWN, kIdPower).child, -1);
    EXPECT_EQ(Navigate(NAVDIR_RIGHT, kIdTitle).child, kIdGear);
    g_app.panel = Panel::Settings;
    EXPECT_EQ(Navigate(NAVDIR_DOWN, kIdLaunch).child, kIdExtremeDim);
    EXPECT_EQ(Navigate(NAVDIR_UP, kIdSupport).child, kIdLegacy);
}

TEST_F(AccessibleObjectTest, AfterTheWindowEveryMethodSaysThatItIsNotConnected) {
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
