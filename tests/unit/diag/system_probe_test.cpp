#include "diag/system_probe.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "support/seam.h"

namespace {

const std::wstring kWindows = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
const std::wstring kCpu = L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0";
const std::wstring kBios = L"HARDWARE\\DESCRIPTION\\System\\BIOS";

struct Value {
    DWORD type;
    std::vector<BYTE> data;
};

struct OpenedKey {
    std::wstring path;
    REGSAM access;
};

// The registry of the machine under test: only the values of the test exist.
std::map<std::wstring, std::map<std::wstring, Value>> g_registry;
std::vector<OpenedKey> g_opened;
std::vector<HKEY> g_open;
std::vector<HKEY> g_closed;

LONG g_versionStatus = 0;
OSVERSIONINFOW g_version = {};
bool g_versionFunctionExists = true;
bool g_libraryLoads = true;
std::vector<std::wstring> g_loaded;

HKEY HandleOf(std::size_t index) {
    return reinterpret_cast<HKEY>(0x1000 + index);
}

LSTATUS WINAPI FakeRegOpenKeyExW(HKEY root, LPCWSTR path, DWORD options, REGSAM access, PHKEY key) {
    EXPECT_EQ(root, HKEY_LOCAL_MACHINE);
    EXPECT_EQ(options, 0u);
    if (!g_registry.contains(path)) return ERROR_FILE_NOT_FOUND;
    *key = HandleOf(g_opened.size());
    g_opened.push_back({path, access});
    g_open.push_back(*key);
    return ERROR_SUCCESS;
}

LSTATUS WINAPI FakeRegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD, LPDWORD type, LPBYTE data,
                                    LPDWORD bytes) {
    std::size_t index = 0;
    while (index < g_opened.size() && HandleOf(index) != key)
        ++index;
    if (index == g_opened.size()) return ERROR_INVALID_HANDLE;
    auto& values = g_registry[g_opened[index].path];
    const auto found = values.find(name);
    if (found == values.end()) return ERROR_FILE_NOT_FOUND;
    const Value& value = found->second;
    const DWORD needed = static_cast<DWORD>(value.data.size());
    const DWORD room = bytes != nullptr ? *bytes : 0;
    if (type != nullptr) *type = value.type;
    if (bytes != nullptr) *bytes = needed;
    if (data == nullptr) return ERROR_SUCCESS;
    if (room < needed) return ERROR_MORE_DATA;
    if (needed > 0) std::memcpy(data, value.data.data(), needed);
    return ERROR_SUCCESS;
}

LSTATUS WINAPI FakeRegCloseKey(HKEY key) {
    g_closed.push_back(key);
    return ERROR_SUCCESS;
}

LONG WINAPI FakeRtlGetVersion(OSVERSIONINFOW* version) {
    EXPECT_EQ(version->dwOSVersionInfoSize, sizeof(OSVERSIONINFOW));
    version->dwMajorVersion = g_version.dwMajorVersion;
    version->dwMinorVersion = g_version.dwMinorVersion;
    version->dwBuildNumber = g_version.dwBuildNumber;
    return g_versionStatus;
}

FARPROC WINAPI FakeGetProcAddress(HMODULE module, LPCSTR name) {
    if (HIWORD(reinterpret_cast<ULONG_PTR>(name)) != 0 && std::strcmp(name, "RtlGetVersion") == 0) {
        return g_versionFunctionExists ? reinterpret_cast<FARPROC>(&FakeRtlGetVersion) : nullptr;
    }
    return Real(&GetProcAddress)(module, name);
}

HMODULE WINAPI FakeLoadLibraryExW(LPCWSTR name, HANDLE, DWORD flags) {
    EXPECT_EQ(flags, static_cast<DWORD>(LOAD_LIBRARY_SEARCH_SYSTEM32));
    g_loaded.push_back(name);
    return g_libraryLoads ? GetModuleHandleW(name) : nullptr;
}

Value Bytes(DWORD type, const std::wstring& text) {
    Value value{type, std::vector<BYTE>(text.size() * sizeof(wchar_t))};
    std::memcpy(value.data.data(), text.data(), value.data.size());
    return value;
}

Value Text(const std::wstring& text) {
    return Bytes(REG_SZ, text + L'\0');
}

