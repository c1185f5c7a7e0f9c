// The support button's work.
#pragma once

// Builds the support report and puts it on the clipboard. The button shows for five seconds that it was
// copied. A failed copy is logged; it ends that look of an earlier copy only if the clipboard was emptied.
void CopySupportBundle();
