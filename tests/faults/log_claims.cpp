#include "faults/log_claims.h"

#include <cstdio>
#include <cstring>
#include <vector>

#include "faults/session.h"

namespace {

// A beginning of messages, and the functions without which it is untrue; none if it always is.
struct Claim {
    const char* message;
    std::vector<const char*> functions;
};

const std::vector<Claim>& Claims() {
    static const std::vector<Claim> claims = {
        {"Crashed", {}},
        {"No messages from Windows", {}},
        {"Support bundle copied",
         {"OpenClipboard", "EmptyClipboard", "SetClipboardData", "GlobalAlloc", "GlobalLock"}},
        {"Tray icon added", {"Shell_NotifyIconW"}},
        {"Legacy ramp accepted", {"SetDeviceGammaRamp", "GetDC"}},
        {"Gamma-range fix helper launched", {"ShellExecuteW"}},
        {"Gamma-range expansion confirmed", {"RegQueryValueExW", "RegOpenKeyExW"}},
        {"PWM-safe: lock recovered",
         {"GetMonitorBrightness", "GetMonitorCapabilities", "SetMonitorBrightness"}},
        {"PWM-safe: 1 display(s) confirmed",
         {"GetMonitorBrightness", "GetMonitorCapabilities", "SetMonitorBrightness", "EnumDisplayMonitors",
          "GetMonitorInfoW", "GetNumberOfPhysicalMonitorsFromHMONITOR", "GetPhysicalMonitorsFromHMONITOR",
          "LoadLibraryExW", "GetProcAddress"}},
    };
    return claims;
}

// The lines since the start of the session; the log keeps those of the sessions before.
std::string SessionLog() {
    std::string text;
    std::FILE* file = _wfopen((ProgramFolder() + L"events.log").c_str(), L"rb");
    if (file == nullptr) return text;
    char part[4096];
    for (std::size_t size; (size = std::fread(part, 1, sizeof(part), file)) != 0;)
        text.append(part, size);
    std::fclose(file);
    const std::size_t start = text.rfind("Ambrel Windows v");
    return start != text.npos ? text.substr(start) : std::string();
}

bool IsUntrue(const Claim& claim, const char* function) {
    if (claim.functions.empty()) return std::strcmp(function, "GetMessageW") != 0;
    for (const char* needed : claim.functions) {
        if (std::strcmp(needed, function) == 0) return true;
    }
    return false;
}

}  // namespace

std::string FindUntrueLine(const char* function) {
    const std::string log = SessionLog();
    for (const Claim& claim : Claims()) {
        const std::size_t start =
            IsUntrue(claim, function) ? log.find(std::string("] ") + claim.message) : log.npos;
        if (start != log.npos) return log.substr(start + 2, log.find('\n', start) - start - 2);
    }
    return {};
}
