#include "faults/simulated_panel.h"

#include <oleauto.h>

#include <atomic>
#include <cwchar>

#include "faults/simulated_function.h"
#include "faults/simulated_platform.h"
#include "unsupported.h"

// unsupported.h calls this in every method that the program does not call.
HRESULT NotImplemented(const wchar_t*) {
    return E_NOTIMPL;
}

namespace {

constexpr wchar_t kInstanceName[] = L"DISPLAY\\SIM0001\\4&1_0";
constexpr wchar_t kObjectPath[] = L"WmiMonitorBrightnessMethods.InstanceName=\"DISPLAY\\\\SIM0001\\\\4&1_0\"";

// The release thread uses the objects as well.
std::atomic<int> g_unreleased = 0;

// A fault may be injected into the program's own import.
const auto g_sysAllocString = RealFunction<decltype(&SysAllocString)>(L"oleaut32.dll", "SysAllocString");

// Base is an interface of WMI, or a class of unsupported.h that implements part of one.
template <typename Base>
class Counted : public Base {
public:
    Counted() { ++g_unreleased; }
    virtual ~Counted() { --g_unreleased; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** out) override {
        *out = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }

private:
    ULONG references_ = 1;
};

class Object : public Counted<ObjectWithout> {
public:
    HRESULT STDMETHODCALLTYPE Get(LPCWSTR, LONG, VARIANT*, CIMTYPE*, LONG*) override {
        return NotImplemented(L"Get");
    }
    HRESULT STDMETHODCALLTYPE Put(LPCWSTR, LONG, VARIANT*, CIMTYPE) override {
        return NotImplemented(L"Put");
    }
    HRESULT STDMETHODCALLTYPE GetMethod(LPCWSTR, LONG, IWbemClassObject**, IWbemClassObject**) override {
        return NotImplemented(L"GetMethod");
    }
    HRESULT STDMETHODCALLTYPE SpawnInstance(LONG, IWbemClassObject**) override {
        return NotImplemented(L"SpawnInstance");
    }
};

// The panel, in the results of both queries.
class Panel final : public Object {
public:
    HRESULT STDMETHODCALLTYPE Get(LPCWSTR name, LONG, VARIANT* value, CIMTYPE*, LONG*) override {
        if (std::wcscmp(name, L"CurrentBrightness") == 0) {
            value->vt = VT_UI1;
            value->bVal = static_cast<BYTE>(g_platform.panelPercent);
            return S_OK;
        }
        value->vt = VT_BSTR;
        value->bstrVal = g_sysAllocString(std::wcscmp(name, L"__PATH") == 0 ? kObjectPath : kInstanceName);
        return S_OK;
    }
};

class Parameters final : public Object {
public:
    HRESULT STDMETHODCALLTYPE Put(LPCWSTR name, LONG, VARIANT* value, CIMTYPE) override {
        if (std::wcscmp(name, L"Brightness") == 0) percent = value->bVal;
        return S_OK;
    }

    DWORD percent = 0;
};

class MethodsClass final : public Object {
public:
    HRESULT STDMETHODCALLTYPE GetMethod(LPCWSTR, LONG, IWbemClassObject** in, IWbemClassObject**) override {
        *in = new MethodsClass;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SpawnInstance(LONG, IWbemClassObject** instance) override {
        *instance = new Parameters;
        return S_OK;
    }
};

class Results final : public Counted<EnumeratorWithout> {
public:
    HRESULT STDMETHODCALLTYPE Next(LONG, ULONG, IWbemClassObject** objects, ULONG* returned) override {
        *returned = ended_ ? 0 : 1;
        if (ended_) return WBEM_S_FALSE;
        ended_ = true;
        *objects = new Panel;
        return WBEM_S_NO_ERROR;
    }

private:
    bool ended_ = false;
};

class Services final : public Counted<ServicesWithout> {
public:
    HRESULT STDMETHODCALLTYPE ExecQuery(const BSTR language, const BSTR query, LONG, IWbemContext*,
                                        IEnumWbemClassObject** found) override {
        if (language == nullptr || query == nullptr) return static_cast<HRESULT>(WBEM_E_INVALID_PARAMETER);
        *found = new Results;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetObject(const BSTR path, LONG, IWbemContext*, IWbemClassObject** object,
                                        IWbemCallResult**) override {
        if (path == nullptr) return static_cast<HRESULT>(WBEM_E_INVALID_PARAMETER);
        *object = new MethodsClass;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE ExecMethod(const BSTR path, const BSTR method, LONG, IWbemContext*,
                                         IWbemClassObject* in, IWbemClassObject**,
                                         IWbemCallResult**) override {
        if (path == nullptr || method == nullptr || in == nullptr || std::wcscmp(path, kObjectPath) != 0)
            return static_cast<HRESULT>(WBEM_E_INVALID_PARAMETER);
        g_platform.panelPercent = static_cast<const Parameters*>(in)->percent;
        return S_OK;
    }
};

class Locator final : public Counted<IWbemLocator> {
public:
    HRESULT STDMETHODCALLTYPE ConnectServer(const BSTR resource, const BSTR, const BSTR, const BSTR, LONG,
                                            const BSTR, IWbemContext*, IWbemServices** services) override {
        if (resource == nullptr) return static_cast<HRESULT>(WBEM_E_INVALID_PARAMETER);
        *services = new Services;
        return S_OK;
    }
};

}  // namespace

HRESULT CreateWmiLocator(REFIID iid, void** object) {
    if (!IsEqualGUID(iid, IID_IWbemLocator)) return E_NOINTERFACE;
    *object = static_cast<IWbemLocator*>(new Locator);
    return S_OK;
}

int UnreleasedWmiObjects() {
    return g_unreleased;
}
