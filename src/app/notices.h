// Message boxes that other modules request with a posted message, so that they open after the caller has
// returned. A box does not open a second time while it is open.
#pragma once

// Reports that Legacy Mode was switched on automatically.
void ShowLegacyNotice();

// Reports that the colour matrix was refused with this error code.
void ShowMagnificationError(int error);
