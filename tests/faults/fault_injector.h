// Makes one imported function of the program fail. The calls go through the import table: a replaced entry
// leads to a stub that counts the calls and either fails or jumps to the function.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "win32/platform.h"

// The calls that fail.
enum class Occasion { Always, First, Second, EveryOther };
constexpr Occasion kOccasions[] = {Occasion::Always, Occasion::First, Occasion::Second, Occasion::EveryOther};
const char* NameOf(Occasion occasion);

// What a failing call returns, without writing any output.
struct Failure {
    std::int64_t result;
    DWORD lastError;
};

// Sets the import table's entry of a function; fails the process if the program does not import it.
void ReplaceImport(const char* function, void* replacement);

// Replaces one function with the stub for the lifetime of the object. If the program looks the function up
// with GetProcAddress, StubFor returns the stub.
class InjectedFault {
public:
    InjectedFault(const std::string& function, void* lookedUp, Failure failure, Occasion occasion);
    ~InjectedFault();
    InjectedFault(const InjectedFault&) = delete;
    InjectedFault& operator=(const InjectedFault&) = delete;

    // Calls of the function so far.
    std::uint32_t Calls() const;

private:
    std::uint64_t* slot_ = nullptr;
    std::uint64_t original_ = 0;
};

// The stub if a fault is injected into the looked-up function of that name, else null.
void* StubFor(const char* lookedUp);
