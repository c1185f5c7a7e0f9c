// A minimal client of both doubles that uses Windows' own interfaces, for the lab's self-test. It reads one
// command per line, a JSON array of its name and its arguments, and prints the rows of the result and then
// the number of timer messages that were dispatched during the command.
#include <fcntl.h>
#include <io.h>

#include <cstdio>

#include "check.h"

namespace {

constexpr UINT kTimerPeriod = 20;

const CheckCommand kCommands[] = {
    {L"monitors", 0, ListMonitors}, {L"monitor-set", 2, SetMonitor}, {L"monitor-misuse", 0, MisuseMonitors},
    {L"panels", 0, ListPanels},     {L"panel-set", 2, SetPanel},     {L"panel-misuse", 1, MisusePanels},
    {L"timer", 0, TryTimer},
};

int g_timerMessages = 0;

void CALLBACK OnTimer(HWND, UINT, UINT_PTR, DWORD) {
    ++g_timerMessages;
}

void Run(const std::wstring& line) {
    Arguments words;
    if (!ReadJsonStrings(line, words)) {
        return;
    }
    const Arguments arguments(words.begin() + 1, words.end());
    g_timerMessages = 0;
    for (const CheckCommand& command : kCommands) {
        if (words.front() == command.name && arguments.size() >= command.argumentCount) {
            command.run(arguments);
        }
    }
    PrintBytes(Json(g_timerMessages).text + "\n");
    FlushOutput();
}

}  // namespace

void PrintRow(const std::vector<Json>& values) {
    PrintBytes(JsonArray(values).text + "\n");
}

int main() {
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
    // The program does this too. Windows must find the doubles anyway.
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
