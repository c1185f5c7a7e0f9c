// Executes the lab's commands inside the Windows desktop. A single command:
//     labtool NAME ARGUMENT...
// The resident form, in which a command takes a millisecond instead of the start of a process:
//     labtool serve
// It reads one command per line, a JSON array of its name and its arguments, and answers each with one line:
//     {"result": a ToolResult, "answer": the command's output}
#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <iterator>

#include "tool.h"

namespace {

const Command kCommands[] = {
    {L"serve", 0, Serve},
    {L"accessible", 1, ShowAccessible},
    {L"accessible-press", 2, PressAccessible},
    {L"accessible-set", 3, SetAccessibleValue},
    {L"accessible-select", 3, SelectAccessible},
    {L"accessible-hit", 3, HitAccessible},
    {L"accessible-navigate", 3, NavigateAccessible},
    {L"accessible-hold", 1, HoldAccessible},
    {L"accessible-events", 1, ReportEvents},
    {L"accessible-random", 4, CallAtRandom},
    {L"windows", 0, ListWindows},
    {L"window", 1, DescribeWindow},
    {L"message", 5, SendToWindow},
    {L"message-data", 4, SendWithData},
    {L"messages-random", 3, SendAtRandom},
    {L"boxes", 0, ListBoxes},
    {L"press", 2, PressButton},
    {L"tray", 0, ListTrayIcons},
    {L"clipboard-get", 0, GetClipboardText},
    {L"clipboard-set", 1, SetClipboardText},
    {L"clipboard-hold", 0, HoldClipboard},
    {L"mode", 2, ChangeMode},
    {L"metrics", 0, ShowMetrics},
    {L"foreground", 0, TakeForeground},
    {L"process", 1, DescribeProcess},
    {L"mutex", 1, FindMutex},
    {L"mutex-hold", 1, HoldMutex},
    {L"registry-get", 2, RegistryGet},
    {L"registry-set", 4, RegistrySet},
    {L"registry-delete", 1, RegistryDelete},
    {L"inject", 2, InjectLibrary},
    {L"magnify", 3, CallMagnification},
    {L"measure", 4, MeasureText},
};

}  // namespace

int RunCommand(const std::wstring& name, const Arguments& arguments, Json& answer) {
    for (const Command& command : kCommands) {
        if (name == command.name) {
            return arguments.size() < command.argumentCount ? kToolUsage : command.run(arguments, answer);
        }
    }
    return kToolUsage;
}

// serve: executes commands from standard input until it is closed.
int Serve(const Arguments&, Json&) {
    std::string line;
    for (int letter = std::getchar(); letter != EOF; letter = std::getchar()) {
        if (letter != '\n') {
            line += static_cast<char>(letter);
            continue;
        }
        Arguments words;
        Json answer;
        int result = kToolUsage;
        if (ReadJsonStrings(FromUtf8(line), words) && words.front() != L"serve") {
            result = RunCommand(words.front(), Arguments(words.begin() + 1, words.end()), answer);
        }
        line.clear();
        PrintBytes(JsonObject({{"result", result}, {"answer", answer}}).text + "\n");
        FlushOutput();
    }
    return kToolOk;
}

int wmain(int count, wchar_t** words) {
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
    if (count < 2) {
        return kToolUsage;
    }
    Json answer;
    const int result = RunCommand(words[1], Arguments(words + 2, words + count), answer);
    if (words[1] != std::wstring(L"serve")) {
        PrintBytes(answer.text + "\n");
    }
    FlushOutput();
    return result;
}
