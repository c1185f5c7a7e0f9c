// Registry values of any type, length and content, which may change between two queries.
#include "diag/system_probe.h"

#include <iterator>

#include "shim/shim.h"
#include "store/autostart.h"
#include "store/event_log.h"
#include "target.h"

namespace {

constexpr std::size_t kMaxUnits = 2048;

void CheckText(const std::wstring& text, std::size_t maximum) {
    CHECK(text.size() <= maximum && text.find(L'\0') == std::wstring::npos);
}

// The sizes around the program's limits.
constexpr std::size_t kLengths[] = {0, 1, 2, 2044, 2046, 2047, 2048, 4094, 4095, 4096, 4097, 4098, 70000};

std::vector<RegistryAnswer> Answers(Input* input) {
    std::vector<RegistryAnswer> answers;
    while (!input->IsEmpty() && answers.size() < 12) {
        RegistryAnswer answer;
        answer.type = input->Byte() % 8U;
        const std::uint8_t kind = input->Byte();
        const std::wstring text = input->Line();
        answer.data.assign(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
        if (kind < std::size(kLengths)) answer.data.resize(kLengths[kind], 'A');
        // Data need not be whole characters.
        if (input->Flag() && !answer.data.empty()) answer.data.pop_back();
        answers.push_back(answer);
        // Most values do not change between two queries.
        if (!input->Flag()) answers.push_back(answer);
    }
    return answers;
}

}  // namespace

void FuzzRegistry(Input input) {
    const std::uint8_t kind = input.Byte();
    const std::uint32_t build = input.Number();
    const std::wstring name = input.Line();
    SetRegistry(Answers(&input));
    switch (kind % 6) {
        case 0: {
            const OsInfo info = ReadOsInfo();
            CheckText(info.productName, kMaxUnits);
            CheckText(info.displayVersion, kMaxUnits);
            CheckText(info.updateRevision, 10);
            break;
        }
        case 1: CHECK(!ReadCpuName().empty()); break;
        case 2: CheckText(ReadMachineGuid(), kMaxUnits); break;
        case 3: {
            const std::wstring hardware = ReadHardwareName();
            CHECK(!hardware.empty());
            CheckText(hardware, 2 * kMaxUnits + 1);
            break;
        }
        case 4: CheckText(ReadAutostartValue(), 1023); break;
        default: {
            RepairAutostartEntry();
            const std::vector<std::wstring> lines = ReadLogRing();
            CHECK(lines.empty() || !HasControl(lines.back()));
            break;
        }
    }
    const std::wstring corrected = CorrectProductName(name, 10, build);
    CHECK(corrected.size() == name.size());
    const std::size_t ten = name.find(L"Windows 10");
    CHECK((corrected == name) == (build < 22000 || ten == std::wstring::npos));
}