Value Number(DWORD number) {
    Value value{REG_DWORD, std::vector<BYTE>(sizeof(number))};
    std::memcpy(value.data.data(), &number, sizeof(number));
    return value;
}

class SystemProbe : public testing::Test {
protected:
    void SetUp() override {
        g_registry.clear();
        g_opened.clear();
        g_open.clear();
        g_closed.clear();
        g_loaded.clear();
        g_versionStatus = 0;
        g_versionFunctionExists = true;
        g_libraryLoads = true;
        SetVersion(10, 0, 19045);
    }
    void TearDown() override { EXPECT_EQ(g_open, g_closed) << "each opened key is closed once"; }

    static void SetVersion(DWORD major, DWORD minor, DWORD build) {
        g_version.dwMajorVersion = major;
        g_version.dwMinorVersion = minor;
        g_version.dwBuildNumber = build;
    }
};

}  // namespace

AMBREL_SEAM(RegOpenKeyExW, FakeRegOpenKeyExW);
AMBREL_SEAM(RegQueryValueExW, FakeRegQueryValueExW);
AMBREL_SEAM(RegCloseKey, FakeRegCloseKey);
AMBREL_SEAM(GetProcAddress, FakeGetProcAddress);
AMBREL_SEAM(LoadLibraryExW, FakeLoadLibraryExW);

TEST_F(SystemProbe, TheOsHasItsVersionNamesAndRevision) {
    g_registry[kWindows] = {{L"ProductName", Text(L"Windows 10 Pro")},
                            {L"DisplayVersion", Text(L"22H2")},
                            {L"UBR", Number(4529)}};
    const OsInfo os = ReadOsInfo();
    EXPECT_EQ(os.productName, L"Windows 10 Pro");
    EXPECT_EQ(os.displayVersion, L"22H2");
    EXPECT_EQ(os.updateRevision, L"4529");
    EXPECT_EQ(os.major, 10u);
    EXPECT_EQ(os.minor, 0u);
    EXPECT_EQ(os.build, 19045u);
    EXPECT_EQ(g_loaded, std::vector<std::wstring>{L"ntdll.dll"});
}

TEST_F(SystemProbe, TheOsKeyIsOpenedForReadingInThe64BitView) {
    g_registry[kWindows] = {};
    ReadOsInfo();
    ASSERT_EQ(g_opened.size(), 1u);
    EXPECT_EQ(g_opened[0].path, kWindows);
    EXPECT_EQ(g_opened[0].access, static_cast<REGSAM>(0x20019 | 0x0100));
}

TEST_F(SystemProbe, Build22631IsWindows11) {
    SetVersion(10, 0, 22631);
    g_registry[kWindows] = {{L"ProductName", Text(L"Windows 10 Pro")}};
    EXPECT_EQ(ReadOsInfo().productName, L"Windows 11 Pro");
}

TEST_F(SystemProbe, TheWindows11RuleStartsAtBuild22000OfMajorVersion10) {
    EXPECT_EQ(CorrectProductName(L"Windows 10 Home", 10, 22000), L"Windows 11 Home");
    EXPECT_EQ(CorrectProductName(L"Windows 10 Home", 10, 21999), L"Windows 10 Home");
    EXPECT_EQ(CorrectProductName(L"Windows 10 Home", 11, 22000), L"Windows 10 Home");
    EXPECT_EQ(CorrectProductName(L"Windows 10 Home", 6, 22000), L"Windows 10 Home");
}

TEST_F(SystemProbe, OnlyTheFirstWindows10IsReplaced) {
    EXPECT_EQ(CorrectProductName(L"Windows 10 for Windows 10", 10, 26100), L"Windows 11 for Windows 10");
    EXPECT_EQ(CorrectProductName(L"Microsoft Windows 10", 10, 26100), L"Microsoft Windows 11");
}

TEST_F(SystemProbe, AnotherNameIsUnchanged) {
    EXPECT_EQ(CorrectProductName(L"Windows Server 2025", 10, 26100), L"Windows Server 2025");
    EXPECT_EQ(CorrectProductName(L"Windows 11 Pro", 10, 26100), L"Windows 11 Pro");
    EXPECT_EQ(CorrectProductName(L"", 10, 26100), L"");
}

TEST_F(SystemProbe, MissingOsValuesAreEmpty) {
    g_registry[kWindows] = {};
    const OsInfo os = ReadOsInfo();
    EXPECT_EQ(os.productName, L"");
    EXPECT_EQ(os.displayVersion, L"");
    EXPECT_EQ(os.updateRevision, L"");
    EXPECT_EQ(os.build, 19045u);
}

