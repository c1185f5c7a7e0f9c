// Setting a panel, which is found by its name.
#include <gtest/gtest.h>

#include "brightness/fake_wmi.h"
#include "brightness/wmi.h"

namespace {

constexpr char kQuery[] =
    "query WQL SELECT InstanceName, __PATH FROM WmiMonitorBrightnessMethods WHERE Active = TRUE flags 48";
constexpr char kNext[] = "next 1500 1";
constexpr char kExec[] = "exec path of panel: WmiSetBrightness flags 0";

const CallRecord kQueried = kConnected + CallRecord{kQuery};
const CallRecord kReleased = {"release services", "release locator"};

CallRecord Skip(int number) {
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
        g_wmi.results = {Panel(L"panel")};
    }
    void TearDown() override { ExpectNoLeaks(); }

    static bool WasCalled(const std::string& beginning) {
        for (const std::string& call : g_calls) {
            if (call.rfind(beginning, 0) == 0) return true;
        }
        return false;
    }

    static bool Finds(const std::wstring& name) {
        g_calls.clear();
        const bool set = SetWmiBrightness(name, 100);
        EXPECT_EQ(WasCalled("exec"), set);
        return set;
    }
};

}  // namespace

TEST_F(WmiSetting, APanelIsSetWithExactlyTheseCalls) {
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
    EXPECT_EQ(g_calls, kQueried + Match(1) + setting + kReleased);
}

TEST_F(WmiSetting, ThePercentIsSentUnchangedUpTo100) {
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

TEST_F(WmiSetting, TheSearchEndsAtTheFirstPanelWithTheName) {
    QueryResult duplicate = Panel(L"panel");
    duplicate.properties[L"__PATH"] = Text(L"second path");
    g_wmi.results = {Panel(L"other"), Panel(L"panel"), duplicate};
    EXPECT_TRUE(SetWmiBrightness(L"panel", 100));
    const CallRecord walk(g_calls.begin(), g_calls.begin() + 12);
    EXPECT_EQ(walk, kQueried + Skip(1) + Match(2));
    EXPECT_TRUE(WasCalled(kExec));
}

TEST_F(WmiSetting, NoMethodIsCalledForAPanelThatIsNoLongerActive) {
    g_wmi.results = {Panel(L"one"), Panel(L"two")};
    EXPECT_FALSE(SetWmiBrightness(L"panel", 100));
    EXPECT_EQ(g_calls, kQueried + Skip(1) + Skip(2) + CallRecord({kNext, "release enumerator"}) + kReleased);
}

TEST_F(WmiSetting, ASearchThatTimesOutOrFailsFindsNothing) {
    const QueryResult ends[] = {
        {{}, WBEM_S_TIMEDOUT, false}, {{}, kFailed, false}, {{}, WBEM_S_NO_ERROR, false}};
    for (const QueryResult& end : ends) {
        g_wmi.results = {Panel(L"one"), end, Panel(L"panel")};
        g_calls.clear();
        EXPECT_FALSE(SetWmiBrightness(L"panel", 100));
        EXPECT_EQ(g_calls, kQueried + Skip(1) + CallRecord({kNext, "release enumerator"}) + kReleased);
    }
}

TEST_F(WmiSetting, NamesAreComparedByCodeUnits) {
    const std::wstring names[] = {L"PANEL",  L"panel ",     L" panel", L"pane",
                                  L"panels", L"p\u00e4nel", L"",       std::wstring(L"panel\0x", 7)};
    for (const std::wstring& name : names) {
        g_wmi.results = {Panel(name)};
        EXPECT_FALSE(Finds(L"panel")) << Narrow(name);
        EXPECT_EQ(Finds(name), true) << Narrow(name);
    }
    // One letter, composed and decomposed.
    g_wmi.results = {Panel(L"\u00e9")};
    EXPECT_FALSE(Finds(L"e\u0301"));
}

TEST_F(WmiSetting, ANameOf300CharactersIsFound) {
    const std::wstring name = std::wstring(299, L'n') + L"1";
    g_wmi.results = {Panel(std::wstring(299, L'n') + L"2"), Panel(name)};
    EXPECT_TRUE(SetWmiBrightness(name, 100));
}

TEST_F(WmiSetting, ANameThatIsNotAStringMatchesNoPanel) {
    for (const Property& name : {Number(VT_I4, 4), Number(VT_NULL, 0), Property{S_OK, VT_BSTR, L"", 0, false},
                                 Property{kFailed, VT_BSTR, L"panel", 0, true}}) {
        g_wmi.results[0].properties[L"InstanceName"] = name;
        EXPECT_FALSE(Finds(L"panel")) << name.type;
    }
}

TEST_F(WmiSetting, APathThatIsNotAStringIsPassedAsEmpty) {
    for (const Property& path : {Number(VT_I4, 4), Number(VT_NULL, 0), Property{S_OK, VT_BSTR, L"", 0, false},
                                 Property{kFailed, VT_BSTR, L"path of panel", 0, true}}) {
        g_wmi.results[0].properties[L"__PATH"] = path;
        for (const HRESULT result : {S_OK, static_cast<HRESULT>(WBEM_E_INVALID_OBJECT_PATH)}) {
            g_wmi.exec = result;
            g_calls.clear();
            EXPECT_EQ(SetWmiBrightness(L"panel", 100), result == S_OK) << path.type;
            EXPECT_TRUE(WasCalled("exec : WmiSetBrightness flags 0"));
        }
    }
}

TEST_F(WmiSetting, NothingIsSetIfClassMethodOrParametersAreMissing) {
    struct Case {
        CallResult FakeWmi::*call;
        CallRecord calls;
    };
    const Case cases[] = {
        {&FakeWmi::getObject, {}},
        {&FakeWmi::getMethod, {"get method WmiSetBrightness", "release class"}},
        {&FakeWmi::spawn, {"get method WmiSetBrightness", "spawn", "release signature", "release class"}},
    };
    for (const Case& failing : cases) {
        for (const CallResult& result : {kRefused, kNullReturned}) {
            g_wmi = FakeWmi{};
            g_wmi.results = {Panel(L"panel")};
            g_wmi.*failing.call = result;
            g_calls.clear();
            EXPECT_FALSE(SetWmiBrightness(L"panel", 100));
            EXPECT_EQ(g_calls, kQueried + Match(1) + CallRecord{"get object WmiMonitorBrightnessMethods"} +
                                   failing.calls + kReleased);
        }
        g_wmi.*failing.call = {E_FAIL, true};
        EXPECT_FALSE(SetWmiBrightness(L"panel", 100));
    }
}

TEST_F(WmiSetting, TheMethodIsNotCalledIfAParameterIsRefused) {
    for (HRESULT FakeWmi::*put : {&FakeWmi::putTimeout, &FakeWmi::putBrightness}) {
        g_wmi = FakeWmi{};
        g_wmi.results = {Panel(L"panel")};
        g_wmi.*put = kFailed;
        EXPECT_FALSE(Finds(L"panel"));
    }
}

TEST_F(WmiSetting, TheResultIsThatOfTheMethodCall) {
    for (const HRESULT result :
         {kFailed, E_ACCESSDENIED, static_cast<HRESULT>(WBEM_E_INVALID_METHOD_PARAMETERS)}) {
        g_wmi.exec = result;
        EXPECT_FALSE(SetWmiBrightness(L"panel", 100));
        EXPECT_TRUE(WasCalled(kExec));
    }
    for (const HRESULT result : {S_OK, S_FALSE}) {
        g_wmi.exec = result;
        EXPECT_TRUE(SetWmiBrightness(L"panel", 100));
    }
}
