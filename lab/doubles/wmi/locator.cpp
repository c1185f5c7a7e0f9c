// Double of the WMI locator, since Wine's WMI has no brightness classes. The registry names this library as
// the in-process server of WbemLocator. The lab's script lists its panels (panel.h), and can make every call
// fail (scripted_calls.h). For one thread at a time.
#include <windows.h>

#include <objidl.h>
#include <wbemcli.h>

#include "../hardware/record.h"
#include "lifetime.h"
#include "scripted_calls.h"
#include "services.h"
#include "strings.h"

namespace {

constexpr GUID kLocatorClass = {0x4590f811, 0x1d3a, 0x11d0, {0x89, 0x1f, 0x00, 0xaa, 0x00, 0x4b, 0x2e, 0x24}};
constexpr wchar_t kNamespace[] = L"ROOT\\WMI";

class Locator final : public CountedObject<IWbemLocator> {
public:
    Locator() : CountedObject(L"locator") {}

    HRESULT STDMETHODCALLTYPE ConnectServer(const BSTR resource, const BSTR user, const BSTR password,
                                            const BSTR locale, LONG flags, const BSTR authority,
                                            IWbemContext* context, IWbemServices** services) override {
        CallRecord record(L"ConnectServer", lifetime_.Name());
        if (!TrackArgument(resource)) {
            record.MarkInvalid(L"an argument that is not a BSTR");
        }
        record.Argument(L"resource", TextOf(resource));
        record.Argument(L"flags", flags);
        record.Argument(L"others", user || password || locale || authority || context);
        *services = nullptr;
        if (_wcsicmp(TextOf(resource).c_str(), kNamespace) != 0) {
            record.MarkInvalid(L"another namespace");
            return record.EndWith(WBEM_E_INVALID_NAMESPACE);
        }
        const CallResult scripted = ScriptedResult("connect");
        if (!scripted.returnsNothing) {
            *services = CreateServices();
        }
        return record.EndWith(scripted.result);
    }
};

// COM may keep a reference to the factory, so it is neither counted nor deleted.
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
        const CallResult scripted = ScriptedResult("locator");
        if (scripted.returnsNothing) {
            return record.EndWith(scripted.result);
        }
        Locator* const locator = new Locator;
        const HRESULT result = locator->QueryInterface(iid, out);
        // Recorded before the locator may be released, so that the record keeps the order of the calls.
        record.EndWith(result);
        locator->Release();
        return result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

Factory g_factory;

}  // namespace

extern "C" __declspec(dllexport) HRESULT WINAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** out) {
    TrackAllocations();
    *out = nullptr;
    return clsid == kLocatorClass ? g_factory.QueryInterface(iid, out) : CLASS_E_CLASSNOTAVAILABLE;
}

extern "C" __declspec(dllexport) HRESULT WINAPI DllCanUnloadNow() {
    // COM may call the allocator spy at any time.
    return S_FALSE;
}
