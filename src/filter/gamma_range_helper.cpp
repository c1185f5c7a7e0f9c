#include "filter/gamma_range_helper.h"

#include "app/state/program_names.h"
#include "filter/gamma_range.h"
#include "win32/platform.h"

int RunGammaRangeHelper() {
    if (ExpandGammaRange()) {
        MessageBoxW(
            nullptr,
            L"Done. The limit has been removed.\n\nNow restart your computer (click Restart, not Shut "
            L"down).\nEverything should work after the restart.",
            kProgramTitle, MB_ICONINFORMATION);
        return 0;
    }
    MessageBoxW(
        nullptr,
        L"Windows did not allow the change. Ambrel will keep\nworking with mild settings only.\n\nNeed help? "
        L"Email " AMBREL_SUPPORT_ADDRESS L".",
        kProgramTitle, MB_ICONERROR);
    return 1;
}
