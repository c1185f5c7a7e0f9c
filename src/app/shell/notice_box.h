// Message boxes that timers and posted messages can request again while they are open. Window thread only.
#pragma once

#include "win32/platform.h"

enum class NoticeBox { LegacyMode, MatrixRefused, LibraryMissing, FunctionsMissing, InitializeFailed };

// Shows the text under the program's title and returns when the user has closed the box. `icon` is an MB_ICON
// flag. Returns immediately if the same box is already open.
void ShowNoticeBox(NoticeBox box, HWND owner, const wchar_t* text, UINT icon);
