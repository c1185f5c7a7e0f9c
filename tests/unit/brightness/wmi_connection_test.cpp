// The connection, which listing and setting make in the same way and each for itself.
#include <gtest/gtest.h>

#include "brightness/fake_wmi.h"
#include "brightness/wmi.h"
#include "support/com_books.h"

namespace {

constexpr char kPanelsQuery[] =
    "query WQL SELECT InstanceName, CurrentBrightness FROM WmiMonitorBrightness WHERE Active = TRUE flags 48";
constexpr char kMethodsQuery[] =
    "query WQL SELECT InstanceName, __PATH FROM WmiMonitorBrightnessMethods WHERE Active = TRUE flags 48";

// Both operations over the same panel. Each returns whether it got anywhere.
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
        g_wmi.found = {Panel(L"panel")};
    }
    void TearDown() override { CheckNothingIsLeft(); }

    static bool Run() { return GetParam().run(); }
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Wmi, WmiConnection,
                         testing::Values(Operation{"Listing", ListSomething, kPanelsQuery},
                                         Operation{"Setting", SetSomething, kMethodsQuery}),
                         [](const auto& test) { return test.param.name; });

TEST_P(WmiConnection, IsMadeToRootWmiGivenItsBlanketAndAskedForwardOnlyAndAtOnce) {
    EXPECT_TRUE(Run());
    const CallRecord beginning(g_calls.begin(), g_calls.begin() + 4);
    EXPECT_EQ(beginning, kConnected + CallRecord{GetParam().query});
}

TEST_P(WmiConnection, IsMadeAnewEachTimeAndReleasedWithTheLocatorLast) {
    for (int i = 0; i < 3; ++i) {
        g_calls.clear();
        EXPECT_TRUE(Run());
        EXPECT_EQ(g_calls.front(), "create locator");
        const CallRecord end(g_calls.end() - 2, g_calls.end());
        EXPECT_EQ(end, (CallRecord{"release services", "release locator"}));
    }
}

TEST_P(WmiConnection, WithoutALocatorNothingIsDone) {
    for (const Step& step : {kRefused, kNullHandedOut}) {
        g_wmi.locator = step;
        g_calls.clear();
        EXPECT_FALSE(Run());
        EXPECT_EQ(g_calls, (CallRecord{"create locator"}));
    }
}

TEST_P(WmiConnection, WithoutTheNamespaceOnlyTheLocatorIsReleased) {
    for (const Step& step : {kRefused, kNullHandedOut}) {
        g_wmi.connect = step;
        g_calls.clear();
        EXPECT_FALSE(Run());
        EXPECT_EQ(g_calls, (CallRecord{"create locator", "connect ROOT\\WMI", "release locator"}));
    }
}

TEST_P(WmiConnection, WithoutTheBlanketNothingIsAsked) {
    g_wmi.blanket = E_ACCESSDENIED;
    EXPECT_FALSE(Run());
    EXPECT_EQ(g_calls, kConnected + CallRecord({"release services", "release locator"}));
}

TEST_P(WmiConnection, AFailedOrEmptyHandedQueryFindsNothing) {
    for (const Step& step : {kRefused, kNullHandedOut}) {
        g_wmi.query = step;
        g_calls.clear();
        EXPECT_FALSE(Run());
        EXPECT_EQ(g_calls,
                  kConnected + CallRecord({GetParam().query, "release services", "release locator"}));
    }
}

// Not what a correct COM server does; but what was handed out is given back whatever was said.
TEST_P(WmiConnection, WhatAFailedCallHandsOutIsReleasedAllTheSame) {
    const Step wrong = {E_FAIL, true};
    for (Step FakeWmi::*step : {&FakeWmi::locator, &FakeWmi::connect, &FakeWmi::query}) {
        g_wmi = FakeWmi{};
        g_wmi.*step = wrong;
        EXPECT_FALSE(Run());
    }
    g_wmi = FakeWmi{};
    g_wmi.found = {Panel(L"panel")};
    g_wmi.found[0].result = E_FAIL;
    EXPECT_FALSE(Run());
}

TEST_P(WmiConnection, MemoryThatRunsOutForAnyTextMakesItFailAndLeavesNothing) {
    EXPECT_TRUE(Run());
    const int texts = AllocationsMade();
    ASSERT_GE(texts, 3) << "the namespace, the language and the query";
    for (int failing = 1; failing <= texts; ++failing) {
        OpenComBooks();
        LetAllocationFail(failing);
        EXPECT_FALSE(Run()) << failing;
        CheckNothingIsLeft();
    }
}
