#include "diag/fake_program.h"

#include "brightness/display_targets.h"
#include "diag/system_probe.h"
#include "filter/gamma_restart.h"
#include "store/autostart.h"
#include "store/event_log.h"
#include "support/call_record.h"
#include "support/seam.h"
#include "win32/program_path.h"

AMBREL_SEAM_SET(fake_program);

FakeProgram g_program;

AMBREL_REPLACE(OsInfo, ReadOsInfo, ()) {
    return g_program.os;
}

AMBREL_REPLACE(std::wstring, ReadCpuName, ()) {
    return g_program.cpuName;
}

AMBREL_REPLACE(std::wstring, ReadHardwareName, ()) {
    return g_program.hardwareName;
}

AMBREL_REPLACE(std::wstring, ReadMachineGuid, ()) {
    return g_program.machineGuid;
}

AMBREL_REPLACE(std::wstring, ReadAutostartValue, ()) {
    return g_program.autostartValue;
}

AMBREL_REPLACE(bool, IsProgramPath, (const std::wstring& path)) {
    return path == g_program.ownPath;
}

AMBREL_REPLACE(bool, IsRestartDoneSinceFix, ()) {
    return g_program.restartDone;
}

AMBREL_REPLACE(std::vector<std::wstring>, ReadLogRing, ()) {
    Record("read ring");
    return g_program.ring;
}

AMBREL_REPLACE(std::vector<std::wstring>, ReadLogTail, ()) {
    return g_program.tail;
}

AMBREL_REPLACE(void, EnumerateTargets, (DisplayTargetList*)) {
    Record("ENUMERATE TARGETS");
}
