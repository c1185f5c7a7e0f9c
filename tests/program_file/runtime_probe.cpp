// A console program with the shipped program's runtime and load configuration.
//   runtime_probe          runs itself for each action and prints "ACTION OUTPUT = EXIT-CODE", in hex
//   runtime_probe ACTION   prints its stack cookie and "started", performs the action and prints its result
#include "win32/abnormal_end.h"
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

// Hides a value from the optimiser.
template <typename Value>
[[gnu::noinline]] Value Opaque(Value value) {
    __asm__ volatile("" : "+r"(value));
    return value;
}

[[gnu::noinline]] void Overwrite(std::size_t length) {
    char text[16];
    volatile char* place = Opaque(&text[0]);
    for (std::size_t i = 0; i < length; ++i)
        place[i] = 'x';
}

void KeepTheStackIntact() {
    Overwrite(Opaque(std::size_t{16}));
    std::printf("returned");
}

void SmashTheStack() {
    Overwrite(Opaque(std::size_t{64}));
    std::printf("returned");
}

void RequestTooMuch() {
    Opaque(::operator new(Opaque(kTooMuch)));
    std::printf("returned");
}

void RequestTooMuchArray() {
    Opaque(::operator new[](Opaque(kTooMuch)));
    std::printf("returned");
}

void RequestTooMuchAligned() {
    Opaque(::operator new(Opaque(kTooMuch), kAlignment));
    std::printf("returned");
}

void RequestTooMuchAlignedArray() {
    Opaque(::operator new[](Opaque(kTooMuch), kAlignment));
    std::printf("returned");
}

void RequestTooMuchWithoutThrowing() {
    const void* answers[] = {::operator new(Opaque(kTooMuch), std::nothrow),
                             ::operator new[](Opaque(kTooMuch), std::nothrow),
                             ::operator new(Opaque(kTooMuch), kAlignment, std::nothrow),
                             ::operator new[](Opaque(kTooMuch), kAlignment, std::nothrow)};
    for (const void* answer : answers)
        std::printf("%s ", Opaque(answer) == nullptr ? "null" : "block");
}

// Allocates with each form of new, writes every byte and frees it.
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
    std::printf("%s %s", aligned ? "aligned" : "unaligned", none != nullptr ? "block" : "null");
    delete one;
    delete[] many;
    delete[] plain;
    delete[] none;
    delete number;
    ::operator delete(::operator new(8, std::nothrow), std::nothrow);
    ::operator delete[](::operator new[](8, kAlignment, std::nothrow), kAlignment, std::nothrow);
}

void TakeSubstringBeyondTheEnd() {
    const std::wstring part = std::wstring(L"text").substr(Opaque(std::size_t{5}));
    std::printf("returned %zu", part.size());
}

void ReserveBeyondTheLimit() {
    std::vector<int> numbers;
    numbers.reserve(Opaque(kTooMuch));
    std::printf("returned %zu", numbers.capacity());
}

void ConstructTextFromNull() {
    const std::wstring text(Opaque<const wchar_t*>(nullptr));
    std::printf("returned %zu", text.size());
}

// Prints through the C runtime's buffer alone.
void PrintHandled(const void* address) {
    const auto module = reinterpret_cast<std::uintptr_t>(GetModuleHandleW(nullptr));
    std::printf("%s", reinterpret_cast<std::uintptr_t>(address) > module ? "handled" : "handled elsewhere");
    std::fflush(stdout);
}

void RequestTooMuchWithAHandler() {
    SetAbnormalEndHandler(PrintHandled);
    RequestTooMuch();
}

struct Action {
    const char* name;
    void (*perform)();
};

constexpr Action kActions[] = {
    {"intact-stack", KeepTheStackIntact},
    {"smashed-stack", SmashTheStack},
    {"new", RequestTooMuch},
    {"new-handled", RequestTooMuchWithAHandler},
    {"new-array", RequestTooMuchArray},
    {"new-aligned", RequestTooMuchAligned},
    {"new-aligned-array", RequestTooMuchAlignedArray},
    {"new-nothrow", RequestTooMuchWithoutThrowing},
    {"memory", UseMemory},
    {"out-of-range", TakeSubstringBeyondTheEnd},
    {"length", ReserveBeyondTheLimit},
    {"null-text", ConstructTextFromNull},
};

// Runs this program for the action, with the same standard output, and returns its exit code.
DWORD RunItself(const char* program, const char* action) {
    std::string command = std::string("\"") + program + "\" " + action;
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
    for (const Action& action : kActions) {
        if (count > 1 && std::strcmp(words[1], action.name) == 0) {
            std::printf("%llx started ", static_cast<unsigned long long>(__stack_chk_guard));
            std::fflush(stdout);
            action.perform();
            return 0;
        }
    }
    if (count > 1) return 2;
    for (const Action& action : kActions) {
        std::printf("%s ", action.name);
        std::fflush(stdout);
        std::printf(" = %08lx\n", RunItself(words[0], action.name));
    }
    return 0;
}
