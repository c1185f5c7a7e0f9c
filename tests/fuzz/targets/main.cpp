// The entry point for libFuzzer. --target=NAME selects the target; the shared program and stand-ins are
// compiled once.
#include <cstring>

#include "target.h"

namespace {

constexpr Target kTargets[] = {
    {"settings", FuzzSettings}, {"restore", FuzzRestoreRecord}, {"log_message", FuzzLogMessage},
    {"log_tail", FuzzLogTail},  {"registry", FuzzRegistry},     {"report", FuzzReport},
    {"slider", FuzzSliderText}, {"cursor", FuzzCursorPixels},
};

const Target* g_target = nullptr;

constexpr std::uint8_t kEscape = 0x1B;

}  // namespace

std::uint8_t Input::Byte() {
    if (left_ == 0) return 0;
    --left_;
    return *next_++;
}

std::uint32_t Input::Number() {
    constexpr std::uint32_t kSpecial[] = {0,          1,          2,          9,         10,    99,
                                          100,        101,        1000,       21999,     22000, 65535,
                                          0x7FFFFFFF, 0x80000000, 0xFFFFFFFE, 0xFFFFFFFF};
    const std::uint8_t kind = Byte();
    if (kind < std::size(kSpecial)) return kSpecial[kind];
    std::uint32_t number = Byte();
    for (int more = kind & 3; more > 0; --more)
        number = number << 8 | Byte();
    return number;
}

wchar_t Input::Unit() {
    const std::uint8_t first = Byte();
    if (first != kEscape) return first;
    const std::uint8_t high = Byte();
    return static_cast<wchar_t>(high << 8 | Byte());
}

std::wstring Input::Line() {
    std::wstring text;
    while (left_ != 0 && *next_ != '\n')
        text += Unit();
    Byte();
    return text;
}

std::wstring Input::Text() {
    std::wstring text;
    while (left_ != 0)
        text += Unit();
    return text;
}

std::string Input::Bytes() {
    std::string bytes(reinterpret_cast<const char*>(next_), left_);
    left_ = 0;
    return bytes;
}

extern "C" int LLVMFuzzerInitialize(int* count, char*** words) {
    constexpr char kOption[] = "--target=";
    constexpr std::size_t kLength = sizeof(kOption) - 1;
    for (int i = 1; i < *count; ++i) {
        if (std::strncmp((*words)[i], kOption, kLength) != 0) continue;
        for (const Target& target : kTargets) {
            if (std::strcmp((*words)[i] + kLength, target.name) == 0) g_target = &target;
        }
    }
    if (g_target != nullptr) return 0;
    for (const Target& target : kTargets)
        std::fprintf(stderr, "--target=%s\n", target.name);
    std::exit(2);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    g_target->run(Input(bytes, size));
    return 0;
}
