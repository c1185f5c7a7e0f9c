// Fixture for the accessible object: a popup at a known position, a record of the posted messages and events
// in g_calls, and short forms of the object's methods.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "app/state/app_state.h"
#include "support/call_record.h"
#include "support/seam.h"
#include "win32/com_guards.h"

#include <oleacc.h>

AMBREL_USES_SEAMS(accessible_fixture);

struct AccessibleWindow {
    bool visible = true;
    bool enabled = true;
    bool postingFails = false;
    POINT origin = {1590, 510};
};

extern AccessibleWindow g_accessibleWindow;

// A text that a method returned, or nothing.
struct TextAnswer {
    HRESULT result;
    std::wstring text;

    bool operator==(const TextAnswer&) const = default;
};

struct ChildAnswer {
    HRESULT result;
    int child;  // -1: none

    bool operator==(const ChildAnswer&) const = default;
};

VARIANT ChildId(LONG id);

class AccessibleTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    TextAnswer Text(HRESULT (STDMETHODCALLTYPE IAccessible::*method)(VARIANT, BSTR*), int child) const;
    TextAnswer Name(int child) const { return Text(&IAccessible::get_accName, child); }
    TextAnswer Value(int child) const { return Text(&IAccessible::get_accValue, child); }
    TextAnswer Description(int child) const { return Text(&IAccessible::get_accDescription, child); }
    TextAnswer Action(int child) const { return Text(&IAccessible::get_accDefaultAction, child); }
    LONG Role(int child) const;
    LONG State(int child) const;
    LONG Count() const;
    RECT Location(int child) const;
    ChildAnswer HitTest(LONG x, LONG y) const;
    ChildAnswer Navigate(LONG direction, int child) const;
    HRESULT Press(int child) const { return object->accDoDefaultAction(ChildId(child)); }
    HRESULT SetValue(int child, const wchar_t* text) const;

    IAccessible* object = nullptr;
};

// Child ids of the main panel.
constexpr int kIdTitle = 1, kIdGear = 2, kIdWarmthCaption = 3, kIdWarmth = 4, kIdBrightnessCaption = 5,
              kIdBrightness = 6, kIdStrip = 7, kIdDay = 8, kIdEvening = 9, kIdNight = 10, kIdPower = 11;
// Child ids of the settings panel.
constexpr int kIdSettingsTitle = 1, kIdClose = 2, kIdLaunch = 3, kIdExtremeDim = 4, kIdLegacy = 5,
              kIdSupport = 6;
