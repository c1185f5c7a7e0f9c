// Enumerating panels: the target for each result of the query.
#include <gtest/gtest.h>

#include "brightness/fake_wmi.h"
#include "brightness/wmi.h"

namespace {

constexpr char kQuery[] =
    "query WQL SELECT InstanceName, CurrentBrightness FROM WmiMonitorBrightness WHERE Active = TRUE flags 48";
constexpr char kNext[] = "next 1500 1";

const CallRecord kQueried = kConnected + CallRecord{kQuery};
const CallRecord kReleased = {"release enumerator", "release services", "release locator"};

CallRecord Read(int number) {
    return {kNext, "get InstanceName", "get CurrentBrightness", "release result " + std::to_string(number)};
}

struct ListedPanel {
    std::wstring name;
    std::uint32_t percent;

    bool operator==(const ListedPanel&) const = default;
};

void PrintTo(const ListedPanel& seen, std::ostream* out) {
    *out << Narrow(seen.name.substr(0, 40)) << " " << seen.percent;
}

using PanelList = std::vector<ListedPanel>;

class WmiEnumeration : public testing::Test {
protected:
    void SetUp() override { ResetWmi(); }
    void TearDown() override { ExpectNoLeaks(); }

    static QueryResult Named(const Property& name) {
        QueryResult panel = Panel(L"", 40);
        panel.properties[L"InstanceName"] = name;
        return panel;
    }
    static QueryResult Showing(const Property& brightness) {
        QueryResult panel = Panel(L"panel");
        panel.properties[L"CurrentBrightness"] = brightness;
        return panel;
    }
    static QueryResult Without(const wchar_t* property) {
        QueryResult panel = Panel(L"panel");
        panel.properties.erase(property);
        return panel;
    }

    static PanelList List(const std::vector<QueryResult>& found) {
        g_wmi.results = found;
        DisplayTargetList list;
        EnumerateWmiTargets(&list);
        PanelList seen;
        for (const DisplayTarget& target : list) {
            EXPECT_EQ(target.kind, TargetKind::WmiPanel);
            EXPECT_EQ(target.minimum, 0U);
            EXPECT_EQ(target.maximum, 100U);
            seen.push_back({target.name, target.percent});
        }
        return seen;
    }
};

}  // namespace

TEST_F(WmiEnumeration, AnEmptyQueryListsNoPanel) {
    EXPECT_EQ(List({}), PanelList{});
    EXPECT_EQ(g_calls, kQueried + CallRecord{kNext} + kReleased);
}

TEST_F(WmiEnumeration, APanelIsReadOnceAndReleasedBeforeTheNextIsRequested) {
    EXPECT_EQ(List({Panel(L"DISPLAY\\SHP1\\4&1_0", 37)}), (PanelList{{L"DISPLAY\\SHP1\\4&1_0", 37}}));
    EXPECT_EQ(g_calls, kQueried + Read(1) + CallRecord{kNext} + kReleased);
}

TEST_F(WmiEnumeration, PanelsAreListedInTheOrderOfTheQuery) {
    EXPECT_EQ(List({Panel(L"b", 1), Panel(L"a", 2), Panel(L"c", 3)}),
              (PanelList{{L"b", 1}, {L"a", 2}, {L"c", 3}}));
    EXPECT_EQ(g_calls, kQueried + Read(1) + Read(2) + Read(3) + CallRecord{kNext} + kReleased);
}

TEST_F(WmiEnumeration, TwoPanelsWithTheSameNameAreTwoTargets) {
    EXPECT_EQ(List({Panel(L"panel", 10), Panel(L"panel", 90)}), (PanelList{{L"panel", 10}, {L"panel", 90}}));
}

TEST_F(WmiEnumeration, ATimeOutEndsTheListAlthoughItIsASuccessCode) {
    EXPECT_EQ(List({Panel(L"first"), {{}, WBEM_S_TIMEDOUT, false}, Panel(L"never reached")}),
              (PanelList{{L"first", 50}}));
    EXPECT_EQ(g_calls, kQueried + Read(1) + CallRecord{kNext} + kReleased);
}

