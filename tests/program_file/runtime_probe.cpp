// A console program with the shipped program's runtime and load configuration.
//   runtime_probe          runs itself for each deed below and prints "DEED OUTPUT = EXIT-CODE", the code in
//   hex runtime_probe DEED     does it and prints "begun" and what comes of it
#include "win32/platform.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <vector>

extern "C" std::uintptr_t __stack_chk_guard;

namespace {

constexpr std::size_t kTooMuch = PTRDIFF_MAX / 2;
constexpr auto kAlignment = std::align_val_t{256};

struct alignas(256) Wide {
    char text[300];
};

// Keeps the compiler from knowing what it is given.
template <typename Value>
[[gnu::noinline]] Value Opaque(Value value) {
    __asm__ volatile("" : "+r"(value));
    return value;
}

void PrintCookie() {
    std::printf("%llx", static_cast<unsigned long long>(__stack_chk_guard));
}

[[gnu::noinline]] void Overwrite(std::size_t length) {
    char text[16];
    volatile char* place = Opaque(&text[0]);
    for (std::size_t i = 0; i < length; ++i)
        place[i] = 'x';
}

void LeaveTheStackAlone() {
    Overwrite(Opaque(std::size_t{16}));
    std::printf("returned");
}

void SmashTheStack() {
    Overwrite(Opaque(std::size_t{64}));
    std::printf("returned");
}

void AskForTooMuch() {
    Opaque(::operator new(Opaque(kTooMuch)));
    std::printf("returned");
}

void AskForTooMuchArray() {
    Opaque(::operator new[](Opaque(kTooMuch)));
    std::printf("returned");
}

void AskForTooMuchAligned() {
    Opaque(::operator new(Opaque(kTooMuch), kAlignment));
    std::printf("returned");
}

void AskForTooMuchAlignedArray() {
    Opaque(::operator new[](Opaque(kTooMuch), kAlignment));
    std::printf("returned");
}

void AskForTooMuchPolitely() {
    const void* answers[] = {::operator new(Opaque(kTooMuch), std::nothrow),
                             ::operator new[](Opaque(kTooMuch), std::nothrow),
                             ::operator new(Opaque(kTooMuch), kAlignment, std::nothrow),
                             ::operator new[](Opaque(kTooMuch), kAlignment, std::nothrow)};
    for (const void* answer : answers)
        std::printf("%s ", Opaque(answer) == nullptr ? "null" : "block");
}

// Writes every byte of what each form gives and frees it.
void UseMemory() {
    Wide* one = Opaque(new Wide);
    Wide* many = Opaque(new Wide[3]);
    char* plain = Opaque(new char[100]);
    char* none = Opaque(new char[0]);
    int* number = Opaque(new (std::nothrow) int);
    const bool aligned =
        reinterpret_cast<std::uintptr_t>(one) % 256 == 0 && reinterpret_cast<std::uintptr_t>(many) % 256 == 0;
    std::memset(one, 1, sizeof(Wide));
    std::memset(many, 2, 3 * sizeof(Wide));
    std::memset(plain, 3, 100);
    *number = 4;
    std::printf("%s %s", aligned ? "aligned" : "askew", none != nullptr ? "block" : "null");
    delete one;
    delete[] many;
    delete[] plain;
    delete[] none;
    delete number;
    ::operator delete(::operator new(8, std::nothrow), std::nothrow);
    ::operator delete[](::operator new[](8, kAlignment, std::nothrow), kAlignment, std::nothrow);
}

void CutBeyondTheEnd() {
    const std::wstring cut = std::wstring(L"text").substr(Opaque(std::size_t{5}));
    std::printf("returned %zu", cut.size());
}

void ReserveBeyondTheLimit() {
    std::vector<int> numbers;
    numbers.reserve(Opaque(kTooMuch));
    std::printf("returned %zu", numbers.capacity());
}

void MakeTextOfNothing() {
    const std::wstring text(Opaque<const wchar_t*>(nullptr));
    std::printf("returned %zu", text.size());
}

struct Deed {
    const char* name;
    void (*perform)();
};

constexpr Deed kDeeds[] = {
    {"cookie", PrintCookie},
    {"cookie-again", PrintCookie},
    {"whole-stack", LeaveTheStackAlone},
    {"smashed-stack", SmashTheStack},
    {"new", AskForTooMuch},
    {"new-array", AskForTooMuchArray},
    {"new-aligned", AskForTooMuchAligned},
    {"new-aligned-array", AskForTooMuchAlignedArray},
    {"new-nothrow", AskForTooMuchPolitely},
    {"memory", UseMemory},
    {"out-of-range", CutBeyondTheEnd},
    {"length", ReserveBeyondTheLimit},
    {"null-text", MakeTextOfNothing},
};

// Runs this program for the deed, with the same standard output, and returns its exit code.
DWORD RunItself(const char* program, const char* deed) {
    std::string command = std::string("\"") + program + "\" " + deed;
    STARTUPINFOA startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    if (!CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                        &process)) {
        return 0;
    }
    DWORD code = 0;
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return code;
}

}  // namespace

int main(int count, char** words) {
    for (const Deed& deed : kDeeds) {
        if (count > 1 && std::strcmp(words[1], deed.name) == 0) {
            std::printf("begun ");
            std::fflush(stdout);
            deed.perform();
            return 0;
        }
    }
    if (count > 1) return 2;
    for (const Deed& deed : kDeeds) {
        std::printf("%s ", deed.name);
        std::fflush(stdout);
        std::printf(" = %08lx\n", RunItself(words[0], deed.name));
    }
    return 0;
}
