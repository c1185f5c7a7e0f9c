// Fixture for presses on the popup, down to the two pipelines: records the calls in order and the AppState at
// each call. Regions, clicks and the filter's entry point are the shipped ones.
#pragma once

#include <gtest/gtest.h>

#include "app/state/app_state.h"
#include "support/call_record.h"
#include "support/seam.h"
#include "ui/popup_input.h"

AMBREL_USES_SEAMS(click_fixture);

struct Snapshot {
    double intensity;
    double brightness;
    bool filterOn;
    bool legacy;
    bool extremeDim;
    bool launch;

    bool operator==(const Snapshot&) const = default;
};

Snapshot Now();

struct ClickFixture {
    bool initialisationSucceeds = true;
    Snapshot atApply = {};
    Snapshot atSave = {};
    Snapshot atClear = {};
    Panel panelAtRefresh = Panel::Main;
};

extern ClickFixture g_fixture;

class ClickTest : public testing::Test {
protected:
    void SetUp() override;

    static void OpenSettings() { g_app.panel = Panel::Settings; }
    static void Press(POINT point) { OnMouseDown(point.x, point.y); }
};

// A point of each region, in design units.
constexpr POINT kDay = {70, 447};
constexpr POINT kEvening = {160, 447};
constexpr POINT kNight = {250, 447};
constexpr POINT kPower = {160, 503};
constexpr POINT kGear = {292, 29};
constexpr POINT kBanner = {160, 382};
constexpr POINT kCard = {160, 400};
constexpr POINT kClose = {276, 30};
constexpr POINT kLaunchRow = {160, 153};
constexpr POINT kExtremeDimRow = {160, 203};
constexpr POINT kLegacyRow = {160, 253};
constexpr POINT kSupport = {160, 489};
