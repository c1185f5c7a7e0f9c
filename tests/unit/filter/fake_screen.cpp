#include "filter/fake_screen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "support/call_record.h"
#include "support/seam.h"

FakeScreen g_screen;

namespace {

HDC const kContext = MakeHandle<HDC>(0xDC);

HDC WINAPI FakeGetDC(HWND window) {
    EXPECT_EQ(window, nullptr);
    Record("get dc");
    if (!g_screen.givesContext) return nullptr;
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

BOOL WINAPI FakeSetDeviceGammaRamp(HDC dc, LPVOID ramp) {
    EXPECT_EQ(dc, kContext);
    Record("set ramp");
    Ramp seen = {};
    std::memcpy(&seen, ramp, sizeof(seen));
    g_screen.seen.push_back(seen);
    return g_screen.acceptsRamps ? TRUE : FALSE;
}

BOOL WINAPI FakeGetDeviceGammaRamp(HDC dc, LPVOID ramp) {
    EXPECT_EQ(dc, kContext);
    Record("read ramp");
    const auto* bytes = static_cast<const unsigned char*>(ramp);
    if (std::any_of(bytes, bytes + sizeof(Ramp), [](unsigned char byte) { return byte != 0; })) {
        g_screen.handedZeroesToRead = false;
    }
    if (!g_screen.canBeRead) {
        std::memset(ramp, 0x55, sizeof(Ramp));
        return FALSE;
    }
    Ramp loaded = g_screen.seen.back();
    for (const Deviation& deviation : g_screen.deviations) {
        std::uint16_t& entry = loaded.channels[deviation.channel][deviation.entry];
        const int value = entry + deviation.by;
        EXPECT_GE(value, 0) << "the test asks for an impossible read-back";
        EXPECT_LE(value, 65535) << "the test asks for an impossible read-back";
        entry = static_cast<std::uint16_t>(value);
    }
    std::memcpy(ramp, &loaded, sizeof(loaded));
    return TRUE;
}

}  // namespace

AMBREL_SEAM(GetDC, FakeGetDC);
AMBREL_SEAM(ReleaseDC, FakeReleaseDC);
AMBREL_SEAM(SetDeviceGammaRamp, FakeSetDeviceGammaRamp);
AMBREL_SEAM(GetDeviceGammaRamp, FakeGetDeviceGammaRamp);
