// The action of the support button.
#pragma once

// Builds the support report and copies it to the clipboard. The button indicates success for five seconds. A
// failure is logged; it ends the indication of an earlier copy only if the clipboard was emptied.
void CopySupportBundle();

// Whether the button indicates success now.
bool ShowsCopied();
