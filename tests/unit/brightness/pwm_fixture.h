// Fixture for the tests of the controller, with fake displays and settings.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <sstream>
#include <string>

#include "app/state/app_state.h"
#include "brightness/fake_displays.h"
#include "brightness/pwm_safe.h"
#include "support/call_record.h"
#include "ui/pwm_card_label.h"

class PwmFixture : public testing::Test {
protected:
    void SetUp() override { StartWithoutDisplays(); }
    void TearDown() override {
        g_whileWaiting = nullptr;
        g_app = AppState{};
    }

    // The calls that `act` makes.
    template <typename Act>
    static CallRecord During(Act act) {
        g_calls.clear();
        act();
        return g_calls;
    }

    // The mode is on and the lock confirmed; each display had `before` percent.
    static void StartLocked(std::uint32_t before = 40) {
        g_app.pwmSafe = true;
        g_app.pwmLockConfirmed = true;
        for (FakeDisplay& display : g_displays) {
            g_app.pwmSavedBrightness[display.name] = before;
            display.percent = 100;
        }
    }

    // The mode is on and a verification pending.
    static void StartVerifying(bool afterUserSwitch) {
        g_app.pwmSafe = true;
        g_app.pwmVerifyPending = true;
        g_app.pwmVerifyIsUserToggle = afterUserSwitch;
        for (const FakeDisplay& display : g_displays)
            g_app.pwmSavedBrightness[display.name] = 40;
    }

    // The flags of AppState in words: "on verifying by-user", "on confirmed", "off".
    static std::string Flags() {
        std::string text = g_app.pwmSafe ? "on" : "off";
        if (g_app.pwmVerifyPending) text += " verifying";
        if (g_app.pwmVerifyIsUserToggle) text += " by-user";
        if (g_app.pwmLockConfirmed) text += " confirmed";
        if (g_app.pwmRetrySlowed) text += " slowed";
        if (g_app.pwmPendingLogged) text += " pending-logged";
        return text;
    }

    static std::wstring Label() { return PwmCardLabel(); }
};
