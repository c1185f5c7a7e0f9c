#include "app/startup.h"
#include "win32/system_library.h"

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, wchar_t*, int) {
    RestrictDllSearchToSystem32();
    return RunAmbrel(instance, GetCommandLineW());
}
