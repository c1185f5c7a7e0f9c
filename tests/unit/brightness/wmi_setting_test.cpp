// How a panel is found again by its name and set.
#include <gtest/gtest.h>

#include "brightness/fake_wmi.h"
#include "brightness/wmi.h"

namespace {

constexpr char kQuery[] =
    "query WQL SELECT InstanceName, __PATH FROM WmiMonitorBrightnessMethods WHERE Active = TRUE flags 48";
constexpr char kNext[] = "next 1500 1";
constexpr char kExec[] = "exec path of panel: WmiSetBrightness flags 0";

const CallRecord kAsked = kConnected + CallRecord{kQuery};
const CallRecord kReleased = {"release services", "release locator"};

CallRecord PassOver(int number) {
    return {kNext, "get InstanceName", "release result " + std::to_string(number)};
}

CallRecord Match(int number) {
    return {kNext, "get InstanceName", "get __PATH", "release result " + std::to_string(number),
            "release enumerator"};
}

class WmiSetting : public testing::Test {
protected:
    void SetUp() override {
        ResetWmi();
        g_wmi.found = {Panel(L"panel")};
    }
    void TearDown() override { CheckNothingIsLeft(); }

    static bool WasCalled(const std::string& beginning) {
        for (const std::string& call : g_calls) {
            if (call.rfind(beginning, 0) == 0) return true;
        }
        return false;
    }

    // Whether it is found is told by the question for the method.
    static bool Finds(const std::wstring& name) {
        g_calls.clear();
        const bool set = SetWmiBrightness(name, 100);
        EXPECT_EQ(WasCalled("exec"), set);
        return set;
    }
};

}  // namespace

TEST_F(WmiSetting, OnePanelIsSetWithExactlyTheseCalls) {
    EXPECT_TRUE(SetWmiBrightness(L"panel", 100));
    const CallRecord setting = {
        "get object WmiMonitorBrightnessMethods",
        "get method WmiSetBrightness",
        "spawn",
        "release signature",
        "release class",
        "put Timeout type 3 value 0",        // VT_I4
        "put Brightness type 17 value 100",  // VT_UI1
        kExec,
        "release in-parameters",
    };
    EXPECT_EQ(g_calls, kAsked + Match(1) + setting + kReleased);
}

TEST_F(WmiSetting, ThePercentIsSentAsItIsUpToOneHundred) {
    for (const auto& [percent, sent] : {std::pair{0U, "0"},
                                        {1U, "1"},
                                        {37U, "37"},
                                        {99U, "99"},
                                        {100U, "100"},
                                        {101U, "100"},
                                        {250U, "100"},
                                        {256U, "100"},
                                        {0xFFFFFFFFU, "100"}}) {
        g_calls.clear();
        EXPECT_TRUE(SetWmiBrightness(L"panel", percent));
        EXPECT_TRUE(WasCalled(std::string("put Brightness type 17 value ") + sent)) << percent;
    }
}

TEST_F(WmiSetting, TheWalkEndsAtTheFirstPanelOfTheName) {
    Found twin = Panel(L"panel");
    twin.properties[L"__PATH"] = Text(L"second path");
    g_wmi.found = {Panel(L"other"), Panel(L"panel"), twin};
    EXPECT_TRUE(SetWmiBrightness(L"panel", 100));
    const CallRecord walk(g_calls.begin(), g_calls.begin() + 12);
    EXPECT_EQ(walk, kAsked + PassOver(1) + Match(2));
    EXPECT_TRUE(WasCalled(kExec));
}

TEST_F(WmiSetting, APanelThatIsNotThereAnyMoreIsNotSetAndNoMethodIsCalled) {
    g_wmi.found = {Panel(L"one"), Panel(L"two")};
    EXPECT_FALSE(SetWmiBrightness(L"panel", 100));
    EXPECT_EQ(g_calls,
              kAsked + PassOver(1) + PassOver(2) + CallRecord({kNext, "release enumerator"}) + kReleased);
}

TEST_F(WmiSetting, AWalkThatTimesOutOrFailsHasFoundNothing) {
    const Found ends[] = {{{}, WBEM_S_TIMEDOUT, false}, {{}, kFailed, false}, {{}, WBEM_S_NO_ERROR, false}};
    for (const Found& end : ends) {
        g_wmi.found = {Panel(L"one"), end, Panel(L"panel")};
        g_calls.clear();
        EXPECT_FALSE(SetWmiBrightness(L"panel", 100));
        EXPECT_EQ(g_calls, kAsked + PassOver(1) + CallRecord({kNext, "release enumerator"}) + kReleased);
    }
}

