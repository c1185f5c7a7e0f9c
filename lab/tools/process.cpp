#include "tool.h"

#include <tlhelp32.h>
#include <winternl.h>

#include <algorithm>
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

// Counts the entries of the GDI handle table that the process environment block points to, because
// GetGuiResources returns 0 under Wine. Returns -1 if the table cannot be read.
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

// Counts in the system's list of all handles, because GetProcessHandleCount returns 0 under Wine. Returns -1
// if the list cannot be read.
int CountHandles(DWORD id) {
    struct Entry {
        PVOID object;
        ULONG_PTR process;
        ULONG_PTR handle;
        ULONG access;
        USHORT traceIndex;
        USHORT type;
        ULONG attributes;
        ULONG reserved;
    };
    static_assert(sizeof(Entry) == 40);
    struct Header {
        ULONG_PTR count;
        ULONG_PTR reserved;
    };
    constexpr ULONG kExtendedHandles = 64;  // Out of range of the header's enumeration.
    using Query = NTSTATUS(NTAPI*)(ULONG kind, PVOID list, ULONG size, PULONG needed);
    constexpr NTSTATUS kTooSmall = static_cast<NTSTATUS>(0xC0000004);  // STATUS_INFO_LENGTH_MISMATCH
    constexpr ULONG kMaxSize = 64 << 20;

    const FARPROC address = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation");
    const Query query = reinterpret_cast<Query>(reinterpret_cast<void*>(address));
    std::vector<char> list;
    NTSTATUS status = kTooSmall;
    for (ULONG size = 1 << 18; status == kTooSmall && size <= kMaxSize; size *= 2) {
        list.resize(size);
        status = query(kExtendedHandles, list.data(), size, nullptr);
    }
    if (status != 0) {
        return -1;
    }
    const Header* const header = reinterpret_cast<const Header*>(list.data());
    const Entry* const first = reinterpret_cast<const Entry*>(header + 1);
    return static_cast<int>(std::count_if(first, first + header->count,
                                          [id](const Entry& entry) { return entry.process == id; }));
}

}  // namespace

// process ID|IMAGE: the process's id, the number of its GDI objects (gdi) and of its handles, including those
// of registry keys. (Wine does not report the processor time of another process.)
int DescribeProcess(const Arguments& arguments, Json& answer) {
    const DWORD number = static_cast<DWORD>(Number(arguments[0]));
    const DWORD id = number ? number : FindProcess(arguments[0]);
    const HANDLE process = id ? OpenProcess(PROCESS_ALL_ACCESS, FALSE, id) : nullptr;
    if (!process) {
        return kToolNotFound;
    }
    answer = JsonObject({{"process", id}, {"gdi", CountGdiObjects(process)}, {"handles", CountHandles(id)}});
    CloseHandle(process);
    return kToolOk;
}
