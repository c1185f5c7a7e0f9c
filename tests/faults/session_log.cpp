#include "faults/session_log.h"

#include <cstdio>
#include <cstring>
#include <vector>

#include "faults/session.h"
#include "win32/platform.h"

namespace {

constexpr int kOldLines = 6000;  // more than 256 KiB
constexpr char kLastOldLine[] = "[23:59:59.999] the last line of the old log";

std::wstring LogPath() {
    return ProgramFolder() + L"events.log";
}

// A beginning of messages, and the functions without which it is untrue; none if it always is.
struct Claim {
    const char* message;
    std::vector<const char*> functions;
};

const std::vector<Claim>& Claims() {
    static const std::vector<Claim> claims = {
        {"Crashed", {}},
        {"No messages from Windows", {}},
        {"Support bundle copied", {"OpenClipboard", "SetClipboardData", "GlobalAlloc", "GlobalLock"}},
        {"Tray icon added", {"Shell_NotifyIconW"}},
        {"Legacy ramp accepted", {"SetDeviceGammaRamp", "GetDC"}},
        {"Gamma-range fix helper launched", {"ShellExecuteW", "MessageBoxW"}},
        {"Gamma-range expansion confirmed",
         {"RegQueryValueExW", "RegOpenKeyExW", "RegCreateKeyExW", "RegSetValueExW"}},
        {"PWM-safe: lock recovered",
         {"GetMonitorBrightness", "GetMonitorCapabilities", "SetMonitorBrightness"}},
        // The displays are a monitor and a panel, which Windows controls with different functions.
        {"PWM-safe: 1 display(s) confirmed", {"SetMonitorBrightness"}},
        {"PWM-safe: 2 display(s) confirmed",
         {"GetMonitorBrightness", "GetMonitorCapabilities", "SetMonitorBrightness", "EnumDisplayMonitors",
          "GetNumberOfPhysicalMonitorsFromHMONITOR", "GetPhysicalMonitorsFromHMONITOR", "LoadLibraryExW",
          "GetProcAddress", "CoCreateInstance", "CoSetProxyBlanket", "SysAllocString"}},
        {"PWM-safe targets: 2 controllable",
         {"GetMonitorBrightness", "GetMonitorCapabilities", "EnumDisplayMonitors",
          "GetNumberOfPhysicalMonitorsFromHMONITOR", "GetPhysicalMonitorsFromHMONITOR", "LoadLibraryExW",
          "GetProcAddress", "CoCreateInstance", "CoSetProxyBlanket", "SysAllocString"}},
    };
    return claims;
}

std::string OldLog() {
    std::string text;
    for (int line = 0; line < kOldLines; ++line)
        text += "[12:00:00.000] an old line of the log, " + std::to_string(line) + "\n";
    return text + kLastOldLine + "\n";
}

std::string ReadLog() {
    std::string text;
    std::FILE* file = _wfopen(LogPath().c_str(), L"rb");
    if (file == nullptr) return text;
    static char part[1024 * 1024];
    for (std::size_t size; (size = std::fread(part, 1, sizeof(part), file)) != 0;)
        text.append(part, size);
    std::fclose(file);
    return text;
}

// The lines since the start of the session; the log keeps those of the sessions before.
std::string SessionLog() {
    const std::string text = ReadLog();
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

void WriteOldLog() {
    static const std::string text = OldLog();
    CreateDirectoryW(ProgramFolder().c_str(), nullptr);
    std::FILE* file = _wfopen(LogPath().c_str(), L"wb");
    if (file == nullptr) return;
    std::fwrite(text.data(), 1, text.size(), file);
    std::fclose(file);
}

bool IsOldLogKept() {
    return ReadLog().find(kLastOldLine) != std::string::npos;
}

std::string FindUntrueLine(const char* function) {
    const std::string log = SessionLog();
    for (const Claim& claim : Claims()) {
        const std::size_t start =
            IsUntrue(claim, function) ? log.find(std::string("] ") + claim.message) : log.npos;
        if (start != log.npos) return log.substr(start + 2, log.find('\n', start) - start - 2);
    }
    return {};
}
