// The GDI calls of one tinted copy, led through seams to the real functions: kept in a ledger of what was
// made and not yet given back, in the record of calls, and failing where a test wants them to. Only between
// Open and Close.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "support/seam.h"
#include "win32/platform.h"

AMBREL_USES_SEAMS(gdi_ledger);

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

struct GdiLedger {
    std::set<GdiCall> failing;
    bool withoutColour = false;  // GetIconInfo keeps back one of the two bitmaps, or both
    bool withoutMask = false;
    bool staleOnFailure = false;  // a failing GetIconInfo leaves handles of what it deleted itself
    UINT linesKeptBack = 0;       // GetDIBits reads so many fewer than it was asked for
    SIZE cursorMetrics = {};      // 0: the real ones

    std::map<HANDLE, std::string> kept;  // made and not given back, by kind
    std::vector<std::string> wrongs;     // given back twice, or never made
    std::map<std::string, int> made;     // by kind
    ICONINFO source = {};                // of the last GetIconInfo
    ICONINFO result = {};                // of the last CreateIconIndirect
    HBITMAP lastDib = nullptr;
    HBITMAP lastMask = nullptr;           // of CreateBitmap
    std::vector<unsigned char> maskBits;  // that CreateBitmap was given
};

extern GdiLedger g_ledger;

void OpenLedger();

// Afterwards the calls go to the real functions only.
void CloseLedger();
