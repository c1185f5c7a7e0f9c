// A display whose backlight can be read and set.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

enum class TargetKind : std::int32_t {
    DdcMonitor = 0,  // external, over DDC/CI
    WmiPanel = 1,    // built in, through WMI
};

// Lists are rebuilt on every use. A target is identified across lists by its name alone, compared by UTF-16
// code units.
struct DisplayTarget {
    TargetKind kind;
    std::wstring name;
    std::uint32_t minimum;  // raw, as the display reports it
    std::uint32_t maximum;
    std::uint32_t percent;  // 0..100
};

using DisplayTargetList = std::vector<DisplayTarget>;

constexpr std::uint32_t kMaxPercent = 100;
