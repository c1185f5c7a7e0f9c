#include "filter/import_counter.h"

#include <cstring>

namespace {

constexpr std::size_t kDetourSize = 32;

template <typename T>
T* At(ULONG_PTR offset) {
    return reinterpret_cast<T*>(reinterpret_cast<ULONG_PTR>(GetModuleHandleW(nullptr)) + offset);
}

// The import table also contains addresses of the C runtime's variables and of a test's fakes.
bool IsCodeOfADll(ULONG_PTR address) {
    MEMORY_BASIC_INFORMATION page = {};
    if (VirtualQuery(reinterpret_cast<void*>(address), &page, sizeof(page)) == 0) return false;
    if (page.AllocationBase == GetModuleHandleW(nullptr)) return false;
    return (page.Protect &
            (PAGE_EXECUTE | PAGE_EXECUTE_READ | PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY)) != 0;
}

void MakeWritable(ULONG_PTR* slot) {
    DWORD before = 0;
    VirtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &before);
}

unsigned char* Put(unsigned char* at, std::initializer_list<int> bytes) {
    for (const int byte : bytes)
        *at++ = static_cast<unsigned char>(byte);
    return at;
}

unsigned char* Put(unsigned char* at, ULONG_PTR value) {
    std::memcpy(at, &value, sizeof(value));
    return at + sizeof(value);
}

}  // namespace

ImportCounter::ImportCounter() {
    Collect();
    code_ = static_cast<unsigned char*>(VirtualAlloc(nullptr, imports_.size() * kDetourSize,
                                                     MEM_COMMIT | MEM_RESERVE, PAGE_EXECUTE_READWRITE));
    WriteDetours();
}

ImportCounter::~ImportCounter() {
    if (running_) Stop();
    VirtualFree(code_, 0, MEM_RELEASE);
}

void ImportCounter::Collect() {
    const auto* dos = At<IMAGE_DOS_HEADER>(0);
    const auto* headers = At<IMAGE_NT_HEADERS>(static_cast<ULONG_PTR>(dos->e_lfanew));
    const IMAGE_DATA_DIRECTORY& table = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (auto* library = At<IMAGE_IMPORT_DESCRIPTOR>(table.VirtualAddress); library->Name != 0; ++library) {
        const auto* name = At<IMAGE_THUNK_DATA>(library->OriginalFirstThunk);
        auto* slot = At<ULONG_PTR>(library->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++slot) {
            if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal) || !IsCodeOfADll(*slot)) continue;
            const auto* byName = At<IMAGE_IMPORT_BY_NAME>(name->u1.AddressOfData);
            MakeWritable(slot);
            imports_.push_back({reinterpret_cast<const char*>(byName->Name), slot, *slot, 0, 0});
        }
    }
}

// No caller expects r11 to be preserved.
void ImportCounter::WriteDetours() {
    for (std::size_t i = 0; i < imports_.size(); ++i) {
        Import& import = imports_[i];
        unsigned char* at = code_ + i * kDetourSize;
        import.detour = reinterpret_cast<ULONG_PTR>(at);
        at = Put(at, {0x49, 0xBB});  // mov r11, &calls
        at = Put(at, reinterpret_cast<ULONG_PTR>(&import.calls));
        at = Put(at, {0x41, 0xFF, 0x03});  // inc dword [r11]
        at = Put(at, {0x49, 0xBB});        // mov r11, function
        at = Put(at, import.function);
        Put(at, {0x41, 0xFF, 0xE3});  // jmp r11
    }
}

void ImportCounter::Start() {
    for (Import& import : imports_)
        import.calls = 0;
    running_ = true;
    for (const Import& import : imports_)
        *const_cast<volatile ULONG_PTR*>(import.slot) = import.detour;
}

void ImportCounter::Stop() {
    for (const Import& import : imports_)
        *const_cast<volatile ULONG_PTR*>(import.slot) = import.function;
    running_ = false;
}

std::map<std::string, int> ImportCounter::Calls() const {
    std::map<std::string, int> called;
    for (const Import& import : imports_) {
        if (import.calls != 0) called[import.name] += static_cast<int>(import.calls);
    }
    return called;
}
