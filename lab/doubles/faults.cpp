// Faults of the platform and of the program, for a program that runs: this library is injected into it (see
// tools/inject.cpp). C:\lab\faults.script has one line for each fault:
//
//     fail HOW NAME RESULT ERROR TIMES MASK
//         The import NAME returns RESULT with the last error ERROR without being called: in the first TIMES
//         calls, of these in each whose number has no bit of MASK (1: every other call). HOW is "import" for
//         the program's calls through its import pointer, or "everywhere" for all calls in the process: a
//         loop may keep the pointer in a register.
//     crash KIND OFFSET
//         The program's code at OFFSET from its start becomes a fault: "access", "illegal", "divide" or
//         "overflow", which uses up the stack.
//
// Numbers are decimal or hexadecimal with 0x.
#include <windows.h>

#include "program_imports.h"

#include <cstdio>
#include <cstring>
#include <initializer_list>

namespace {

constexpr wchar_t kScriptPath[] = L"C:\\lab\\faults.script";
constexpr int kMaxFailures = 16;
constexpr std::size_t kStubSize = 128;

// Offsets in the thread environment block of 64-bit Windows.
constexpr ULONG_PTR kDeallocationStack = 0x1478, kGuaranteedStackBytes = 0x1748;
constexpr ULONG_PTR kPage = 0x1000;

// The exit code of a program that has reserved no stack for a stack overflow.
constexpr UINT kNothingReserved = 99;

struct Failure {
    char name[64];
    unsigned long long result;
    DWORD error;
    DWORD times;
    DWORD mask;
    volatile LONG calls;
};

Failure g_failures[kMaxFailures];
int g_failureCount;

// Appends machine code to a stub.
struct Writer {
    unsigned char* at;