TEST_F(WmiSetting, NamesAreComparedByTheirExactCodeUnits) {
    const std::wstring names[] = {L"PANEL",  L"panel ",     L" panel", L"pane",
                                  L"panels", L"p\u00e4nel", L"",       std::wstring(L"panel\0x", 7)};
    for (const std::wstring& name : names) {
        g_wmi.found = {Panel(name)};
        EXPECT_FALSE(Finds(L"panel")) << Narrow(name);
        EXPECT_EQ(Finds(name), true) << Narrow(name);
    }
    // One letter, composed and decomposed.
    g_wmi.found = {Panel(L"\u00e9")};
    EXPECT_FALSE(Finds(L"e\u0301"));
}

TEST_F(WmiSetting, ANameOf300CharactersIsFound) {
    const std::wstring name = std::wstring(299, L'n') + L"1";
    g_wmi.found = {Panel(std::wstring(299, L'n') + L"2"), Panel(name)};
    EXPECT_TRUE(SetWmiBrightness(name, 100));
}

TEST_F(WmiSetting, ANameThatIsNoTextMatchesNoPanel) {
    for (const Property& name : {Number(VT_I4, 4), Number(VT_NULL, 0), Property{S_OK, VT_BSTR, L"", 0, false},
                                 Property{kFailed, VT_BSTR, L"panel", 0, true}}) {
        g_wmi.found[0].properties[L"InstanceName"] = name;
        EXPECT_FALSE(Finds(L"panel")) << name.type;
    }
}

TEST_F(WmiSetting, APathThatIsNoTextIsEmptyAndTheCallDecides) {
    for (const Property& path : {Number(VT_I4, 4), Number(VT_NULL, 0), Property{S_OK, VT_BSTR, L"", 0, false},
                                 Property{kFailed, VT_BSTR, L"path of panel", 0, true}}) {
        g_wmi.found[0].properties[L"__PATH"] = path;
        for (const HRESULT answer : {S_OK, static_cast<HRESULT>(WBEM_E_INVALID_OBJECT_PATH)}) {
            g_wmi.exec = answer;
            g_calls.clear();
            EXPECT_EQ(SetWmiBrightness(L"panel", 100), answer == S_OK) << path.type;
            EXPECT_TRUE(WasCalled("exec : WmiSetBrightness flags 0"));
        }
    }
}

TEST_F(WmiSetting, WithoutTheClassTheMethodOrItsParametersNothingIsSet) {
    struct Case {
        Step FakeWmi::*step;
        CallRecord calls;
    };
    const Case cases[] = {
        {&FakeWmi::getObject, {}},
        {&FakeWmi::getMethod, {"get method WmiSetBrightness", "release class"}},
        {&FakeWmi::spawn, {"get method WmiSetBrightness", "spawn", "release signature", "release class"}},
    };
    for (const Case& failing : cases) {
        for (const Step& step : {kRefused, kNullHandedOut}) {
            g_wmi = FakeWmi{};
            g_wmi.found = {Panel(L"panel")};
            g_wmi.*failing.step = step;
            g_calls.clear();
            EXPECT_FALSE(SetWmiBrightness(L"panel", 100));
            EXPECT_EQ(g_calls, kAsked + Match(1) + CallRecord{"get object WmiMonitorBrightnessMethods"} +
                                   failing.calls + kReleased);
        }
        g_wmi.*failing.step = {E_FAIL, true};
        EXPECT_FALSE(SetWmiBrightness(L"panel", 100));
    }
}

TEST_F(WmiSetting, AParameterThatIsRefusedEndsItBeforeTheMethodIsCalled) {
    for (HRESULT FakeWmi::*put : {&FakeWmi::putTimeout, &FakeWmi::putBrightness}) {
        g_wmi = FakeWmi{};
        g_wmi.found = {Panel(L"panel")};
        g_wmi.*put = kFailed;
        EXPECT_FALSE(Finds(L"panel"));
    }
}

TEST_F(WmiSetting, TheResultIsThatOfTheMethodCall) {
    for (const HRESULT answer :
         {kFailed, E_ACCESSDENIED, static_cast<HRESULT>(WBEM_E_INVALID_METHOD_PARAMETERS)}) {
        g_wmi.exec = answer;
        EXPECT_FALSE(SetWmiBrightness(L"panel", 100));
        EXPECT_TRUE(WasCalled(kExec));
    }
    for (const HRESULT answer : {S_OK, S_FALSE}) {
        g_wmi.exec = answer;
        EXPECT_TRUE(SetWmiBrightness(L"panel", 100));
    }
}
