// The accessible object: its identity, its texts and states, the positions of its controls, and navigation.
#include "ui/accessible_object.h"

#include <gtest/gtest.h>

#include <climits>

#include "ui/accessible_fixture.h"

namespace {

using AccessibleObjectTest = AccessibleTest;

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
    EXPECT_EQ(Value(kIdWarmth), (TextAnswer{S_OK, L"3,998K"}));
    EXPECT_EQ(Value(kIdBrightness), (TextAnswer{S_OK, L"100%"}));
    g_app.filterOn = true;
    EXPECT_EQ(State(kIdPower), STATE_SYSTEM_CHECKED);
    EXPECT_EQ(Action(kIdPower), (TextAnswer{S_OK, L"Uncheck"}));
}

TEST_F(AccessibleObjectTest, OnlyTheSlidersHaveTheValueProperty) {
    for (const Panel panel : {Panel::Main, Panel::Settings}) {
        g_app.panel = panel;
        for (int id = 0; id <= Count(); ++id)
            EXPECT_EQ(Value(id).result, Role(id) == ROLE_SYSTEM_SLIDER ? S_OK : DISP_E_MEMBERNOTFOUND) << id;
    }
}

// Windows' bridge passes only the help text on to UI Automation.
TEST_F(AccessibleObjectTest, TheDescriptionIsTheHelpTextToo) {
    g_app.pwmTargetsPresent = true;
    EXPECT_EQ(Text(&IAccessible::get_accHelp, kIdStrip), (TextAnswer{S_OK, L"DISPLAY ALREADY AT 100%"}));
    EXPECT_EQ(Text(&IAccessible::get_accHelp, kIdPower), (TextAnswer{S_FALSE, L""}));
    g_app.panel = Panel::Settings;
    g_app.copiedUntil = UINT64_MAX;
    EXPECT_EQ(Text(&IAccessible::get_accHelp, kIdSupport), Description(kIdSupport));
    EXPECT_EQ(Text(&IAccessible::get_accHelp, kIdSupport).result, S_OK);
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
