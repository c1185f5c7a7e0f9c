// Guards for handles that live within one operation: each gives back what it holds at the end of its scope.
// A handle that lives for the whole run is a field of AppState instead.
#pragma once

#include "win32/platform.h"

// A pen, brush, region, bitmap or font made for one drawing call.
template <typename Handle>
struct [[nodiscard]] OwnedGdi {
    Handle handle;

    explicit OwnedGdi(Handle made) : handle(made) {}
    ~OwnedGdi() {
        if (handle != nullptr) DeleteObject(handle);
    }
    OwnedGdi(const OwnedGdi&) = delete;
    OwnedGdi& operator=(const OwnedGdi&) = delete;

    // Hands the object over to the caller.
    Handle Release() {
        Handle released = handle;
        handle = nullptr;
        return released;
    }
};

// An object selected into a device context; the previous one is selected again. A null object is not
// selected.
struct [[nodiscard]] SelectedObject {
    HDC dc;
    HGDIOBJ previous;

    SelectedObject(HDC target, HGDIOBJ object)
        : dc(target), previous(object != nullptr ? SelectObject(target, object) : nullptr) {}
    ~SelectedObject() {
        if (previous != nullptr) SelectObject(dc, previous);
    }
    SelectedObject(const SelectedObject&) = delete;
    SelectedObject& operator=(const SelectedObject&) = delete;
};

// The device context of the whole screen; null when Windows gives none.
struct [[nodiscard]] ScreenDc {
    HDC dc = GetDC(nullptr);

    ScreenDc() = default;
    ~ScreenDc() {
        if (dc != nullptr) ReleaseDC(nullptr, dc);
    }
    ScreenDc(const ScreenDc&) = delete;
    ScreenDc& operator=(const ScreenDc&) = delete;
};

// A memory device context compatible with another.
struct [[nodiscard]] MemoryDc {
    HDC dc;

    explicit MemoryDc(HDC like) : dc(CreateCompatibleDC(like)) {}
    ~MemoryDc() {
        if (dc != nullptr) DeleteDC(dc);
    }
    MemoryDc(const MemoryDc&) = delete;
    MemoryDc& operator=(const MemoryDc&) = delete;
};

// The clip region that a device context has now, put back at the end of the scope. A clip that cannot be read
// is left as it is then.
struct [[nodiscard]] SavedClip {
    HDC dc;
    HRGN region;
    int found;  // 1: region holds the clip; 0: there is none; -1: not known

    explicit SavedClip(HDC target)
        : dc(target), region(CreateRectRgn(0, 0, 0, 0)), found(GetClipRgn(target, region)) {}
    ~SavedClip() {
        if (found >= 0) SelectClipRgn(dc, found == 1 ? region : nullptr);
        if (region != nullptr) DeleteObject(region);
    }
    SavedClip(const SavedClip&) = delete;
    SavedClip& operator=(const SavedClip&) = delete;
};

// An open registry key; Out() is where RegOpenKeyExW puts it.
struct [[nodiscard]] RegistryKey {
    HKEY key = nullptr;

    RegistryKey() = default;
    ~RegistryKey() {
        if (key != nullptr) RegCloseKey(key);
    }
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;

    HKEY* Out() { return &key; }
};

// A movable block of global memory, freed unless it was handed over with Release().
struct [[nodiscard]] GlobalBlock {
    HGLOBAL block;

    explicit GlobalBlock(SIZE_T bytes) : block(GlobalAlloc(GMEM_MOVEABLE, bytes)) {}
    ~GlobalBlock() {
        if (block != nullptr) GlobalFree(block);
    }
    GlobalBlock(const GlobalBlock&) = delete;
    GlobalBlock& operator=(const GlobalBlock&) = delete;

    HGLOBAL Release() {
        HGLOBAL released = block;
        block = nullptr;
        return released;
    }
};

// The clipboard, opened with `owner` as the owner of what is put on it. open is false when another program
// holds it.
struct [[nodiscard]] OpenClipboardOf {
    bool open;

    explicit OpenClipboardOf(HWND owner) : open(OpenClipboard(owner) != FALSE) {}
    ~OpenClipboardOf() {
        if (open) CloseClipboard();
    }
    OpenClipboardOf(const OpenClipboardOf&) = delete;
    OpenClipboardOf& operator=(const OpenClipboardOf&) = delete;
};

// A slim lock held exclusively.
struct [[nodiscard]] ExclusiveLock {
    SRWLOCK* lock;

    explicit ExclusiveLock(SRWLOCK* held) : lock(held) { AcquireSRWLockExclusive(lock); }
    ~ExclusiveLock() { ReleaseSRWLockExclusive(lock); }
    ExclusiveLock(const ExclusiveLock&) = delete;
    ExclusiveLock& operator=(const ExclusiveLock&) = delete;
};

// What GetIconInfo tells of a cursor. Its two bitmaps are copies that belong to the caller.
struct [[nodiscard]] CursorInfo {
    ICONINFO info = {};
    bool known;

    explicit CursorInfo(HCURSOR cursor) : known(GetIconInfo(cursor, &info) != FALSE) {}
    ~CursorInfo() {
        // A call that failed half-way has taken its bitmaps back, and may have left their handles.
        if (!known) return;
        if (info.hbmMask != nullptr) DeleteObject(info.hbmMask);
        if (info.hbmColor != nullptr) DeleteObject(info.hbmColor);
    }
    CursorInfo(const CursorInfo&) = delete;
    CursorInfo& operator=(const CursorInfo&) = delete;
};
