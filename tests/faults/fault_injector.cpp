#include "faults/fault_injector.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr std::size_t kPatternLength = 4096;  // calls; later ones behave like the last

}  // namespace

// Read by the stub.
extern "C" {
std::uint32_t g_faultCalls = 0;
unsigned char g_faultPattern[kPatternLength] = {};  // 1: the call fails
std::uint64_t g_faultReal = 0;
std::uint64_t g_faultResult = 0;
std::uint32_t g_faultError = 0;
std::uint64_t g_faultSetLastError = 0;
void FaultStub();
}

// No caller expects rax and r11 to be preserved. A failing call does not need its arguments.
asm(R"(
    .globl FaultStub
    .text
FaultStub:
    leaq g_faultCalls(%rip), %r11
    movl (%r11), %eax
    incl (%r11)
    cmpl $4095, %eax
    jbe 1f
    movl $4095, %eax
1:  leaq g_faultPattern(%rip), %r11
    cmpb $0, (%r11,%rax)
    jne 2f
    jmpq *g_faultReal(%rip)
2:  subq $40, %rsp
    movl g_faultError(%rip), %ecx
    callq *g_faultSetLastError(%rip)
    addq $40, %rsp
    movq g_faultResult(%rip), %rax
    retq
)");

namespace {

std::string g_lookedUp;  // the function that the program looks up and that fails; empty: none

unsigned char* Image() {
    return reinterpret_cast<unsigned char*>(GetModuleHandleW(nullptr));
}

template <typename T>
T* At(ULONG_PTR offset) {
    return reinterpret_cast<T*>(Image() + offset);
}

std::uint64_t* FindSlot(const char* function) {
    const auto* headers = At<IMAGE_NT_HEADERS>(static_cast<ULONG_PTR>(At<IMAGE_DOS_HEADER>(0)->e_lfanew));
    const IMAGE_DATA_DIRECTORY& table = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (auto* library = At<IMAGE_IMPORT_DESCRIPTOR>(table.VirtualAddress); library->Name != 0; ++library) {
        const auto* name = At<IMAGE_THUNK_DATA>(library->OriginalFirstThunk);
        auto* slot = At<std::uint64_t>(library->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++slot) {
            if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) continue;
            const auto* byName = At<IMAGE_IMPORT_BY_NAME>(name->u1.AddressOfData);
            if (std::strcmp(reinterpret_cast<const char*>(byName->Name), function) == 0) return slot;
        }
    }
    std::fprintf(stderr, "%s is not imported\n", function);
    std::fflush(stderr);
    std::_Exit(2);
}

void Write(std::uint64_t* slot, std::uint64_t value) {
    DWORD before = 0;
    VirtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &before);
    *const_cast<volatile std::uint64_t*>(slot) = value;
    VirtualProtect(slot, sizeof(*slot), before, &before);
}

bool Fails(Occasion occasion, std::size_t call) {
    switch (occasion) {
        case Occasion::Always: return true;
        case Occasion::First: return call == 0;
        case Occasion::Second: return call == 1;
        case Occasion::EveryOther: return call % 2 == 1;
    }
    return false;
}

}  // namespace

const char* NameOf(Occasion occasion) {
    switch (occasion) {
        case Occasion::Always: return "always";
        case Occasion::First: return "the first time";
        case Occasion::Second: return "the second time";
        case Occasion::EveryOther: return "every other time";
    }
    return "";
}

void ReplaceImport(const char* function, void* replacement) {
    Write(FindSlot(function), reinterpret_cast<std::uint64_t>(replacement));
}

InjectedFault::InjectedFault(const std::string& function, void* lookedUp, Failure failure,
                             Occasion occasion) {
    g_faultSetLastError = reinterpret_cast<std::uint64_t>(&SetLastError);
    g_faultCalls = 0;
    for (std::size_t i = 0; i < kPatternLength; ++i)
        g_faultPattern[i] = Fails(occasion, i) ? 1 : 0;
    g_faultResult = static_cast<std::uint64_t>(failure.result);
    g_faultError = failure.lastError;
    if (lookedUp != nullptr) {
        g_lookedUp = function;
        g_faultReal = reinterpret_cast<std::uint64_t>(lookedUp);
        return;
    }
    slot_ = FindSlot(function.c_str());
    original_ = *slot_;
    g_faultReal = original_;
    Write(slot_, reinterpret_cast<std::uint64_t>(&FaultStub));
}

InjectedFault::~InjectedFault() {
    if (slot_ != nullptr) Write(slot_, original_);
    g_lookedUp.clear();
}

std::uint32_t InjectedFault::Calls() const {
    return g_faultCalls;
}

void* StubFor(const char* lookedUp) {
    return g_lookedUp == lookedUp ? reinterpret_cast<void*>(&FaultStub) : nullptr;
}
