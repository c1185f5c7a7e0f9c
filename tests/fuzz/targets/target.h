// The fuzz targets: each turns bytes into the input of one part of the program and checks what comes of it.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

// The bytes of one input, read from the start. After the end everything is empty or 0.
class Input {
public:
    Input(const std::uint8_t* bytes, std::size_t size) : next_(bytes), left_(size) {}

    bool IsEmpty() const { return left_ == 0; }
    std::uint8_t Byte();
    bool Flag() { return (Byte() & 1) != 0; }
    // A number of 32 bits, often a special one.
    std::uint32_t Number();
    // A line of text: a byte is a character, and ESC is followed by the two bytes of any UTF-16 code unit.
    std::wstring Line();
    // All that is left, in the same form, or as bytes.
    std::wstring Text();
    std::string Bytes();

private:
    wchar_t Unit();

    const std::uint8_t* next_;
    std::size_t left_;
};

struct Target {
    const char* name;
    void (*run)(Input input);
};

void FuzzSettings(Input input);
void FuzzRestoreRecord(Input input);
void FuzzLogMessage(Input input);
void FuzzLogTail(Input input);
void FuzzRegistry(Input input);
void FuzzReport(Input input);
void FuzzSliderText(Input input);
void FuzzCursorPixels(Input input);

// A property of the program. Ends the process, so that the fuzzer keeps the input, if it does not hold.
#define CHECK(condition)        \
    ((condition)                \
         ? static_cast<void>(0) \
         : (std::fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition), std::abort()))

// Written independently of the program's own function.
inline bool IsControl(wchar_t unit) {
    return unit <= 0x1F || unit == 0x7F || (unit >= 0x80 && unit <= 0x9F) || unit == 0x2028 || unit == 0x2029;
}

inline bool HasControl(const std::wstring& text) {
    for (const wchar_t unit : text) {
        if (IsControl(unit)) return true;
    }
    return false;
}