TEST_F(SystemProbe, AMissingOsKeyLeavesTheNamesEmptyAndTheVersionRead) {
    const OsInfo os = ReadOsInfo();
    EXPECT_EQ(os.productName, L"");
    EXPECT_EQ(os.displayVersion, L"");
    EXPECT_EQ(os.updateRevision, L"");
    EXPECT_EQ(os.major, 10u);
}

TEST_F(SystemProbe, OsValuesOfAnotherTypeAreIgnored) {
    g_registry[kWindows] = {{L"ProductName", Bytes(REG_BINARY, L"Windows 10 Pro")},
                            {L"DisplayVersion", Number(22)},
                            {L"UBR", Text(L"4529")}};
    const OsInfo os = ReadOsInfo();
    EXPECT_EQ(os.productName, L"");
    EXPECT_EQ(os.displayVersion, L"");
    EXPECT_EQ(os.updateRevision, L"");
}

TEST_F(SystemProbe, AListOfStringsIsNotAString) {
    g_registry[kWindows] = {{L"ProductName", Bytes(REG_MULTI_SZ, std::wstring(L"Windows 10 Pro\0\0", 16))}};
    EXPECT_EQ(ReadOsInfo().productName, L"");
}

TEST_F(SystemProbe, A64BitRevisionIsIgnored) {
    g_registry[kWindows] = {{L"UBR", Value{REG_QWORD, std::vector<BYTE>(8, 1)}}};
    EXPECT_EQ(ReadOsInfo().updateRevision, L"");
}

TEST_F(SystemProbe, TheRevisionIsPrintedUnsigned) {
    g_registry[kWindows] = {{L"UBR", Number(4294967295u)}};
    EXPECT_EQ(ReadOsInfo().updateRevision, L"4294967295");
    g_registry[kWindows] = {{L"UBR", Number(0)}};
    EXPECT_EQ(ReadOsInfo().updateRevision, L"0");
}

TEST_F(SystemProbe, WithoutTheVersionFunctionTheVersionIsZeroAndTheNameStays) {
    g_versionFunctionExists = false;
    g_registry[kWindows] = {{L"ProductName", Text(L"Windows 10 Pro")}};
    const OsInfo os = ReadOsInfo();
    EXPECT_EQ(os.major, 0u);
    EXPECT_EQ(os.minor, 0u);
    EXPECT_EQ(os.build, 0u);
    EXPECT_EQ(os.productName, L"Windows 10 Pro");
}

TEST_F(SystemProbe, WithoutTheLibraryTheVersionIsZero) {
    g_libraryLoads = false;
    const OsInfo os = ReadOsInfo();
    EXPECT_EQ(os.major, 0u);
    EXPECT_EQ(os.build, 0u);
}

TEST_F(SystemProbe, AFailedVersionCallLeavesTheVersionZero) {
    g_versionStatus = static_cast<LONG>(0xC0000001);
    const OsInfo os = ReadOsInfo();
    EXPECT_EQ(os.major, 0u);
    EXPECT_EQ(os.build, 0u);
}

TEST_F(SystemProbe, TheCpuHasItsName) {
    g_registry[kCpu] = {{L"ProcessorNameString", Text(L"AMD Ryzen 7 5800X 8-Core Processor")}};
    EXPECT_EQ(ReadCpuName(), L"AMD Ryzen 7 5800X 8-Core Processor");
}

TEST_F(SystemProbe, ACpuWithoutKeyValueTextOrTypeIsUnknown) {
    EXPECT_EQ(ReadCpuName(), L"unknown");
    g_registry[kCpu] = {};
    EXPECT_EQ(ReadCpuName(), L"unknown");
    g_registry[kCpu] = {{L"ProcessorNameString", Text(L"")}};
    EXPECT_EQ(ReadCpuName(), L"unknown");
    g_registry[kCpu] = {{L"ProcessorNameString", Value{REG_SZ, {}}}};
    EXPECT_EQ(ReadCpuName(), L"unknown");
    g_registry[kCpu] = {{L"ProcessorNameString", Number(5800)}};
    EXPECT_EQ(ReadCpuName(), L"unknown");
}

