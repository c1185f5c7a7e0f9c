#include "diag/fake_program.h"

#include "brightness/display_targets.h"
#include "filter/gamma_banner.h"
#include "store/autostart.h"
#include "store/event_log.h"
#include "support/call_record.h"
#include "win32/own_path.h"

FakeProgram g_program;

OsInfo ReadOsInfo() {
    return g_program.os;
}

std::wstring ReadCpuName() {
    return g_program.cpuName;
}

std::wstring ReadHardwareName() {
    return g_program.hardwareName;
}

std::wstring ReadMachineGuid() {
    return g_program.machineGuid;
}

std::wstring ReadAutostartValue() {
    return g_program.autostartValue;
}

bool IsOwnProgramPath(const std::wstring& path) {
    return path == g_program.ownPath;
}

bool IsRestartDoneSinceFix() {
    return g_program.restartDone;
}

std::vector<std::wstring> ReadLogRing() {
    Record("read ring");
    return g_program.ring;
}

std::vector<std::wstring> ReadLogTail() {
    return g_program.tail;
}

void EnumerateTargets(DisplayTargetList*) {
    Record("ENUMERATE TARGETS");
}
