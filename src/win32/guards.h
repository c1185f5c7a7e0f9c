// RAII guards for handles that live within one operation: each releases or restores its handle at the end of
// the scope. A handle that lives for the whole run is a field of AppState instead.
#pragma once

#include "win32/platform.h"

// A pen, brush, region, bitmap or font created for one drawing call, deleted at the end of the scope.
template <typename Handle>
struct [[nodiscard]] OwnedGdi {
    Handle handle;

    explicit OwnedGdi(Handle created) : handle(created) {}
    ~OwnedGdi() {
        if (handle != nullptr) DeleteObject(handle);
    }
    OwnedGdi(const OwnedGdi&) = delete;
    OwnedGdi& operator=(const OwnedGdi&) = delete;

    // Transfers ownership to the caller.
    Handle Release() {
        Handle released = handle;
        handle = nullptr;
        return released;
    }
};

// Selects an object into a device context and the previous one again at the end of the scope. A null object
// is not selected.
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

// The device context of the whole screen; null when GetDC fails.
struct [[nodiscard]] ScreenDc {
    HDC dc = GetDC(nullptr);

    ScreenDc() = default;
    ~ScreenDc() {
        if (dc != nullptr) ReleaseDC(nullptr, dc);
    }
    ScreenDc(const ScreenDc&) = delete;
    ScreenDc& operator=(const ScreenDc&) = delete;
};

// The device context of one display, by its name from EnumDisplayDevicesW; null when CreateDCW fails.
struct [[nodiscard]] DisplayDc {
    HDC dc;

    // Without the name in the second argument, the context is the primary display's.
    explicit DisplayDc(const wchar_t* name) : dc(CreateDCW(name, name, nullptr, nullptr)) {}
    ~DisplayDc() {
        if (dc != nullptr) DeleteDC(dc);
    }
    DisplayDc(const DisplayDc&) = delete;
    DisplayDc& operator=(const DisplayDc&) = delete;
};

// A memory device context compatible with another one; null when it cannot be created.
struct [[nodiscard]] MemoryDc {
    HDC dc;

    explicit MemoryDc(HDC reference) : dc(CreateCompatibleDC(reference)) {}
    ~MemoryDc() {
        if (dc != nullptr) DeleteDC(dc);
    }
    MemoryDc(const MemoryDc&) = delete;
    MemoryDc& operator=(const MemoryDc&) = delete;
};

// Restores a device context's current clip region at the end of the scope. When the region cannot be read,
// the clip region stays as it is at the end of the scope.
struct [[nodiscard]] SavedClip {
    HDC dc;
    HRGN region;
    int status;  // GetClipRgn's result; 1: region holds the clip; 0: no clip; -1: error

    explicit SavedClip(HDC target)
        : dc(target), region(CreateRectRgn(0, 0, 0, 0)), status(GetClipRgn(target, region)) {}
    ~SavedClip() {
        if (status >= 0) SelectClipRgn(dc, status == 1 ? region : nullptr);
        if (region != nullptr) DeleteObject(region);
    }
    SavedClip(const SavedClip&) = delete;
    SavedClip& operator=(const SavedClip&) = delete;
};

// An open registry key, closed at the end of the scope. Pass Out() to RegOpenKeyExW.
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

// A movable block of global memory, freed at the end of the scope unless Release() transferred ownership.
// `block` is null when the allocation fails.
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

// Opens the clipboard for the window `owner` and closes it at the end of the scope. `open` is false when
// another program has it open.
struct [[nodiscard]] ClipboardSession {
    bool open;

    explicit ClipboardSession(HWND owner) : open(OpenClipboard(owner) != FALSE) {}
    ~ClipboardSession() {
        if (open) CloseClipboard();
    }
    ClipboardSession(const ClipboardSession&) = delete;
    ClipboardSession& operator=(const ClipboardSession&) = delete;
};

// Holds a slim reader/writer lock in exclusive mode.
struct [[nodiscard]] ExclusiveLock {
    SRWLOCK* lock;

    explicit ExclusiveLock(SRWLOCK* target) : lock(target) { AcquireSRWLockExclusive(lock); }
    ~ExclusiveLock() { ReleaseSRWLockExclusive(lock); }
    ExclusiveLock(const ExclusiveLock&) = delete;
    ExclusiveLock& operator=(const ExclusiveLock&) = delete;
};

// The ICONINFO of a cursor. Deletes its two bitmaps, which are copies, at the end of the scope. `known` is
// false when GetIconInfo fails.
struct [[nodiscard]] IconInfo {
    ICONINFO info = {};
    bool known;

    explicit IconInfo(HCURSOR cursor) : known(GetIconInfo(cursor, &info) != FALSE) {}
    ~IconInfo() {
        // A call that fails halfway frees its bitmaps and may leave their stale handles in the structure.
        if (!known) return;
        if (info.hbmMask != nullptr) DeleteObject(info.hbmMask);
        if (info.hbmColor != nullptr) DeleteObject(info.hbmColor);
    }
    IconInfo(const IconInfo&) = delete;
    IconInfo& operator=(const IconInfo&) = delete;
};
