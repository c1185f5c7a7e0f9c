// The connection to WMI, which enumerating and setting each open in the same way.
#include <gtest/gtest.h>

#include "brightness/fake_wmi.h"
#include "brightness/wmi.h"
#include "support/com_tracker.h"

namespace {

constexpr char kPanelsQuery[] =
    "query WQL SELECT InstanceName, CurrentBrightness FROM WmiMonitorBrightness WHERE Active = TRUE flags 48";
constexpr char kMethodsQuery[] =
    "query WQL SELECT InstanceName, __PATH FROM WmiMonitorBrightnessMethods WHERE Active = TRUE flags 48";

// Each operation returns whether it reached the panel.
bool ListSomething() {
    DisplayTargetList list;
    EnumerateWmiTargets(&list);
    return !list.empty();
}

bool SetSomething() {
    return SetWmiBrightness(L"panel", 100);
}

struct Operation {
    const char* name;
    bool (*run)();
    const char* query;
};

class WmiConnection : public testing::TestWithParam<Operation> {
protected:
    void SetUp() override {
        ResetWmi();
        g_wmi.results = {Panel(L"panel")};
    }
    void TearDown() override { ExpectNoLeaks(); }

    static bool Run() { return GetParam().run(); }
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Wmi, WmiConnection,
                         testing::Values(Operation{"Listing", ListSomething, kPanelsQuery},
                                         Operation{"Setting", SetSomething, kMethodsQuery}),
                         [](const auto& test) { return test.param.name; });

TEST_P(WmiConnection, ConnectsToRootWmiSetsTheBlanketAndQueriesForwardOnly) {
    EXPECT_TRUE(Run());
    const CallRecord beginning(g_calls.begin(), g_calls.begin() + 4);
    EXPECT_EQ(beginning, kConnected + CallRecord{GetParam().query});
}

TEST_P(WmiConnection, IsOpenedEachTimeAndReleasedWithTheLocatorLast) {
    for (int i = 0; i < 3; ++i) {
        g_calls.clear();
        EXPECT_TRUE(Run());
        EXPECT_EQ(g_calls.front(), "create locator");
        const CallRecord end(g_calls.end() - 2, g_calls.end());
        EXPECT_EQ(end, (CallRecord{"release services", "release locator"}));
    }
}

TEST_P(WmiConnection, NothingIsCalledWithoutALocator) {
    for (const CallResult& result : {kRefused, kNullReturned}) {
        g_wmi.locator = result;
        g_calls.clear();
        EXPECT_FALSE(Run());
        EXPECT_EQ(g_calls, (CallRecord{"create locator"}));
    }
}

TEST_P(WmiConnection, OnlyTheLocatorIsReleasedIfTheConnectionFails) {
    for (const CallResult& result : {kRefused, kNullReturned}) {
        g_wmi.connect = result;
        g_calls.clear();
        EXPECT_FALSE(Run());
        EXPECT_EQ(g_calls, (CallRecord{"create locator", "connect ROOT\\WMI", "release locator"}));
    }
}

TEST_P(WmiConnection, NothingIsQueriedIfTheBlanketCannotBeSet) {
    g_wmi.blanket = E_ACCESSDENIED;
    EXPECT_FALSE(Run());
    EXPECT_EQ(g_calls, kConnected + CallRecord({"release services", "release locator"}));
}

TEST_P(WmiConnection, AQueryThatFailsOrReturnsNoObjectFindsNothing) {
    for (const CallResult& result : {kRefused, kNullReturned}) {
        g_wmi.query = result;
        g_calls.clear();
        EXPECT_FALSE(Run());
        EXPECT_EQ(g_calls,
                  kConnected + CallRecord({GetParam().query, "release services", "release locator"}));
    }
}

// A correct COM server does not return an object from a failed call. If one does, the object is released.
TEST_P(WmiConnection, AnObjectThatAFailedCallReturnsIsReleased) {
    const CallResult wrong = {E_FAIL, true};
    for (CallResult FakeWmi::*call : {&FakeWmi::locator, &FakeWmi::connect, &FakeWmi::query}) {
        g_wmi = FakeWmi{};
        g_wmi.*call = wrong;
        EXPECT_FALSE(Run());
    }
    g_wmi = FakeWmi{};
    g_wmi.results = {Panel(L"panel")};
    g_wmi.results[0].result = E_FAIL;
    EXPECT_FALSE(Run());
}

TEST_P(WmiConnection, FailsWithoutALeakIfAnyStringCannotBeAllocated) {
    EXPECT_TRUE(Run());
    const int texts = AllocationsMade();
    ASSERT_GE(texts, 3) << "the namespace, the language and the query";
    for (int failing = 1; failing <= texts; ++failing) {
        StartComTracking();
        LetAllocationFail(failing);
        EXPECT_FALSE(Run()) << failing;
        ExpectNoLeaks();
    }
}
