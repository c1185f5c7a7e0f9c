#include "strings.h"

#include <algorithm>
#include <cwchar>
#include <vector>

#include <objidl.h>

#include "../hardware/state.h"

namespace {

// A BSTR's block begins with its length, filled up to eight bytes.
constexpr ptrdiff_t kLengthSize = 8;
constexpr ptrdiff_t kLengthPlace = -4;

struct Watched {
    const void* block;
    Counter counter;
};

SRWLOCK g_lock = SRWLOCK_INIT;
std::vector<Watched> g_watched;

void Watch(BSTR text, Counter counter) {
    const void* const block = reinterpret_cast<const char*>(text) - kLengthSize;
    AcquireSRWLockExclusive(&g_lock);
    const bool known = std::any_of(g_watched.begin(), g_watched.end(),
                                   [block](const Watched& watched) { return watched.block == block; });
    if (!known) {
        g_watched.push_back({block, counter});
        Count(counter, 1);
    }
    ReleaseSRWLockExclusive(&g_lock);
}

void Freed(const void* block) {
    AcquireSRWLockExclusive(&g_lock);
    const auto found = std::find_if(g_watched.begin(), g_watched.end(),
                                    [block](const Watched& watched) { return watched.block == block; });
    if (found != g_watched.end()) {
        Count(found->counter, -1);
        g_watched.erase(found);
    }
    ReleaseSRWLockExclusive(&g_lock);
}

// Lives as long as the process: it is not counted.
class Listener final : public IMallocSpy {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        const bool known = iid == __uuidof(IUnknown) || iid == __uuidof(IMallocSpy);
        *out = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    void* STDMETHODCALLTYPE PreFree(void* block, WINBOOL) override {
        Freed(block);
        return block;
    }
    // A text that is allocated anew elsewhere is as good as freed: nobody passes such a one on.
    SIZE_T STDMETHODCALLTYPE PreRealloc(void* block, SIZE_T size, void** request, WINBOOL) override {
        Freed(block);
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
    int STDMETHODCALLTYPE PostDidAlloc(void*, WINBOOL, int answer) override { return answer; }
    void STDMETHODCALLTYPE PreHeapMinimize() override {}
    void STDMETHODCALLTYPE PostHeapMinimize() override {}
};

Listener g_listener;

}  // namespace

void ListenToAllocator() {
    static bool listening = false;
    if (listening) {
        return;
    }
    listening = true;
    // Freed texts would otherwise be kept for the next ones, unseen by the allocator.
    const HMODULE automation = GetModuleHandleW(L"oleaut32.dll");
    void* const noCache =
        automation ? reinterpret_cast<void*>(GetProcAddress(automation, "SetOaNoCache")) : nullptr;
    if (noCache) {
        reinterpret_cast<void(WINAPI*)()>(noCache)();
    }
    CoRegisterMallocSpy(&g_listener);
}

BSTR HandOutString(const std::wstring& text) {
    const BSTR copy = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    if (copy) {
        Watch(copy, Counter::kStringsOut);
    }
    return copy;
}

bool WatchArgument(BSTR text) {
    if (!text) {
        return true;
    }
    UINT length = 0;
    std::copy_n(reinterpret_cast<const char*>(text) + kLengthPlace, sizeof(length),
                reinterpret_cast<char*>(&length));
    if (length != std::wcslen(text) * sizeof(wchar_t)) {
        return false;
    }
    Watch(text, Counter::kStringsIn);
    return true;
}

std::wstring TextOf(BSTR text) {
    return text ? std::wstring(text) : std::wstring();
}
