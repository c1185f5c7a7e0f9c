// A private folder in the temporary folder for each test, and reading and writing of entire files.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "win32/platform.h"

// A folder that exists for one test. Its name has letters outside ASCII, as a user's folder may have.
struct TempFolder {
    std::wstring path;  // without a backslash at the end

    TempFolder() {
        wchar_t base[MAX_PATH] = {};
        GetTempPathW(MAX_PATH, base);
        static int count = 0;
        path = std::wstring(base) + L"ambrel-\u00e9\u00fc\u0416-" + std::to_wstring(GetCurrentProcessId()) +
               L"-" + std::to_wstring(++count);
        EXPECT_TRUE(CreateDirectoryW(path.c_str(), nullptr));
    }
    ~TempFolder() { Remove(path); }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    std::wstring Child(const std::wstring& name) const { return path + L"\\" + name; }

private:
    static void Remove(const std::wstring& folder) {
        WIN32_FIND_DATAW entry = {};
        const HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &entry);
        if (search != INVALID_HANDLE_VALUE) {
            do {
                const std::wstring name = entry.cFileName;
                if (name == L"." || name == L"..") continue;
                const std::wstring child = folder + L"\\" + name;
                SetFileAttributesW(child.c_str(), FILE_ATTRIBUTE_NORMAL);
                if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
                    Remove(child);
                } else {
                    DeleteFileW(child.c_str());
                }
            } while (FindNextFileW(search, &entry));
            FindClose(search);
        }
        RemoveDirectoryW(folder.c_str());
    }
};

inline bool FileExists(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// The file's bytes; "(no file)" if it cannot be opened.
inline std::string ReadBytes(const std::wstring& path) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return "(no file)";
    std::string bytes(GetFileSize(file, nullptr), '\0');
    DWORD read = 0;
    EXPECT_TRUE(ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr));
    bytes.resize(read);
    CloseHandle(file);
    return bytes;
}

inline void WriteBytes(const std::wstring& path, std::string_view bytes) {
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
    EXPECT_EQ(written, bytes.size());
    CloseHandle(file);
}

// Keeps the file open as another program would, without sharing or sharing only reads.
struct LockedFile {
    HANDLE file;

    explicit LockedFile(const std::wstring& path, DWORD sharing = 0)
        : file(CreateFileW(path.c_str(), GENERIC_READ, sharing, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                           nullptr)) {
        EXPECT_NE(file, INVALID_HANDLE_VALUE);
    }
    ~LockedFile() { CloseHandle(file); }
    LockedFile(const LockedFile&) = delete;
    LockedFile& operator=(const LockedFile&) = delete;
};
