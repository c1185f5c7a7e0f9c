// Stands in for Wine's WMI locator, behind which there are no brightness classes. The registry names this
// library as the in-process server of WbemLocator. Its panels are those that the lab's script lists
// (panel.h), and every step can be made to fail (steps.h). It is meant for one thread at a time.
#include <windows.h>

#include <objidl.h>
#include <wbemcli.h>

#include "../hardware/record.h"
#include "life.h"
#include "services.h"
#include "steps.h"
#include "strings.h"

namespace {

constexpr GUID kLocatorClass = {0x4590f811, 0x1d3a, 0x11d0, {0x89, 0x1f, 0x00, 0xaa, 0x00, 0x4b, 0x2e, 0x24}};
constexpr wchar_t kNamespace[] = L"ROOT\\WMI";

class Locator final : public IWbemLocator {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        const bool known = iid == __uuidof(IUnknown) || iid == __uuidof(IWbemLocator);
        *out = known ? this : nullptr;
        if (!known) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return life_.Add(); }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = life_.Drop();
        if (left == 0) {
            delete this;
        }
        return left;
    }

    HRESULT STDMETHODCALLTYPE ConnectServer(const BSTR resource, const BSTR user, const BSTR password,
                                            const BSTR locale, LONG flags, const BSTR authority,
                                            IWbemContext* context, IWbemServices** services) override {
        CallRecord record(L"ConnectServer", life_.Name());
        if (!WatchArgument(resource)) {
            record.Mistake(L"an argument that is no BSTR");
        }
        record.Argument(L"resource", TextOf(resource));
        record.Argument(L"flags", flags);
        record.Argument(L"others", user || password || locale || authority || context);
        *services = nullptr;
        if (_wcsicmp(TextOf(resource).c_str(), kNamespace) != 0) {
            record.Mistake(L"another namespace");
            return record.EndWith(WBEM_E_INVALID_NAMESPACE);
        }
        const Answer answer = AnswerOf("connect");
        if (!answer.nothing) {
            *services = MakeServices();
        }
        return record.EndWith(answer.result);
    }

private:
    Life life_{L"locator"};
};

// COM itself holds this one, for as long as it likes: it is neither counted nor deleted.
class Factory final : public IClassFactory {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        const bool known = iid == __uuidof(IUnknown) || iid == __uuidof(IClassFactory);
        *out = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** out) override {
        CallRecord record(L"CreateInstance", L"locator");
        record.Argument(L"interface", iid == __uuidof(IWbemLocator) ? L"IWbemLocator" : L"another");
        *out = nullptr;
        if (outer) {
            return record.EndWith(CLASS_E_NOAGGREGATION);
        }
        const Answer answer = AnswerOf("locator");
        if (answer.nothing) {
            return record.EndWith(answer.result);
        }
        Locator* const locator = new Locator;
        const HRESULT result = locator->QueryInterface(iid, out);
        // Recorded before the locator could end, so that the order stays that of the calls.
        record.EndWith(result);
        locator->Release();
        return result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

Factory g_factory;

}  // namespace

extern "C" __declspec(dllexport) HRESULT WINAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** out) {
    ListenToAllocator();
    *out = nullptr;
    return clsid == kLocatorClass ? g_factory.QueryInterface(iid, out) : CLASS_E_CLASSNOTAVAILABLE;
}

extern "C" __declspec(dllexport) HRESULT WINAPI DllCanUnloadNow() {
    // The allocator may call at any time.
    return S_FALSE;
}
