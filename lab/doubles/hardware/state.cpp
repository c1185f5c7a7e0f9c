#include "state.h"

#include <algorithm>

namespace {

constexpr wchar_t kStatePath[] = L"C:\\lab\\hardware.state";
constexpr LONG64 kFirstDisplay = 16;
constexpr LONG64 kDisplaySize = 4;
constexpr LONG64 kMaxDisplays = 500;
constexpr LONG64 kNumbers = kFirstDisplay + kDisplaySize * kMaxDisplays;
constexpr LONG64 kUnixEpoch = 116444736000000000;  // 1970-01-01 as a FILETIME.
constexpr LONG64 kFileTimesPerMillisecond = 10000;

volatile LONG64* Map() {
    const HANDLE file = CreateFileW(kStatePath, GENERIC_READ | GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return nullptr;
    }
    // The view keeps the file open, so neither handle is needed any longer.
    const HANDLE mapping =
        CreateFileMappingW(file, nullptr, PAGE_READWRITE, 0, DWORD{kNumbers * sizeof(LONG64)}, nullptr);
    CloseHandle(file);
    void* const view = mapping ? MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0) : nullptr;
    if (mapping) {
        CloseHandle(mapping);
    }
    return static_cast<volatile LONG64*>(view);
}

// The shared numbers; null while the file does not exist.
volatile LONG64* Shared() {
    static volatile LONG64* shared = nullptr;
    if (!shared) {
        shared = Map();
    }
    return shared;
}

volatile LONG64* NumbersOfDisplay(LONG64 slot) {
    volatile LONG64* const shared = Shared();
    return shared && slot >= 0 && slot < kMaxDisplays ? shared + kFirstDisplay + slot * kDisplaySize
                                                      : nullptr;
}

}  // namespace

LONG64 Count(Counter counter, LONG64 change) {
    volatile LONG64* const shared = Shared();
    return shared ? InterlockedAdd64(shared + static_cast<int>(counter), change) : 0;
}

BrightnessState ReadBrightnessState(LONG64 slot) {
    const volatile LONG64* const numbers = NumbersOfDisplay(slot);
    return numbers ? BrightnessState{numbers[0], numbers[1], numbers[2]} : BrightnessState{};
}

void WriteBrightnessState(LONG64 slot, const BrightnessState& state) {
    volatile LONG64* const numbers = NumbersOfDisplay(slot);
    if (numbers) {
        // A pending drift must not replace the new value.
        numbers[1] = 0;
        numbers[0] = state.value;
        numbers[2] = state.driftValue;
        numbers[1] = state.driftTime;
    }
}

LONG64 Now() {
    FILETIME time = {};
    GetSystemTimePreciseAsFileTime(&time);
    const LONG64 ticks = (LONG64{time.dwHighDateTime} << 32) | time.dwLowDateTime;
    return (ticks - kUnixEpoch) / kFileTimesPerMillisecond;
}

Delay::Delay(LONG64 milliseconds)
    : held_(milliseconds >= kUntilEnded),
      end_(Now() + milliseconds),
      endedBefore_(Count(Counter::kEndedDelays, 0)) {
    Count(Counter::kWaiting, 1);
    Count(Counter::kHeldCalls, held_);
}

Delay::~Delay() {
    Count(Counter::kHeldCalls, -LONG64{held_});
    Count(Counter::kWaiting, -1);
}

LONG64 Delay::Left() const {
    if (Count(Counter::kEndedDelays, 0) != endedBefore_) {
        return 0;
    }
    return held_ ? kUntilEnded : std::max(end_ - Now(), LONG64{0});
}
