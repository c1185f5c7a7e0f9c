// Gamma ramps of one display or two.
#include <cstring>
#include <cwchar>

#include "faults/simulated_function.h"
#include "faults/simulated_platform.h"

namespace {

using Ramp = std::uint16_t[3][256];

constexpr wchar_t kSecondDisplay[] = L"\\\\.\\DISPLAY2";

const auto g_enumDisplayDevices =
    RealFunction<decltype(&EnumDisplayDevicesW)>(L"user32.dll", "EnumDisplayDevicesW");
const auto g_createDc = RealFunction<decltype(&CreateDCW)>(L"gdi32.dll", "CreateDCW");
const auto g_deleteDc = RealFunction<decltype(&DeleteDC)>(L"gdi32.dll", "DeleteDC");

void FillIdentity(Ramp& ramp) {
    for (auto& channel : ramp) {
        for (int i = 0; i < 256; ++i)
            channel[i] = static_cast<std::uint16_t>(257 * i);
    }
}

bool IsIdentity(const Ramp& ramp) {
    for (const auto& channel : ramp) {
        for (int i = 0; i < 256; ++i) {
            if (channel[i] != 257 * i) return false;
        }
    }
    return true;
}

// Null for the context of the whole screen if there are two displays.
Ramp* RampOf(HDC dc) {
    if (!g_platform.secondDisplay) return &g_platform.ramp;
    if (dc == g_platform.displayContexts[0]) return &g_platform.ramp;
    return dc == g_platform.displayContexts[1] ? &g_platform.secondRamp : nullptr;
}

BOOL WINAPI FakeSetDeviceGammaRamp(HDC dc, const Ramp* ramp) {
    Ramp* shown = RampOf(dc);
    if (shown == nullptr || (g_platform.refusesRamps && !IsIdentity(*ramp))) return FALSE;
    std::memcpy(shown, ramp, sizeof(Ramp));
    return TRUE;
}

BOOL WINAPI FakeGetDeviceGammaRamp(HDC dc, void* ramp) {
    const Ramp* shown = RampOf(dc);
    if (shown == nullptr) return FALSE;
    std::memcpy(ramp, shown, sizeof(Ramp));
    return TRUE;
}

// The second display is like the first, except for its name.
BOOL WINAPI FakeEnumDisplayDevices(const wchar_t* device, DWORD index, DISPLAY_DEVICEW* found, DWORD flags) {
    if (!g_platform.secondDisplay || device != nullptr)
        return g_enumDisplayDevices(device, index, found, flags);
    if (index > 1 || g_enumDisplayDevices(nullptr, 0, found, flags) == FALSE) return FALSE;
    if (index == 1) std::wcscpy(found->DeviceName, kSecondDisplay);
    return TRUE;
}

HDC WINAPI FakeCreateDc(const wchar_t* driver, const wchar_t* device, const wchar_t* port,
                        const DEVMODEW* mode) {
    const bool isSecond = device != nullptr && std::wcscmp(device, kSecondDisplay) == 0;
    HDC dc = isSecond ? g_createDc(L"DISPLAY", nullptr, port, mode) : g_createDc(driver, device, port, mode);
    g_platform.displayContexts[isSecond ? 1 : 0] = dc;
    return dc;
}

BOOL WINAPI FakeDeleteDc(HDC dc) {
    for (HDC& context : g_platform.displayContexts) {
        if (context == dc) context = nullptr;
    }
    return g_deleteDc(dc);
}

}  // namespace

std::vector<SimulatedRow> SimulatedRamps() {
    return {
        {"SetDeviceGammaRamp", Address(&FakeSetDeviceGammaRamp)},
        {"GetDeviceGammaRamp", Address(&FakeGetDeviceGammaRamp)},
        {"EnumDisplayDevicesW", Address(&FakeEnumDisplayDevices)},
        {"CreateDCW", Address(&FakeCreateDc)},
        {"DeleteDC", Address(&FakeDeleteDc)},
    };
}

void DropRamps() {
    FillIdentity(g_platform.ramp);
    FillIdentity(g_platform.secondRamp);
}

bool IsRampIdentity() {
    return IsIdentity(g_platform.ramp) && IsIdentity(g_platform.secondRamp);
}
