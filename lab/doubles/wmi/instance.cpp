#include "instance.h"

#include <cwchar>

#include "../hardware/knob.h"
#include "panel.h"
#include "steps.h"
#include "unsupported.h"

namespace {

// What only this library's in-parameters answer; a number of the lab's own.
constexpr GUID kInParametersId = {
    0x6c616221, 0x0001, 0x4d2b, {0x9a, 0x10, 0x2f, 0x5e, 0x70, 0x11, 0x43, 0x8c}};

bool Same(LPCWSTR name, const wchar_t* wanted) {
    // WMI's names know no case.
    return name && _wcsicmp(name, wanted) == 0;
}

// One class for every object: each kind answers the methods that it has and refuses the rest.
class Object : public ObjectWithout {
public:
    explicit Object(const wchar_t* name) : life_(name) {}
    virtual ~Object() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        const bool known = iid == __uuidof(IUnknown) || iid == __uuidof(IWbemClassObject);
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

    HRESULT STDMETHODCALLTYPE Get(LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE*, LONG*) override {
        CallRecord record(L"Get", life_.Name());
        record.Argument(L"property", name ? name : L"");
        record.Argument(L"flags", flags);
        if (!name || !value) {
            record.Mistake(L"no property or nowhere to put it");
            return record.EndWith(WBEM_E_INVALID_PARAMETER);
        }
        // As WMI does: what the VARIANT held is not looked at.
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

    Life life_;
};

// A panel as one of the two queries finds it.
class PanelInstance final : public Object {
public:
    PanelInstance(const Row& panel, const wchar_t* name, bool methods)
        : Object(name), panel_(panel), methods_(methods), brightness_(KnobValue(panel)) {}

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
        record.Mistake(L"a property that the query did not ask for");
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
        CallRecord record(L"Put", life_.Name());
        const VARTYPE given = value ? V_VT(value) : VARTYPE{VT_EMPTY};
        record.Argument(L"property", name ? name : L"");
        record.Argument(L"flags", flags);
        record.Argument(L"type", given);
        record.Argument(L"cim_type", type);
        const bool timeout = Same(name, L"Timeout");
        if (!timeout && !Same(name, L"Brightness")) {
            record.Mistake(L"no such in-parameter");
            return record.EndWith(WBEM_E_NOT_FOUND);
        }
        if (given != (timeout ? VT_I4 : VT_UI1)) {
            record.Mistake(L"an in-parameter of another type");
            return record.EndWith(WBEM_E_TYPE_MISMATCH);
        }
        const LONG64 number = timeout ? LONG64{V_I4(value)} : LONG64{V_UI1(value)};
        record.Argument(L"value", number);
        const Answer answer = AnswerOf(timeout ? "put_timeout" : "put_brightness");
        if (!answer.nothing) {
            (timeout ? values_.timeout : values_.brightness) = number;
        }
        return record.EndWith(answer.result);
    }

private:
    InParameters values_ = {-1, -1};
};

// What GetMethod hands out: the description of the in-parameters.
class Signature final : public Object {
public:
    Signature() : Object(L"signature") {}

    HRESULT STDMETHODCALLTYPE SpawnInstance(LONG flags, IWbemClassObject** instance) override {
        CallRecord record(L"SpawnInstance", life_.Name());
        record.Argument(L"flags", flags);
        const Answer answer = AnswerOf("spawn");
        *instance = answer.nothing ? nullptr : MakeInParameters();
        return record.EndWith(answer.result);
    }
};

class MethodsClass final : public Object {
public:
    MethodsClass() : Object(L"class") {}

    HRESULT STDMETHODCALLTYPE GetMethod(LPCWSTR name, LONG flags, IWbemClassObject** in,
                                        IWbemClassObject** out) override {
        CallRecord record(L"GetMethod", life_.Name());
        record.Argument(L"method", name ? name : L"");
        record.Argument(L"flags", flags);
        if (out) {
            *out = nullptr;
        }
        if (in) {
            *in = nullptr;
        }
        if (!Same(name, L"WmiSetBrightness")) {
            record.Mistake(L"no such method");
            return record.EndWith(WBEM_E_NOT_FOUND);
        }
        const Answer answer = AnswerOf("get_method");
        if (in && !answer.nothing) {
            *in = new Signature;
        }
        return record.EndWith(answer.result);
    }
};

}  // namespace

IWbemClassObject* MakeBrightnessInstance(const Row& panel) {
    return new PanelInstance(panel, L"brightness", false);
}

IWbemClassObject* MakeMethodsInstance(const Row& panel) {
    return new PanelInstance(panel, L"methods", true);
}

IWbemClassObject* MakeMethodsClass() {
    return new MethodsClass;
}

IWbemClassObject* MakeInParameters() {
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
