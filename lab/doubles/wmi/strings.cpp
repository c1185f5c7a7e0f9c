#include "strings.h"

#include <algorithm>
#include <cwchar>
#include <vector>

#include <objidl.h>

#include "../hardware/state.h"

namespace {

// A BSTR's memory block starts with its length, padded to eight bytes.
constexpr ptrdiff_t kLengthSize = 8;
constexpr ptrdiff_t kLengthOffset = -4;

struct TrackedString {
    const void* block;
    Counter counter;
};

SRWLOCK g_lock = SRWLOCK_INIT;
std::vector<TrackedString> g_tracked;

void Track(BSTR text, Counter counter) {
    const void* const block = reinterpret_cast<const char*>(text) - kLengthSize;
    AcquireSRWLockExclusive(&g_lock);
    const bool known = std::any_of(g_tracked.begin(), g_tracked.end(),
                                   [block](const TrackedString& tracked) { return tracked.block == block; });
    if (!known) {
        g_tracked.push_back({block, counter});
        Count(counter, 1);
    }
    ReleaseSRWLockExclusive(&g_lock);
}

void OnFree(const void* block) {
    AcquireSRWLockExclusive(&g_lock);
    const auto found = std::find_if(g_tracked.begin(), g_tracked.end(),
                                    [block](const TrackedString& tracked) { return tracked.block == block; });
    if (found != g_tracked.end()) {
        Count(found->counter, -1);
        g_tracked.erase(found);
    }
    ReleaseSRWLockExclusive(&g_lock);
}

// Not counted: it exists until the process ends.
class AllocatorSpy final : public IMallocSpy {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        const bool known = iid == __uuidof(IUnknown) || iid == __uuidof(IMallocSpy);
        *out = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    void* STDMETHODCALLTYPE PreFree(void* block, WINBOOL) override {
        OnFree(block);
        return block;
    }
    // A reallocated string is treated as freed; neither side reallocates the other's.
    SIZE_T STDMETHODCALLTYPE PreRealloc(void* block, SIZE_T size, void** request, WINBOOL) override {
        OnFree(block);
        *request = block;
        return size;
    }

    SIZE_T STDMETHODCALLTYPE PreAlloc(SIZE_T size) override { return size; }
    void* STDMETHODCALLTYPE PostAlloc(void* block) override { return block; }
    void STDMETHODCALLTYPE PostFree(WINBOOL) override {}
    void* STDMETHODCALLTYPE PostRealloc(void* block, WINBOOL) override { return block; }
    void* STDMETHODCALLTYPE PreGetSize(void* block, WINBOOL) override { return block; }
    SIZE_T STDMETHODCALLTYPE PostGetSize(SIZE_T size, WINBOOL) override { return size; }
    void* STDMETHODCALLTYPE PreDidAlloc(void* block, WINBOOL) override { return block; }
    int STDMETHODCALLTYPE PostDidAlloc(void*, WINBOOL, int scripted) override { return scripted; }
    void STDMETHODCALLTYPE PreHeapMinimize() override {}
    void STDMETHODCALLTYPE PostHeapMinimize() override {}
};

AllocatorSpy g_spy;

}  // namespace

void TrackAllocations() {
    static bool tracking = false;
    if (tracking) {
        return;
    }
    tracking = true;
    // Without this, the BSTR cache keeps freed strings, and the spy does not see their release.
    const HMODULE automation = GetModuleHandleW(L"oleaut32.dll");
    void* const noCache =
        automation ? reinterpret_cast<void*>(GetProcAddress(automation, "SetOaNoCache")) : nullptr;
    if (noCache) {
        reinterpret_cast<void(WINAPI*)()>(noCache)();
    }
    CoRegisterMallocSpy(&g_spy);
}

BSTR AllocateReturnedString(const std::wstring& text) {
    const BSTR copy = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    if (copy) {
        Track(copy, Counter::kReturnedStrings);
    }
    return copy;
}

bool TrackArgument(BSTR text) {
    if (!text) {
        return true;
    }
    UINT length = 0;
    std::copy_n(reinterpret_cast<const char*>(text) + kLengthOffset, sizeof(length),
                reinterpret_cast<char*>(&length));
    if (length != std::wcslen(text) * sizeof(wchar_t)) {
        return false;
    }
    Track(text, Counter::kPassedStrings);
    return true;
}

std::wstring TextOf(BSTR text) {
    return text ? std::wstring(text) : std::wstring();
}
