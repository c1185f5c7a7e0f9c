// Locks, the clock, UTF-8 and files. Files live in one temporary folder; of a path only the name counts.
#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shlobj.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cwchar>
#include <string>

#include "shim.h"

namespace {

std::string Narrow(const wchar_t* text) {
    std::string narrow;
    for (; *text != 0; ++text)
        narrow += static_cast<char>(*text);
    return narrow;
}

void AppendUtf8(std::string* bytes, std::uint32_t point) {
    const auto add = [bytes](std::uint32_t byte) { *bytes += static_cast<char>(byte); };
    if (point < 0x80) {
        add(point);
    } else if (point < 0x800) {
        add(0xC0 | point >> 6);
        add(0x80 | (point & 0x3F));
    } else if (point < 0x10000) {
        add(0xE0 | point >> 12);
        add(0x80 | (point >> 6 & 0x3F));
        add(0x80 | (point & 0x3F));
    } else {
        add(0xF0 | point >> 18);
        add(0x80 | (point >> 12 & 0x3F));
        add(0x80 | (point >> 6 & 0x3F));
        add(0x80 | (point & 0x3F));
    }
}

bool IsContinuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

// The length and the value of the sequence at `bytes`; length 0 if it is invalid.
struct Sequence {
    std::size_t length;
    std::uint32_t point;
};

Sequence Decode(const unsigned char* bytes, std::size_t left) {
    const unsigned char first = bytes[0];
    if (first < 0x80) return {1, first};
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || left < length) return {0, 0};
    std::uint32_t point = first & (0xFF >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if (!IsContinuation(bytes[i])) return {0, 0};
        point = point << 6 | (bytes[i] & 0x3F);
    }
    const bool overlong = (length == 3 && point < 0x800) || (length == 4 && point < 0x10000);
    if (overlong || point > 0x10FFFF || (point >= 0xD800 && point < 0xE000)) return {0, 0};
    return {length, point};
}

// Copies `text` if it fits and returns its length; with capacity 0 returns the length only.
template <typename Text, typename Unit>
int Return(const Text& text, Unit* out, int capacity) {
    const int length = static_cast<int>(text.size());
    if (capacity == 0) return length;
    if (length > capacity) return 0;
    text.copy(out, text.size());
    return length;
}

}  // namespace

std::string FilePath(const wchar_t* path) {
    static const std::string folder = [] {
        const char* const given = std::getenv("TMPDIR");
        std::string name = std::string(given != nullptr ? given : "/tmp") + "/ambrel-fuzz-XXXXXX";
        if (mkdtemp(name.data()) == nullptr) std::abort();
        return name;
    }();
    const std::string narrow = Narrow(path);
    return folder + "/" + narrow.substr(narrow.find_last_of('\\') + 1);
}

void AcquireSRWLockExclusive(SRWLOCK* lock) {
    if (lock->held) std::abort();  // would hang on Windows
    lock->held = true;
}

void ReleaseSRWLockExclusive(SRWLOCK* lock) {
    if (!lock->held) std::abort();
    lock->held = false;
}

BOOL TryAcquireSRWLockExclusive(SRWLOCK* lock) {
    const bool free = !lock->held;
    lock->held = true;
    return free;
}

void GetLocalTime(SYSTEMTIME* time) {
    *time = {2026, 11, 0, 22, 9, 5, 7, 42};
}

int MultiByteToWideChar(UINT, DWORD, const char* bytes, int count, wchar_t* text, int capacity) {
    std::wstring wide;
    for (std::size_t left = static_cast<std::size_t>(count); left != 0;) {
        const Sequence sequence = Decode(reinterpret_cast<const unsigned char*>(bytes), left);
        const std::size_t length = sequence.length != 0 ? sequence.length : 1;
        if (sequence.length == 0) {
            wide += L'\xFFFD';
        } else if (sequence.point >= 0x10000) {
            wide += static_cast<wchar_t>(0xD800 + ((sequence.point - 0x10000) >> 10));
            wide += static_cast<wchar_t>(0xDC00 + (sequence.point & 0x3FF));
        } else {
            wide += static_cast<wchar_t>(sequence.point);
        }
        bytes += length;
        left -= length;
    }
    return Return(wide, text, capacity);
}

int WideCharToMultiByte(UINT, DWORD, const wchar_t* text, int count, char* bytes, int capacity, const char*,
                        BOOL*) {
    std::string narrow;
    for (int i = 0; i < count; ++i) {
        const std::uint32_t unit = text[i];
        const bool leads = unit >= 0xD800 && unit < 0xDC00;
        if (leads && i + 1 < count && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) {
            AppendUtf8(&narrow, 0x10000 + ((unit - 0xD800) << 10) + (text[++i] - 0xDC00U));
        } else {
            AppendUtf8(&narrow, unit >= 0xD800 && unit < 0xE000 ? 0xFFFD : unit);
        }
    }
    return Return(narrow, bytes, capacity);
}

int _wfopen_s(std::FILE** file, const wchar_t* path, const wchar_t* mode) {
    *file = std::fopen(FilePath(path).c_str(), Narrow(mode).c_str());
    return *file == nullptr ? 1 : 0;
}

int _commit(int) {
    return 0;
}

HANDLE CreateFileW(const wchar_t* path, DWORD, DWORD, void*, DWORD creation, DWORD, HANDLE) {
    const int flags = O_WRONLY | O_APPEND | (creation == OPEN_ALWAYS ? O_CREAT : 0);
    const int file = open(FilePath(path).c_str(), flags, 0600);
    return file < 0 ? INVALID_HANDLE_VALUE : reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(file));
}

BOOL WriteFile(HANDLE file, const void* bytes, DWORD count, DWORD* written, void*) {
    const ssize_t done = write(static_cast<int>(reinterpret_cast<std::intptr_t>(file)), bytes, count);
    *written = done < 0 ? 0 : static_cast<DWORD>(done);
    return done >= 0;
}

BOOL FlushFileBuffers(HANDLE) {
    return TRUE;
}

BOOL CloseHandle(HANDLE handle) {
    return close(static_cast<int>(reinterpret_cast<std::intptr_t>(handle))) == 0;
}

BOOL DeleteFileW(const wchar_t* path) {
    return unlink(FilePath(path).c_str()) == 0;
}

BOOL MoveFileExW(const wchar_t* from, const wchar_t* to, DWORD) {
    return std::rename(FilePath(from).c_str(), FilePath(to).c_str()) == 0;
}

BOOL CreateDirectoryW(const wchar_t*, void*) {
    return TRUE;
}

HRESULT SHGetFolderPathW(HWND, int, HANDLE, DWORD, wchar_t* path) {
    constexpr wchar_t kFolder[] = L"C:\\Users\\someone\\AppData\\Roaming";
    std::wmemcpy(path, kFolder, std::size(kFolder));
    return S_OK;
}

DWORD GetModuleFileNameW(HMODULE, wchar_t* path, DWORD) {
    constexpr wchar_t kProgram[] = L"C:\\Tools\\ambrel.exe";
    std::wmemcpy(path, kProgram, std::size(kProgram));
    return std::size(kProgram) - 1;
}

int CompareStringOrdinal(const wchar_t* one, int, const wchar_t* other, int, BOOL) {
    return _wcsicmp(one, other) + CSTR_EQUAL;
}
