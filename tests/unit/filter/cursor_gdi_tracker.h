// Tracks the GDI calls of one tinted copy. Seams forward them to the real functions, track objects that are
// created and not yet released, record the calls, and fail where a test requests it. Active only between
// StartTracking and StopTracking.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "support/seam.h"
#include "win32/platform.h"

AMBREL_USES_SEAMS(cursor_gdi_tracker);

enum class GdiCall {
    GetIconInfo,
    GetObjectW,
    GetDC,
    CreateCompatibleDC,
    CreateDIBSection,
    GetDIBits,
    DrawIconEx,
    CreateBitmap,
    CreateIconIndirect,
};

struct CursorGdiTracker {
    std::set<GdiCall> failing;
    int failingTime = 0;                  // 1: only the first call of each fails, and so on; 0: every call
    std::map<GdiCall, int> failingSoFar;  // calls of those that fail
    bool withoutColour = false;           // GetIconInfo omits one of the two bitmaps, or both
    bool withoutMask = false;
    bool staleOnFailure = false;  // a failing GetIconInfo leaves the handles of bitmaps that it has deleted
    UINT linesMissing = 0;        // GetDIBits reads this many fewer than requested
    SIZE cursorMetrics = {};      // 0: the real ones

    std::map<HANDLE, std::string> open;  // created and not released, by kind
    std::vector<std::string> errors;     // released twice, or never created
    std::map<std::string, int> created;  // by kind
    ICONINFO source = {};                // of the last GetIconInfo
    ICONINFO result = {};                // of the last CreateIconIndirect
    HBITMAP lastDib = nullptr;
    HBITMAP lastMask = nullptr;           // of CreateBitmap
    std::vector<unsigned char> maskBits;  // passed to CreateBitmap
};

extern CursorGdiTracker g_tracker;

void StartTracking();

// From now on calls are only forwarded to the real functions.
void StopTracking();
