// What becomes of the panels that the query finds.
#include <gtest/gtest.h>

#include "brightness/fake_wmi.h"
#include "brightness/wmi.h"

namespace {

constexpr char kQuery[] =
    "query WQL SELECT InstanceName, CurrentBrightness FROM WmiMonitorBrightness WHERE Active = TRUE flags 48";
constexpr char kNext[] = "next 1500 1";

const CallRecord kAsked = kConnected + CallRecord{kQuery};
const CallRecord kReleased = {"release enumerator", "release services", "release locator"};

CallRecord Read(int number) {
    return {kNext, "get InstanceName", "get CurrentBrightness", "release result " + std::to_string(number)};
}

struct Seen {
    std::wstring name;
    std::uint32_t percent;

    bool operator==(const Seen&) const = default;
};

void PrintTo(const Seen& seen, std::ostream* out) {
    *out << Narrow(seen.name.substr(0, 40)) << " " << seen.percent;
}

using SeenList = std::vector<Seen>;

class WmiEnumeration : public testing::Test {
protected:
    void SetUp() override { ResetWmi(); }
    void TearDown() override { CheckNothingIsLeft(); }

    // A panel whose name or brightness is this.
    static Found Named(const Property& name) {
        Found panel = Panel(L"", 40);
        panel.properties[L"InstanceName"] = name;
        return panel;
    }
    static Found Showing(const Property& brightness) {
        Found panel = Panel(L"panel");
        panel.properties[L"CurrentBrightness"] = brightness;
        return panel;
    }
    static Found Without(const wchar_t* property) {
        Found panel = Panel(L"panel");
        panel.properties.erase(property);
        return panel;
    }

    static SeenList List(const std::vector<Found>& found) {
        g_wmi.found = found;
        DisplayTargetList list;
        EnumerateWmiTargets(&list);
        SeenList seen;
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

TEST_F(WmiEnumeration, ADesktopComputerHasNoPanel) {
    EXPECT_EQ(List({}), SeenList{});
    EXPECT_EQ(g_calls, kAsked + CallRecord{kNext} + kReleased);
}

TEST_F(WmiEnumeration, OnePanelIsReadOnceAndReleasedBeforeTheNextIsAskedFor) {
    EXPECT_EQ(List({Panel(L"DISPLAY\\SHP1\\4&1_0", 37)}), (SeenList{{L"DISPLAY\\SHP1\\4&1_0", 37}}));
    EXPECT_EQ(g_calls, kAsked + Read(1) + CallRecord{kNext} + kReleased);
}

TEST_F(WmiEnumeration, PanelsComeInTheOrderOfTheQuery) {
    EXPECT_EQ(List({Panel(L"b", 1), Panel(L"a", 2), Panel(L"c", 3)}),
              (SeenList{{L"b", 1}, {L"a", 2}, {L"c", 3}}));
    EXPECT_EQ(g_calls, kAsked + Read(1) + Read(2) + Read(3) + CallRecord{kNext} + kReleased);
}

TEST_F(WmiEnumeration, TwoPanelsOfOneNameAreTwoTargets) {
    EXPECT_EQ(List({Panel(L"twin", 10), Panel(L"twin", 90)}), (SeenList{{L"twin", 10}, {L"twin", 90}}));
}

TEST_F(WmiEnumeration, ATimeOutEndsTheListAlthoughItIsASuccess) {
    EXPECT_EQ(List({Panel(L"first"), {{}, WBEM_S_TIMEDOUT, false}, Panel(L"never reached")}),
              (SeenList{{L"first", 50}}));
    EXPECT_EQ(g_calls, kAsked + Read(1) + CallRecord{kNext} + kReleased);
}

TEST_F(WmiEnumeration, AFailureEndsTheListAndKeepsWhatWasFound) {
    EXPECT_EQ(List({Panel(L"first"), {{}, kFailed, false}, Panel(L"never reached")}),
              (SeenList{{L"first", 50}}));
    EXPECT_EQ(g_calls, kAsked + Read(1) + CallRecord{kNext} + kReleased);
}

TEST_F(WmiEnumeration, SuccessWithoutAnObjectEndsTheList) {
    EXPECT_EQ(List({{{}, WBEM_S_NO_ERROR, false}, Panel(L"never reached")}), SeenList{});
}

// Some providers say so of the last object that they hand out.
TEST_F(WmiEnumeration, AnObjectThatComesWithASuccessOfAnotherKindCounts) {
    Found last = Panel(L"last");
    last.result = WBEM_S_FALSE;
    EXPECT_EQ(List({last}), (SeenList{{L"last", 50}}));
}

TEST_F(WmiEnumeration, APanelWithoutAUsableNameIsSkippedAndTheNextIsRead) {
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
        EXPECT_EQ(List({Named(kind), Panel(L"next")}), (SeenList{{L"next", 50}})) << kind.type;
    EXPECT_EQ(List({Without(L"InstanceName"), Panel(L"next")}), (SeenList{{L"next", 50}}));
}

TEST_F(WmiEnumeration, ANameIsTakenWholeAndUnchanged) {
    const std::wstring names[] = {
        std::wstring(300, L'n'), L" ", L"Tr\u00e9s \U0001F4A1\"\\'", std::wstring(L"in\0side", 7), L"panel",
    };
    for (const std::wstring& name : names)
        EXPECT_EQ(List({Panel(name, 5)}), (SeenList{{name, 5}}));
}

TEST_F(WmiEnumeration, TheBrightnessIsReadByItsType) {
    EXPECT_EQ(
        List({Showing(Number(VT_UI1, 120)), Showing(Number(VT_I4, -5)), Showing(Number(VT_UI2, 61)),
              Showing(Number(VT_I2, -1)), Showing(Number(VT_UI4, 99)), Showing(Number(VT_I8, 50))}),
        (SeenList{
            {L"panel", 100}, {L"panel", 0}, {L"panel", 61}, {L"panel", 0}, {L"panel", 99}, {L"panel", 0}}));
}

TEST_F(WmiEnumeration, ABrightnessThatIsATextOrAnObjectReadsAsNothingAndIsFreed) {
    EXPECT_EQ(List({Showing(Text(L"70")), Showing(Number(VT_UNKNOWN, 0))}),
              (SeenList{{L"panel", 0}, {L"panel", 0}}));
}

TEST_F(WmiEnumeration, APanelThatDoesNotTellItsBrightnessReadsAsNothing) {
    EXPECT_EQ(List({Without(L"CurrentBrightness")}), (SeenList{{L"panel", 0}}));
    EXPECT_EQ(List({Showing({kFailed, VT_UI1, L"", 70, true})}), (SeenList{{L"panel", 0}}));
}

TEST_F(WmiEnumeration, TheListIsAppendedTo) {
    g_wmi.found = {Panel(L"panel", 20)};
    DisplayTargetList list = {{TargetKind::DdcMonitor, L"before", 1, 2, 3}};
    EnumerateWmiTargets(&list);
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].name, L"before");
    EXPECT_EQ(list[1].name, L"panel");
}
