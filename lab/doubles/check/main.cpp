// A client of both doubles through Windows' own interfaces, as simple as it can be, for checking them. It
// reads one command a line (fields separated by tabs) and ends each answer with a line of the character 4 and
// how many timer messages were dispatched during the command.
#include <fcntl.h>
#include <io.h>

#include <cstdio>

#include "check.h"

namespace {

constexpr UINT kTimerPeriod = 20;

const Command kCommands[] = {
    {L"monitors", 0, ListMonitors}, {L"monitor-set", 2, SetMonitor}, {L"monitor-misuse", 0, MisuseMonitors},
    {L"panels", 0, ListPanels},     {L"panel-set", 2, SetPanel},     {L"panel-misuse", 1, MisusePanels},
};

int g_timerMessages = 0;

void CALLBACK OnTimer(HWND, UINT, UINT_PTR, DWORD) {
    ++g_timerMessages;
}

void Run(const std::wstring& line) {
    Arguments fields;
    size_t start = 0;
    for (size_t tab = line.find(L'\t'); tab != std::wstring::npos; tab = line.find(L'\t', start)) {
        fields.push_back(Unescape(line.substr(start, tab - start)));
        start = tab + 1;
    }
    fields.push_back(Unescape(line.substr(start)));
    const std::wstring name = fields.front();
    fields.erase(fields.begin());
    g_timerMessages = 0;
    for (const Command& command : kCommands) {
        if (name == command.name && fields.size() >= command.argumentCount) {
            command.run(fields);
        }
    }
    Print(L"\x4%d\n", g_timerMessages);
    FlushOutput();
}

}  // namespace

int main() {
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
    // As a careful program does; the doubles must be found all the same.
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
    SetTimer(nullptr, 0, kTimerPeriod, OnTimer);
    std::string line;
    for (int letter = std::getchar(); letter != EOF; letter = std::getchar()) {
        if (letter == '\n') {
            Run(FromUtf8(line));
            line.clear();
        } else {
            line += static_cast<char>(letter);
        }
    }
    return 0;
}
