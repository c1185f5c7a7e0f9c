#include "tool.h"

#include <tlhelp32.h>
#include <winternl.h>

#include <vector>

namespace {

DWORD FindProcess(const std::wstring& name) {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof(entry);
    DWORD found = 0;
    for (BOOL more = Process32FirstW(snapshot, &entry); more && !found;
         more = Process32NextW(snapshot, &entry)) {
        if (lstrcmpiW(entry.szExeFile, name.c_str()) == 0) {
            found = entry.th32ProcessID;
        }
    }
    CloseHandle(snapshot);
    return found;
}

// GetGuiResources answers 0 under Wine; the handle table that the process environment block points to does
// not. Returns -1 when it cannot be read.
int CountGdiObjects(HANDLE process) {
    struct HandleEntry {
        ULONGLONG object;
        ULONG owner;
        USHORT unique;
        UCHAR type;
        UCHAR flags;
        ULONGLONG user;
    };
    static_assert(sizeof(HandleEntry) == 24);
    constexpr size_t kTableOffset = 0xF8;  // GdiSharedHandleTable of the 64-bit block.
    constexpr size_t kHandles = 0x4000;

    PROCESS_BASIC_INFORMATION basic = {};
    if (NtQueryInformationProcess(process, ProcessBasicInformation, &basic, sizeof(basic), nullptr) != 0) {
        return -1;
    }
    const char* const block = reinterpret_cast<const char*>(basic.PebBaseAddress);
    const void* table = nullptr;
    std::vector<HandleEntry> entries(kHandles);
    SIZE_T got = 0;
    if (!ReadProcessMemory(process, block + kTableOffset, &table, sizeof(table), &got) ||
        !ReadProcessMemory(process, table, entries.data(), kHandles * sizeof(HandleEntry), &got)) {
        return -1;
    }
    int count = 0;
    for (const HandleEntry& entry : entries) {
        count += entry.type != 0;
    }
    return count;
}

}  // namespace

// process ID|IMAGE: process=ID and gdi=the number of its GDI objects. (Wine does not tell the processor time
// or the handle count of another process.)
int ShowProcessFacts(const Arguments& arguments) {
    const DWORD given = static_cast<DWORD>(Number(arguments[0]));
    const DWORD id = given ? given : FindProcess(arguments[0]);
    const HANDLE process = id ? OpenProcess(PROCESS_ALL_ACCESS, FALSE, id) : nullptr;
    if (!process) {
        return kToolNotFound;
    }
    Print(L"process=%lu\ngdi=%d\n", id, CountGdiObjects(process));
    CloseHandle(process);
    return kToolOk;
}
