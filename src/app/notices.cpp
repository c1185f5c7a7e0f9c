#include "app/notices.h"

#include "app/state/app_state.h"
#include "app/state/program_names.h"
#include "win32/format_text.h"

void ShowLegacyNotice() {
    MessageBoxW(
        g_app.mainWindow,
        L"Ambrel detected that your graphics hardware doesn't support the modern color pipeline, so it "
        L"switched to Legacy Mode automatically. Everything is working \u2014 the warmth and brightness "
        L"sliders behave the same way.\n\nYou can change this any time in Settings (Legacy Mode).",
        kProgramTitle, MB_ICONINFORMATION);
}

void ShowMagnificationError(int error) {
    wchar_t text[256];
    FormatText(text, "MagSetFullscreenColorEffect failed.\nError code: %d", error);
    MessageBoxW(g_app.mainWindow, text, kProgramTitle, MB_ICONWARNING);
}
