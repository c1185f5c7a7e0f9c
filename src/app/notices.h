// The message boxes that other parts of the program post for, so that they open after the work is done.
#pragma once

// Legacy Mode was switched on automatically.
void ShowLegacyNotice();

// The colour matrix was refused with this error code.
void ShowMagnificationError(int error);
