#include "filter/fake_screen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "support/call_record.h"
#include "support/seam.h"

AMBREL_SEAM_SET(fake_screen);

FakeScreen g_screen;

namespace {

HDC const kContext = MakeHandle<HDC>(0xDC);

HDC WINAPI FakeGetDC(HWND window) {
    EXPECT_EQ(window, nullptr);
    Record("get dc");
    if (!g_screen.givesContext) return nullptr;
    if (g_screen.contextsRefused > 0) {
        g_screen.contextsRefused -= 1;
        return nullptr;
    }
    g_screen.contextsHeld += 1;
    return kContext;
}

int WINAPI FakeReleaseDC(HWND window, HDC dc) {
    EXPECT_EQ(window, nullptr);
    EXPECT_EQ(dc, kContext);
    Record("release dc");
    g_screen.contextsHeld -= 1;
    return 1;
}

constexpr std::uintptr_t kFirstDisplayContext = 0xD100;

// Null for the whole screen's context.
FakeDisplay* DisplayOf(HDC dc) {
    const std::uintptr_t index = ValueOf(dc) - kFirstDisplayContext;
    return index < g_screen.displays.size() ? &g_screen.displays[index] : nullptr;
}

bool Accepts(const FakeDisplay& display, const Ramp& ramp) {
    switch (display.accepts) {
        case Accepts::Everything: return true;
        case Accepts::IdentityOnly:
            return ramp == IdentityRamp() || (display.takesItsRampAgain && ramp == display.shown);
        case Accepts::Nothing: break;
    }
    return false;
}

BOOL SetDisplayRamp(FakeDisplay& display, const Ramp& ramp) {
    EXPECT_TRUE(display.contextHeld);
    Record("set ramp of ", Narrow(display.name));
    if (!Accepts(display, ramp)) return FALSE;
    display.shown = ramp;
    display.loads += 1;
    return TRUE;
}

Ramp Deviating(Ramp ramp, const std::vector<Deviation>& deviations) {
    for (const Deviation& deviation : deviations) {
        std::uint16_t& entry = ramp.channels[deviation.channel][deviation.entry];
        const int value = entry + deviation.by;
        EXPECT_GE(value, 0) << "the test asks for an impossible read-back";
        EXPECT_LE(value, 65535) << "the test asks for an impossible read-back";
        entry = static_cast<std::uint16_t>(value);
    }
    return ramp;
}

BOOL ReadDisplayRamp(const FakeDisplay& display, LPVOID ramp) {
    EXPECT_TRUE(display.contextHeld);
    Record("read ramp of ", Narrow(display.name));
    if (!display.canBeRead) {
        std::memset(ramp, 0x55, sizeof(Ramp));
        return FALSE;
    }
    const Ramp read = Deviating(display.shown, display.deviations);
    std::memcpy(ramp, &read, sizeof(read));
    return TRUE;
}

// Windows also lists inactive devices and ends the list with FALSE.
BOOL WINAPI FakeEnumDisplayDevicesW(LPCWSTR device, DWORD index, DISPLAY_DEVICEW* found, DWORD flags) {
    EXPECT_EQ(device, nullptr);
    EXPECT_EQ(flags, 0U);
    EXPECT_EQ(found->cb, sizeof(*found));
    if (index >= g_screen.displays.size()) return FALSE;
    const FakeDisplay& display = g_screen.displays[index];
    found->DeviceName[display.name.copy(found->DeviceName, 31)] = L'\0';
    found->StateFlags = display.state;
    return TRUE;
}

HDC WINAPI FakeCreateDCW(LPCWSTR driver, LPCWSTR device, LPCWSTR port, const DEVMODEW* mode) {
    EXPECT_STREQ(driver, device);
    EXPECT_EQ(port, nullptr);
    EXPECT_EQ(mode, nullptr);
    for (std::size_t i = 0; i < g_screen.displays.size(); ++i) {
        FakeDisplay& display = g_screen.displays[i];
        if (display.name != device) continue;
        Record("create dc of ", Narrow(device));
        if (!display.givesContext) return nullptr;
        if (display.contextsRefused > 0) {
            display.contextsRefused -= 1;
            return nullptr;
        }
        EXPECT_FALSE(display.contextHeld);
        display.contextHeld = true;
        g_screen.contextsHeld += 1;
        return MakeHandle<HDC>(kFirstDisplayContext + i);
    }
    ADD_FAILURE() << "no such display: " << Narrow(device);
    return nullptr;
}

// The cursors, which are drawn in such a context, are replaced too.
HDC WINAPI FakeCreateCompatibleDC(HDC) {
    return nullptr;
}

BOOL WINAPI FakeDeleteDC(HDC dc) {
    FakeDisplay* display = DisplayOf(dc);
    if (display == nullptr || !display->contextHeld) {
        ADD_FAILURE() << "a context is deleted that was not created";
        return FALSE;
    }
    Record("delete dc of ", Narrow(display->name));
    display->contextHeld = false;
    g_screen.contextsHeld -= 1;
    return TRUE;
}

BOOL WINAPI FakeSetDeviceGammaRamp(HDC dc, LPVOID ramp) {
    Ramp seen = {};
    std::memcpy(&seen, ramp, sizeof(seen));
    if (FakeDisplay* display = DisplayOf(dc)) return SetDisplayRamp(*display, seen);
    EXPECT_EQ(dc, kContext);
    Record("set ramp");
    g_screen.seen.push_back(seen);
    return g_screen.acceptsRamps ? TRUE : FALSE;
}

BOOL WINAPI FakeGetDeviceGammaRamp(HDC dc, LPVOID ramp) {
    if (const FakeDisplay* display = DisplayOf(dc)) return ReadDisplayRamp(*display, ramp);
    EXPECT_EQ(dc, kContext);
    Record("read ramp");
    const auto* bytes = static_cast<const unsigned char*>(ramp);
    if (std::any_of(bytes, bytes + sizeof(Ramp), [](unsigned char byte) { return byte != 0; })) {
        g_screen.readBuffersWereZeroed = false;
    }
    if (!g_screen.canBeRead) {
        std::memset(ramp, 0x55, sizeof(Ramp));
        return FALSE;
    }
    const Ramp loaded = Deviating(g_screen.seen.back(), g_screen.deviations);
    std::memcpy(ramp, &loaded, sizeof(loaded));
    return TRUE;
}

}  // namespace