TEST_F(WmiEnumeration, AFailureEndsTheListAndKeepsThePanelsBeforeIt) {
    EXPECT_EQ(List({Panel(L"first"), {{}, kFailed, false}, Panel(L"never reached")}),
              (PanelList{{L"first", 50}}));
    EXPECT_EQ(g_calls, kQueried + Read(1) + CallRecord{kNext} + kReleased);
}

TEST_F(WmiEnumeration, SuccessWithoutAnObjectEndsTheList) {
    EXPECT_EQ(List({{{}, WBEM_S_NO_ERROR, false}, Panel(L"never reached")}), PanelList{});
}

// Some providers return WBEM_S_FALSE with their last object.
TEST_F(WmiEnumeration, AnObjectReturnedWithAnotherSuccessCodeIsListed) {
    QueryResult last = Panel(L"last");
    last.result = WBEM_S_FALSE;
    EXPECT_EQ(List({last}), (PanelList{{L"last", 50}}));
}

TEST_F(WmiEnumeration, APanelWithoutAUsableNameIsSkipped) {
    const Property kinds[] = {
        Text(L""),
        Number(VT_I4, 4),
        Number(VT_NULL, 0),
        Number(VT_EMPTY, 0),
        Number(VT_UNKNOWN, 0),
        {S_OK, VT_BSTR, L"", 0, false},
        {kFailed, VT_BSTR, L"panel", 0, true},
    };
    for (const Property& kind : kinds)
        EXPECT_EQ(List({Named(kind), Panel(L"next")}), (PanelList{{L"next", 50}})) << kind.type;
    EXPECT_EQ(List({Without(L"InstanceName"), Panel(L"next")}), (PanelList{{L"next", 50}}));
}

TEST_F(WmiEnumeration, ANameIsNotTruncatedOrChanged) {
    const std::wstring names[] = {
        std::wstring(300, L'n'), L" ", L"Tr\u00e9s \U0001F4A1\"\\'", std::wstring(L"in\0side", 7), L"panel",
    };
    for (const std::wstring& name : names)
        EXPECT_EQ(List({Panel(name, 5)}), (PanelList{{name, 5}}));
}

TEST_F(WmiEnumeration, TheBrightnessIsReadByItsType) {
    EXPECT_EQ(
        List({Showing(Number(VT_UI1, 120)), Showing(Number(VT_I4, -5)), Showing(Number(VT_UI2, 61)),
              Showing(Number(VT_I2, -1)), Showing(Number(VT_UI4, 99)), Showing(Number(VT_I8, 50))}),
        (PanelList{
            {L"panel", 100}, {L"panel", 0}, {L"panel", 61}, {L"panel", 0}, {L"panel", 99}, {L"panel", 0}}));
}

TEST_F(WmiEnumeration, ABrightnessThatIsAStringOrAnObjectReadsAs0AndIsFreed) {
    EXPECT_EQ(List({Showing(Text(L"70")), Showing(Number(VT_UNKNOWN, 0))}),
              (PanelList{{L"panel", 0}, {L"panel", 0}}));
}

TEST_F(WmiEnumeration, ABrightnessThatCannotBeReadIs0) {
    EXPECT_EQ(List({Without(L"CurrentBrightness")}), (PanelList{{L"panel", 0}}));
    EXPECT_EQ(List({Showing({kFailed, VT_UI1, L"", 70, true})}), (PanelList{{L"panel", 0}}));
}

TEST_F(WmiEnumeration, PanelsAreAppendedToTheList) {
    g_wmi.results = {Panel(L"panel", 20)};
    DisplayTargetList list = {{TargetKind::DdcMonitor, L"before", 1, 2, 3}};
    EnumerateWmiTargets(&list);
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].name, L"before");
    EXPECT_EQ(list[1].name, L"panel");
}
