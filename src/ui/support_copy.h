// The support button's work.
#pragma once

// Builds the support report and puts it on the clipboard. The button shows that it was copied for five
// seconds; a refused copy is logged and leaves the button as it usually looks.
void CopySupportBundle();
