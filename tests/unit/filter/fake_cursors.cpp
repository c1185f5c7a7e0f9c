#include "filter/fake_cursors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "filter/reference_colour.h"
#include "filter/tinted_cursor.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_SEAM_SET(fake_cursors);

FakeCursors g_cursors;

namespace {

constexpr std::uintptr_t kKindOffset = 1000000;

int IdOf(HANDLE handle) {
    return static_cast<int>(ValueOf(handle) % kKindOffset);
}

int IdOfName(LPCWSTR name) {
    EXPECT_TRUE(IS_INTRESOURCE(name));
    return static_cast<int>(ValueOf(name));
}

bool Has(const std::set<int>& ids, int id) {
    return ids.count(id) != 0;
}

HCURSOR Owned(HandleKind kind, int id) {
    HCURSOR cursor = CursorHandle(kind, id);
    g_cursors.cursors.insert(ValueOf(cursor));
    return cursor;
}

void Remove(std::multiset<std::uintptr_t>& from, std::uintptr_t value, const char* what) {
    const auto found = from.find(value);
    if (found == from.end()) {
        ADD_FAILURE() << what << " " << value << " is not ours, or no longer";
    } else {
        from.erase(found);
    }
}

HANDLE WINAPI FakeLoadImageW(HINSTANCE module, LPCWSTR name, UINT type, int width, int height, UINT flags) {
    EXPECT_EQ(module, nullptr);
    EXPECT_EQ(type, UINT{IMAGE_CURSOR});
    EXPECT_EQ(width, 0);
    EXPECT_EQ(height, 0);
    EXPECT_EQ(flags, UINT{LR_DEFAULTSIZE | LR_SHARED});
    const int id = IdOfName(name);
    Record("load image ", id);
    return Has(g_cursors.noImage, id) ? nullptr : CursorHandle(kFromImage, id);
}

HCURSOR WINAPI FakeLoadCursorW(HINSTANCE module, LPCWSTR name) {
    EXPECT_EQ(module, nullptr);
    const int id = IdOfName(name);
    Record("load cursor ", id);
    return Has(g_cursors.noCursor, id) ? nullptr : CursorHandle(kFromCursor, id);
}

HANDLE WINAPI FakeCopyImage(HANDLE image, UINT type, int width, int height, UINT flags) {
    EXPECT_EQ(type, UINT{IMAGE_CURSOR});
    EXPECT_EQ(width, 0);
    EXPECT_EQ(height, 0);
    EXPECT_EQ(flags, UINT{LR_COPYFROMRESOURCE});
    Record("copy image ", ValueOf(image));
    return Has(g_cursors.noCopyImage, IdOf(image)) ? nullptr : Owned(kCopied, IdOf(image));
}

HICON WINAPI FakeCopyIcon(HICON icon) {
    Record("copy icon ", ValueOf(icon));
    return Has(g_cursors.noCopyIcon, IdOf(icon)) ? nullptr : Owned(kIconCopied, IdOf(icon));
}

HBITMAP NewBitmap(std::uintptr_t value) {
    g_cursors.bitmaps.insert(value);
    return MakeHandle<HBITMAP>(value);
}

BOOL WINAPI FakeGetIconInfo(HICON icon, ICONINFO* info) {
    Record("ask ", ValueOf(icon));
    const int id = IdOf(icon);
    if (Has(g_cursors.noInfo, id)) {
        if (g_cursors.staleInfo) info->hbmMask = MakeHandle<HBITMAP>(0xBAD0);
        return FALSE;
    }
    *info = {};
    if (Has(g_cursors.withoutBitmaps, id)) return TRUE;
    info->hbmMask = NewBitmap(10000000 + ValueOf(icon));
    if (!Has(g_cursors.monochrome, id)) info->hbmColor = NewBitmap(20000000 + ValueOf(icon));
    return TRUE;
}

BOOL WINAPI FakeDeleteObject(HGDIOBJ object) {
    Remove(g_cursors.bitmaps, ValueOf(object), "bitmap");
    return TRUE;
}

BOOL WINAPI FakeSetSystemCursor(HCURSOR cursor, DWORD id) {
    const int row = static_cast<int>(id);
    if (Has(g_cursors.notSet, row)) {
        Record("refuse ", ValueOf(cursor), " for ", id);
        return FALSE;
    }
    Record("set ", ValueOf(cursor), " for ", id);
    Remove(g_cursors.cursors, ValueOf(cursor), "cursor");
    g_cursors.current[row] = ValueOf(cursor);
    return TRUE;
}

BOOL WINAPI FakeDestroyCursor(HCURSOR cursor) {
    Record("destroy ", ValueOf(cursor));
    Remove(g_cursors.cursors, ValueOf(cursor), "cursor");
    return TRUE;
}

BOOL WINAPI FakeSystemParametersInfoW(UINT action, UINT number, void* data, UINT flags) {
    EXPECT_EQ(action, UINT{SPI_SETCURSORS});
    EXPECT_EQ(number, 0U);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(flags, 0U);
    Record("system cursors");
    g_cursors.current.clear();
    // Returns what Wine returns; the program must ignore it.
    return FALSE;
}

}  // namespace

AMBREL_SEAM(LoadImageW, FakeLoadImageW);
AMBREL_SEAM(LoadCursorW, FakeLoadCursorW);
AMBREL_SEAM(CopyImage, FakeCopyImage);
AMBREL_SEAM(CopyIcon, FakeCopyIcon);
AMBREL_SEAM(GetIconInfo, FakeGetIconInfo);
AMBREL_SEAM(DeleteObject, FakeDeleteObject);
AMBREL_SEAM(SetSystemCursor, FakeSetSystemCursor);
AMBREL_SEAM(DestroyCursor, FakeDestroyCursor);
AMBREL_SEAM(SystemParametersInfoW, FakeSystemParametersInfoW);

AMBREL_REPLACE(HCURSOR, BuildTintedCursor,
               (HCURSOR cursor, const IconInfo&, const TintContexts&, const TintTables& tables)) {
    Record("build ", ValueOf(cursor));
    g_cursors.built.push_back({tables.red[255], tables.green[255], tables.blue[255]});
    return Has(g_cursors.notBuilt, IdOf(cursor)) ? nullptr : Owned(kTinted, IdOf(cursor));
}

HCURSOR CursorHandle(HandleKind kind, int id) {
    return MakeHandle<HCURSOR>(kind * kKindOffset + static_cast<std::uintptr_t>(id));
}

std::array<int, 3> WhiteAt(double intensity, double brightness) {
    const ReferenceColour colour = ReferenceFilterColour(intensity);
    const auto white = [brightness](long double channel) {
        return static_cast<int>(std::lround(255.0L * channel * static_cast<long double>(brightness)));
    };
    return {white(colour.red), white(colour.green), white(colour.blue)};
}

std::vector<std::string> CallsWithoutQueries() {
    CallRecord calls = g_calls;
    std::erase_if(calls, [](const std::string& call) { return call.rfind("ask ", 0) == 0; });
    return calls;
}