TEST_F(SystemProbe, TextWithoutATerminatorIsReadCompletely) {
    g_registry[kCpu] = {{L"ProcessorNameString", Bytes(REG_SZ, L"Unterminated CPU")}};
    EXPECT_EQ(ReadCpuName(), L"Unterminated CPU");
}

TEST_F(SystemProbe, TextEndsAtItsFirstZero) {
    g_registry[kCpu] = {{L"ProcessorNameString", Bytes(REG_SZ, std::wstring(L"CPU\0junk\0", 9))}};
    EXPECT_EQ(ReadCpuName(), L"CPU");
}

TEST_F(SystemProbe, AnOddNumberOfBytesIsReadWithoutTheHalfCharacter) {
    Value odd = Bytes(REG_SZ, L"CPU");
    odd.data.push_back(0x41);
    g_registry[kCpu] = {{L"ProcessorNameString", odd}};
    EXPECT_EQ(ReadCpuName(), L"CPU");
    g_registry[kCpu] = {{L"ProcessorNameString", Value{REG_SZ, {0x41}}}};
    EXPECT_EQ(ReadCpuName(), L"unknown");
}

TEST_F(SystemProbe, ATextOf4KilobytesIsReadCompletely) {
    const std::wstring terminated(2047, L'C');
    g_registry[kCpu] = {{L"ProcessorNameString", Text(terminated)}};
    EXPECT_EQ(ReadCpuName(), terminated);
    const std::wstring unterminated(2048, L'D');
    g_registry[kCpu] = {{L"ProcessorNameString", Bytes(REG_SZ, unterminated)}};
    EXPECT_EQ(ReadCpuName(), unterminated);
}

TEST_F(SystemProbe, ALongerTextIsUnreadable) {
    g_registry[kCpu] = {{L"ProcessorNameString", Text(std::wstring(2048, L'C'))}};
    EXPECT_EQ(ReadCpuName(), L"unknown");
    g_registry[kCpu] = {{L"ProcessorNameString", Bytes(REG_SZ, std::wstring(2049, L'D'))}};
    EXPECT_EQ(ReadCpuName(), L"unknown");
}

TEST_F(SystemProbe, TheHardwareIsManufacturerAndProduct) {
    g_registry[kBios] = {{L"SystemManufacturer", Text(L"LENOVO")}, {L"SystemProductName", Text(L"20XW")}};
    EXPECT_EQ(ReadHardwareName(), L"LENOVO 20XW");
}

TEST_F(SystemProbe, OnlyKnownPartsOfTheHardwareAreShown) {
    g_registry[kBios] = {{L"SystemManufacturer", Text(L"LENOVO")}};
    EXPECT_EQ(ReadHardwareName(), L"LENOVO");
    g_registry[kBios] = {{L"SystemManufacturer", Text(L"LENOVO")}, {L"SystemProductName", Text(L"")}};
    EXPECT_EQ(ReadHardwareName(), L"LENOVO");
    g_registry[kBios] = {{L"SystemProductName", Text(L"20XW")}};
    EXPECT_EQ(ReadHardwareName(), L"20XW");
    g_registry[kBios] = {{L"SystemManufacturer", Number(1)}, {L"SystemProductName", Text(L"20XW")}};
    EXPECT_EQ(ReadHardwareName(), L"20XW");
}

TEST_F(SystemProbe, HardwareWithoutNamesIsUnknown) {
    EXPECT_EQ(ReadHardwareName(), L"unknown");
    g_registry[kBios] = {};
    EXPECT_EQ(ReadHardwareName(), L"unknown");
    g_registry[kBios] = {{L"SystemManufacturer", Text(L"")}, {L"SystemProductName", Text(L"")}};
    EXPECT_EQ(ReadHardwareName(), L"unknown");
    g_registry[kBios] = {{L"SystemManufacturer", Bytes(REG_EXPAND_SZ, L"%X%")}};
    EXPECT_EQ(ReadHardwareName(), L"unknown");
}

TEST_F(SystemProbe, NamesOutsideAsciiAreKept) {
    g_registry[kBios] = {{L"SystemManufacturer", Text(L"\u65e5\u672c\u96fb\u6c17")},
                         {L"SystemProductName", Text(L"Caf\u00e9")}};
    EXPECT_EQ(ReadHardwareName(), L"\u65e5\u672c\u96fb\u6c17 Caf\u00e9");
}