AMBREL_SEAM(GetDC, FakeGetDC);
AMBREL_SEAM(ReleaseDC, FakeReleaseDC);
AMBREL_SEAM(SetDeviceGammaRamp, FakeSetDeviceGammaRamp);
AMBREL_SEAM(GetDeviceGammaRamp, FakeGetDeviceGammaRamp);
AMBREL_SEAM(EnumDisplayDevicesW, FakeEnumDisplayDevicesW);
AMBREL_SEAM(CreateDCW, FakeCreateDCW);
AMBREL_SEAM(CreateCompatibleDC, FakeCreateCompatibleDC);
AMBREL_SEAM(DeleteDC, FakeDeleteDC);

FakeDisplay NamedDisplay(int number) {
    FakeDisplay display;
    display.name = L"\\\\.\\DISPLAY" + std::to_wstring(number);
    display.shown = IdentityRamp();
    return display;
}

Ramp IdentityRamp() {
    Ramp ramp = {};
    for (auto& channel : ramp.channels) {
        for (std::size_t i = 0; i < 256; ++i)
            channel[i] = static_cast<std::uint16_t>(257 * i);
    }
    return ramp;
}

bool operator==(const Ramp& one, const Ramp& other) {
    return std::memcmp(&one, &other, sizeof(Ramp)) == 0;
}
