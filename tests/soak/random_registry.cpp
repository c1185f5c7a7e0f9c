// Random values of random types in every place of the registry that the program reads.
#include <cwchar>
#include <iterator>
#include <vector>

#include "app/state/app_state.h"
#include "diag/support_bundle.h"
#include "diag/system_probe.h"
#include "faults/session.h"
#include "filter/gamma_range.h"
#include "soak/attack.h"
#include "soak/outside_text.h"
#include "store/autostart.h"
#include "store/event_log.h"
#include "win32/program_path.h"

namespace {

struct Place {
    HKEY root;
    const wchar_t* key;
    const wchar_t* value;
};

constexpr wchar_t kRun[] = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr wchar_t kIcm[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ICM";
constexpr wchar_t kWindows[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
constexpr wchar_t kCpu[] = L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0";
constexpr wchar_t kBios[] = L"HARDWARE\\DESCRIPTION\\System\\BIOS";
constexpr wchar_t kCryptography[] = L"SOFTWARE\\Microsoft\\Cryptography";

// HKEY_LOCAL_MACHINE is no constant expression.
const Place kPlaces[] = {
    {HKEY_LOCAL_MACHINE, kWindows, L"ProductName"},
    {HKEY_LOCAL_MACHINE, kWindows, L"DisplayVersion"},
    {HKEY_LOCAL_MACHINE, kWindows, L"UBR"},
    {HKEY_LOCAL_MACHINE, kCpu, L"ProcessorNameString"},
    {HKEY_LOCAL_MACHINE, kBios, L"SystemManufacturer"},
    {HKEY_LOCAL_MACHINE, kBios, L"SystemProductName"},
    {HKEY_LOCAL_MACHINE, kCryptography, L"MachineGuid"},
};
const Place kRunPlace = {HKEY_CURRENT_USER, kRun, L"Ambrel2"};
const Place kGammaPlace = {HKEY_LOCAL_MACHINE, kIcm, L"GdiIcmGammaRange"};

constexpr DWORD kTypes[] = {
    REG_NONE, REG_SZ,       REG_SZ,    REG_EXPAND_SZ, REG_BINARY, REG_DWORD, REG_DWORD_BIG_ENDIAN,
    REG_LINK, REG_MULTI_SZ, REG_QWORD, 4711};
constexpr int kRingLines = 500;  // in the report
constexpr int kLoggedLines = 5;

struct Data {
    DWORD type = REG_NONE;
    std::vector<BYTE> bytes;
};

Data AnyData(RandomSource& random) {
    Data data;
    data.type = kTypes[random.Below(std::size(kTypes))];
    const unsigned longest = random.OneIn(10) ? 70000 : random.OneIn(3) ? 3000 : 40;
    data.bytes.resize(random.OneIn(4) ? random.Below(5) + 2 : random.Below(longest));
    const bool text = random.OneIn(2);
    for (std::size_t i = 0; i < data.bytes.size(); ++i) {
        // Text: mostly printable, without a terminator, with line ends now and then.
        const bool high = text && i % 2 == 1;
        const auto any = static_cast<BYTE>(random.Any());
        data.bytes[i] = high                       ? static_cast<BYTE>(random.OneIn(20) ? 0x20 : 0)
                        : text && random.OneIn(10) ? BYTE{'\n'}
                                                   : any;
    }
    return data;
}

void Write(const Place& place, const Data& data) {
    const LSTATUS status = RegSetKeyValueW(place.root, place.key, place.value, data.type, data.bytes.data(),
                                           static_cast<DWORD>(data.bytes.size()));
    Require(status == ERROR_SUCCESS, "the registry refuses a value: error " + std::to_string(status));
}

bool IsExpanded(const Data& data) {
    if (data.type != REG_DWORD || data.bytes.size() != sizeof(DWORD)) return false;
    return data.bytes[1] != 0 || data.bytes[2] != 0 || data.bytes[3] != 0;
}

void TestGammaRange(RandomSource& random) {
    const Data data = AnyData(random);
    Write(kGammaPlace, data);
    Require(IsGammaRangeExpanded() == IsExpanded(data), "the gamma range is misread: type " +
                                                            std::to_string(data.type) + ", " +
                                                            std::to_string(data.bytes.size()) + " bytes");
}

void TestAutostart(RandomSource& random) {
    Write(kRunPlace, AnyData(random));
    Require(ReadAutostartValue().size() < 1024, "the autostart value is too long");
    g_app.launchAtStart = random.OneIn(2);
    RepairAutostartEntry();
    Require(ReadAutostartValue() == ProgramPath() && g_app.launchAtStart,
            "the autostart entry is not repaired");
    RegDeleteKeyValueW(kRunPlace.root, kRunPlace.key, kRunPlace.value);
}

// The edition's line depends on the registry.
int LinesWithoutEdition(const std::wstring& report) {
    return CountLines(report) - (report.find(L"\r\nEdition:") != std::wstring::npos ? 1 : 0);
}

void TestReport(RandomSource& random, int expectedLines) {
    for (const Place& place : kPlaces)
        Write(place, AnyData(random));
    for (int i = 0; i < kLoggedLines; ++i)
        LogEvent("OS: %ls", ReadOsInfo().productName.c_str());
    const std::wstring report = BuildSupportBundle();
    RequireReportLines(report);
    const int lines = LinesWithoutEdition(report);
    Require(lines == expectedLines,
            "the report has " + std::to_string(lines) + " lines instead of " + std::to_string(expectedLines));
}

int LinesOfAnOrdinaryReport() {
    for (int i = 0; i < kRingLines; ++i)
        LogEvent("an ordinary line");
    return LinesWithoutEdition(BuildSupportBundle());
}

}  // namespace

void AttackRegistry() {
    PrepareSession({});
    const int lines = LinesOfAnOrdinaryReport();
    for (int i = 0; i < g_round->steps && !Failed(); ++i) {
        RecordStep("machine " + std::to_string(i));
        TestGammaRange(g_round->random);
        TestAutostart(g_round->random);
        TestReport(g_round->random, lines);
    }
    CleanUpSession();
}
