// The floor of the whole program: one flat list of the calls that its start-up, its poll and its click
// require, in a separate program. Modes, by the first word of the command line:
//     (none)  starts and waits for messages; a click on the icon shows the popup
//     poll    also queries the displays every two seconds
// Why not less: see floor_start.cpp, floor_polls.cpp, floor_popup.cpp and floor_panel.cpp.
#include "floor_popup.h"
#include "floor_start.h"
#include "win32/platform.h"

namespace {

constexpr UINT kPollPeriod = 2000;  // ms

}  // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, wchar_t* commandLine, int) {
    FloorPrepareProcess();
    FloorReadFiles();
    FloorLoadPipeline();
    HWND window = FloorCreateWindow(instance, FloorWindowProc);
    FloorAddIcon(instance, window);
    ShowWindow(window, SW_HIDE);
    if (lstrcmpW(commandLine, L"poll") == 0) SetTimer(window, kFloorPollTimer, kPollPeriod, nullptr);
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0)
        DispatchMessageW(&message);
    return 0;
}
