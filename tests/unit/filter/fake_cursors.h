// Configurable fakes of Windows' cursor functions for the table of sixteen: loading, copying, querying,
// setting and destroying, and building one tinted copy. Records each call.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "support/seam.h"
#include "win32/platform.h"

AMBREL_USES_SEAMS(fake_cursors);

// In the order of the table.
inline constexpr int kIds[] = {32512, 32513, 32514, 32515, 32516, 32640, 32641, 32642,
                               32643, 32644, 32645, 32646, 32648, 32649, 32650, 32651};

// Handles identify their origin: the shared cursor 32512 of LoadImageW is 1032512, that of LoadCursorW
// 2032512, the private copy 3032512 or, by CopyIcon, 4032512, and the tinted one 5032512.
enum HandleKind : std::uintptr_t { kFromImage = 1, kFromCursor, kCopied, kIconCopied, kTinted };

struct FakeCursors {
    std::set<int> noImage;  // ids that LoadImageW fails on, and so on
    std::set<int> noCursor;
    std::set<int> noCopyImage;
    std::set<int> noCopyIcon;
    std::set<int> noInfo;
    bool staleInfo = false;  // a failing GetIconInfo leaves the handles of bitmaps that it has deleted
    std::set<int> monochrome;
    std::set<int> withoutBitmaps;  // GetIconInfo succeeds and gives neither
    std::set<int> notBuilt;
    std::set<int> notSet;
    std::multiset<std::uintptr_t> bitmaps;  // of GetIconInfo, not deleted yet
    std::multiset<std::uintptr_t> cursors;  // copies and tinted ones that are ours to destroy
    std::map<int, std::uintptr_t> current;  // what SetSystemCursor was given last
    std::vector<std::array<int, 3>> built;  // what white becomes in each building: red, green, blue
};

extern FakeCursors g_cursors;

HCURSOR CursorHandle(HandleKind kind, int id);

// The colour that white becomes, computed from the published formulas.
std::array<int, 3> WhiteAt(double intensity, double brightness);

// Every call except the queries.
std::vector<std::string> CallsWithoutQueries();
