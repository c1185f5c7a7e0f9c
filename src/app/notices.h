// Message boxes that other modules request with a posted message, so that they open after the work is done.
// Neither opens a second time while it is open.
#pragma once

// Legacy Mode was switched on automatically.
void ShowLegacyNotice();

// The colour matrix was refused with this error code.
void ShowMagnificationError(int error);
