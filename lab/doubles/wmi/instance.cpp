#include "instance.h"

#include <cwchar>

#include "../hardware/brightness.h"
#include "panel.h"
#include "scripted_calls.h"
#include "unsupported.h"

namespace {

// A private interface of the double's in-parameters, by which ReadInParameters recognises them.
constexpr GUID kInParametersId = {
    0x6c616221, 0x0001, 0x4d2b, {0x9a, 0x10, 0x2f, 0x5e, 0x70, 0x11, 0x43, 0x8c}};

bool Same(LPCWSTR name, const wchar_t* wanted) {
    // WMI's names are case-insensitive.
    return name && _wcsicmp(name, wanted) == 0;
}

// Base of every object: each kind overrides the methods that it supports, and the rest fail.
class Object : public CountedObject<IWbemClassObject, ObjectWithout> {
public:
    using CountedObject::CountedObject;

    HRESULT STDMETHODCALLTYPE Get(LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE*, LONG*) override {
        CallRecord record(L"Get", lifetime_.Name());
        record.Argument(L"property", name ? name : L"");
        record.Argument(L"flags", flags);
        if (!name || !value) {
            record.MarkInvalid(L"no property or no pointer for its value");
            return record.EndWith(WBEM_E_INVALID_PARAMETER);
        }
        // WMI overwrites the VARIANT without clearing it.
        VariantInit(value);
        const HRESULT result = GetProperty(name, value, record);
        record.Argument(L"type", V_VT(value));
        return record.EndWith(result);
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

protected:
    virtual HRESULT GetProperty(LPCWSTR, VARIANT*, CallRecord&) { return WBEM_E_NOT_FOUND; }
};

// A panel as a result of one of the two queries.
class PanelInstance final : public Object {
public:
    PanelInstance(const Row& panel, const wchar_t* name, bool methods)
        : Object(name), panel_(panel), methods_(methods), brightness_(DisplayedBrightness(panel)) {}

private:
    HRESULT GetProperty(LPCWSTR name, VARIANT* value, CallRecord& record) override {
        record.Argument(L"panel", panel_.Text("name"));
        if (Same(name, L"InstanceName")) {
            return GetInstanceName(panel_, value);
        }
        if (methods_ && Same(name, L"__PATH")) {
            return GetPath(panel_, value);
        }
        if (!methods_ && Same(name, L"CurrentBrightness")) {
            record.Argument(L"brightness", brightness_);
            return GetBrightness(panel_, brightness_, value);
        }
        record.MarkInvalid(L"a property that the query does not select");
        return WBEM_E_NOT_FOUND;
    }

    Row panel_;
    bool methods_;
    LONG64 brightness_;
};

class InParametersInstance final : public Object {
public:
    InParametersInstance() : Object(L"in-parameters") {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        if (iid == kInParametersId) {
            *out = &values_;
            return S_OK;
        }
        return Object::QueryInterface(iid, out);
    }

    HRESULT STDMETHODCALLTYPE Put(LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE type) override {
        CallRecord record(L"Put", lifetime_.Name());
        const VARTYPE valueType = value ? V_VT(value) : VARTYPE{VT_EMPTY};
        record.Argument(L"property", name ? name : L"");
        record.Argument(L"flags", flags);
        record.Argument(L"type", valueType);
        record.Argument(L"cim_type", type);
        const bool timeout = Same(name, L"Timeout");
        if (!timeout && !Same(name, L"Brightness")) {
            record.MarkInvalid(L"no such in-parameter");
            return record.EndWith(WBEM_E_NOT_FOUND);
        }
        if (valueType != (timeout ? VT_I4 : VT_UI1)) {
            record.MarkInvalid(L"an in-parameter of the wrong type");
            return record.EndWith(WBEM_E_TYPE_MISMATCH);
        }
        const LONG64 number = timeout ? LONG64{V_I4(value)} : LONG64{V_UI1(value)};
        record.Argument(L"value", number);
        const CallResult scripted = ScriptedResult(timeout ? "put_timeout" : "put_brightness");
        if (!scripted.returnsNothing) {
            (timeout ? values_.timeout : values_.brightness) = number;
        }
        return record.EndWith(scripted.result);
    }

private:
    InParameters values_ = {-1, -1};
};

// The result of GetMethod: the class of the in-parameters.
class Signature final : public Object {
public:
    Signature() : Object(L"signature") {}

    HRESULT STDMETHODCALLTYPE SpawnInstance(LONG flags, IWbemClassObject** instance) override {
        CallRecord record(L"SpawnInstance", lifetime_.Name());
        record.Argument(L"flags", flags);
        const CallResult scripted = ScriptedResult("spawn");
        *instance = scripted.returnsNothing ? nullptr : CreateInParameters();
        return record.EndWith(scripted.result);
    }
};

class MethodsClass final : public Object {
public:
    MethodsClass() : Object(L"class") {}

    HRESULT STDMETHODCALLTYPE GetMethod(LPCWSTR name, LONG flags, IWbemClassObject** in,
                                        IWbemClassObject** out) override {
        CallRecord record(L"GetMethod", lifetime_.Name());
        record.Argument(L"method", name ? name : L"");
        record.Argument(L"flags", flags);
        if (out) {
            *out = nullptr;
        }
        if (in) {
            *in = nullptr;
        }
        if (!Same(name, L"WmiSetBrightness")) {
            record.MarkInvalid(L"no such method");
            return record.EndWith(WBEM_E_NOT_FOUND);
        }
        const CallResult scripted = ScriptedResult("get_method");
        if (in && !scripted.returnsNothing) {
            *in = new Signature;
        }
        return record.EndWith(scripted.result);
    }
};

}  // namespace

IWbemClassObject* CreateBrightnessInstance(const Row& panel) {
    return new PanelInstance(panel, L"brightness", false);
}

IWbemClassObject* CreateMethodsInstance(const Row& panel) {
    return new PanelInstance(panel, L"methods", true);
}

IWbemClassObject* CreateMethodsClass() {
    return new MethodsClass;
}

IWbemClassObject* CreateInParameters() {
    return new InParametersInstance;
}

bool ReadInParameters(IWbemClassObject* object, InParameters& found) {
    void* values = nullptr;
    if (!object || FAILED(object->QueryInterface(kInParametersId, &values)) || !values) {
        return false;
    }
    found = *static_cast<const InParameters*>(values);
    return true;
}
