#include "app/notices.h"

#include "app/shell/notice_box.h"
#include "app/state/app_state.h"
#include "win32/format_text.h"

void ShowLegacyNotice() {
    ShowNoticeBox(
        NoticeBox::LegacyMode, g_app.mainWindow,
        L"Ambrel detected that your graphics hardware doesn't support the modern color pipeline, so it "
        L"switched to Legacy Mode automatically. Everything is working \u2014 the warmth and brightness "
        L"sliders behave the same way.\n\nYou can change this any time in Settings (Legacy Mode).",
        MB_ICONINFORMATION);
}

void ShowMagnificationError(int error) {
    wchar_t text[256];
    FormatText(text, "MagSetFullscreenColorEffect failed.\nError code: %d", error);
    ShowNoticeBox(NoticeBox::MatrixRefused, g_app.mainWindow, text, MB_ICONWARNING);
}