    void Bytes(const char* code, std::size_t count) {
        std::memcpy(at, code, count);
        at += count;
    }
    template <typename Value>
    void Put(Value value) {
        std::memcpy(at, &value, sizeof(value));
        at += sizeof(value);
    }
};

// Keeps the arguments' registers, so that the original gets them.
void WriteStub(unsigned char* stub, Failure* failure, ULONG_PTR original) {
    Writer write = {stub};
    write.Bytes("\x51\x52\x48\xB8", 4);  // push rcx; push rdx; mov rax, &calls
    write.Put(reinterpret_cast<ULONG_PTR>(&failure->calls));
    write.Bytes("\xB9\x01\x00\x00\x00\xF0\x0F\xC1\x08", 9);  // mov ecx, 1; lock xadd [rax], ecx
    write.Bytes("\x81\xF9", 2);                              // cmp ecx, times
    write.Put(failure->times);
    write.Bytes("\x73\x22\xF7\xC1", 4);  // jae pass; test ecx, mask
    write.Put(failure->mask);
    write.Bytes("\x75\x1A\xB9", 3);  // jnz pass; mov ecx, error
    write.Put(failure->error);
    write.Bytes("\x65\x89\x0C\x25\x68\x00\x00\x00", 8);  // mov gs:[0x68], ecx: the last error
    write.Bytes("\x5A\x59\x48\xB8", 4);                  // pop rdx; pop rcx; mov rax, result
    write.Put(failure->result);
    write.Bytes("\xC3", 1);              // ret
    write.Bytes("\x5A\x59\x48\xB8", 4);  // pass: pop rdx; pop rcx; mov rax, original
    write.Put(original);
    write.Bytes("\xFF\xE0", 2);  // jmp rax
}

// What Wine's functions begin with that may be patched while they run: lea rsp, [rsp + 0]
constexpr char kPatchable[] = "\x48\x8D\xA4\x24\x00\x00\x00\x00";
constexpr ULONG_PTR kPatchableSize = sizeof(kPatchable) - 1;

// Memory for code that a relative jump at `jump` reaches.
unsigned char* AllocateNear(ULONG_PTR jump) {
    constexpr ULONG_PTR kGranularity = 0x10000;
    const ULONG_PTR start = jump & ~(kGranularity - 1);
    for (ULONG_PTR distance = kGranularity; distance < 0x40000000; distance += kGranularity) {
        for (const ULONG_PTR address : {start - distance, start + distance}) {
            void* const block = VirtualAlloc(reinterpret_cast<void*>(address), kStubSize,
                                             MEM_RESERVE | MEM_COMMIT, PAGE_EXECUTE_READWRITE);
            if (block) {
                return static_cast<unsigned char*>(block);
            }
        }
    }
    return nullptr;
}

bool FailEverywhere(Failure* failure, ULONG_PTR function) {
    void* const code = reinterpret_cast<void*>(function);
    unsigned char* const stub = AllocateNear(function);
    if (!stub || std::memcmp(code, kPatchable, kPatchableSize) != 0) {
        return false;
    }
    WriteStub(stub, failure, function + kPatchableSize);
    unsigned char jump[5];
    Writer write = {jump};
    write.Bytes("\xE9", 1);
    write.Put(static_cast<DWORD>(reinterpret_cast<ULONG_PTR>(stub) - (function + sizeof(jump))));
    Overwrite(code, jump, sizeof(jump));
    return true;
}

bool Fail(unsigned char* stubs, const Failure& failure, bool everywhere) {
    ULONG_PTR* const slot = FindImport(failure.name);
    if (!slot || g_failureCount == kMaxFailures) {
        return false;
    }
    Failure* const kept = &g_failures[g_failureCount];
    unsigned char* const stub = stubs + static_cast<std::size_t>(g_failureCount++) * kStubSize;
    *kept = failure;
    if (everywhere) {
        return FailEverywhere(kept, *slot);
    }
    WriteStub(stub, kept, *slot);
    Overwrite(slot, &stub, sizeof(stub));
    return true;
}

// Uses up the stack but for what the program has reserved with SetThreadStackGuarantee, and raises the
// exception that Windows raises then. (Wine ignores the reservation and lets a stack overflow run to the end
// of the stack.)
void OverflowStack() {
    const DWORD reserved = __readgsdword(kGuaranteedStackBytes);
    if (reserved == 0) {
        ExitProcess(kNothingReserved);
    }
    const ULONG_PTR left = __readgsqword(kDeallocationStack) + kPage + reserved;
    const auto here = reinterpret_cast<ULONG_PTR>(__builtin_frame_address(0));
    volatile char* const used = static_cast<char*>(__builtin_alloca(here - left));
    *used = 1;
    RaiseException(EXCEPTION_STACK_OVERFLOW, 0, 0, nullptr);
}

bool Crash(const char* kind, ULONG_PTR offset) {
    // One instruction each, so that the address of the fault is that of the code.
    const struct {
        const char* kind;
        const char* code;
        std::size_t size;
    } faults[] = {
        {"access", "\xC6\x04\x25\x00\x00\x00\x00\x01", 8},           // mov byte ptr [0], 1
        {"illegal", "\x0F\x0B", 2},                                  // ud2
        {"divide", "\xF7\x35\x00\x00\x00\x00\x00\x00\x00\x00", 10},  // div dword ptr [the zero that follows]
    };
    for (const auto& fault : faults) {
        if (std::strcmp(fault.kind, kind) == 0) {
            Overwrite(At<void>(offset), fault.code, fault.size);
            return true;
        }
    }
    if (std::strcmp(kind, "overflow") != 0) {
        return false;
    }
    unsigned char jump[14];
    Writer write = {jump};
    write.Bytes("\xFF\x25\x00\x00\x00\x00", 6);  // jmp to the address that follows
    write.Put(&OverflowStack);
    Overwrite(At<void>(offset), jump, sizeof(jump));
    return true;
}

bool ReadScript(char* text, DWORD capacity) {
    const HANDLE file =
        CreateFileW(kScriptPath, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    DWORD size = 0;
    ReadFile(file, text, capacity - 1, &size, nullptr);
    CloseHandle(file);
    return true;
}

bool Perform(const char* line, unsigned char* stubs) {
    Failure failure = {};
    char how[16] = {}, kind[16] = {};
    long long result = 0, error = 0, times = 0, mask = 0, offset = 0;
    if (std::sscanf(line, "fail %15s %63s %lli %lli %lli %lli", how, failure.name, &result, &error, &times,
                    &mask) == 6) {
        failure.result = static_cast<unsigned long long>(result);
        failure.error = static_cast<DWORD>(error);
        failure.times = static_cast<DWORD>(times);
        failure.mask = static_cast<DWORD>(mask);
        return Fail(stubs, failure, std::strcmp(how, "everywhere") == 0);
    }
    if (std::sscanf(line, "crash %15s %lli", kind, &offset) == 2) {
        return Crash(kind, static_cast<ULONG_PTR>(offset));
    }
    return false;
}

// False if the script cannot be read or contains a line that cannot be performed.
bool PerformScript() {
    char text[4096] = {};
    auto* const stubs = static_cast<unsigned char*>(
        VirtualAlloc(nullptr, kMaxFailures * kStubSize, MEM_RESERVE | MEM_COMMIT, PAGE_EXECUTE_READWRITE));
    if (!stubs || !ReadScript(text, sizeof(text))) {
        return false;
    }
    char* rest = nullptr;
    for (const char* line = strtok_s(text, "\r\n", &rest); line; line = strtok_s(nullptr, "\r\n", &rest)) {
        if (!Perform(line, stubs)) {
            return false;
        }
    }
    return true;
}

}  // namespace

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*) {
    return reason != DLL_PROCESS_ATTACH || PerformScript();
}
