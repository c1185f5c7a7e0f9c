#include "app/shell/notice_box.h"

#include "app/state/app_state.h"
#include "app/state/program_names.h"

void ShowNoticeBox(NoticeBox box, HWND owner, const wchar_t* text, UINT icon) {
    const std::uint32_t bit = 1U << static_cast<unsigned>(box);
    if ((g_app.openNoticeBoxes & bit) != 0) return;
    g_app.openNoticeBoxes |= bit;
    // Dispatches messages, including WM_TIMER, until the box is closed.
    MessageBoxW(owner, text, kProgramTitle, icon);
    g_app.openNoticeBoxes &= ~bit;
}
