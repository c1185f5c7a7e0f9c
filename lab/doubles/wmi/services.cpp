#include "services.h"

#include <cwchar>

#include <objidl.h>

#include "../hardware/brightness.h"
#include "apartment.h"
#include "instance.h"
#include "panel.h"
#include "scripted_calls.h"
#include "strings.h"
#include "unsupported.h"

namespace {

constexpr wchar_t kBrightnessQuery[] =
    L"SELECT InstanceName, CurrentBrightness FROM WmiMonitorBrightness WHERE Active = TRUE";
constexpr wchar_t kMethodsQuery[] =
    L"SELECT InstanceName, __PATH FROM WmiMonitorBrightnessMethods WHERE Active = TRUE";

// Records a BSTR argument and tracks it until it is freed.
void RecordString(CallRecord& record, const wchar_t* name, BSTR text) {
    if (!TrackArgument(text)) {
        record.MarkInvalid(L"an argument that is not a BSTR");
    }
    record.Argument(name, TextOf(text));
}

// The panels that were active when the query was executed. Their brightness is read when they are fetched.
class Enumerator final : public CountedObject<IEnumWbemClassObject, EnumeratorWithout> {
public:
    explicit Enumerator(bool methods)
        : CountedObject(L"enumerator"),
          methods_(methods),
          panels_(ActivePanels(methods ? L"methods" : L"brightness")) {}

    HRESULT STDMETHODCALLTYPE Next(LONG timeout, ULONG count, IWbemClassObject** objects,
                                   ULONG* returned) override {
        CallRecord record(L"Next", lifetime_.Name());
        record.Argument(L"timeout", timeout);
        record.Argument(L"count", count);
        if (count == 0 || !objects || !returned) {
            record.MarkInvalid(L"no pointer for the objects");
            return record.EndWith(WBEM_E_INVALID_PARAMETER);
        }
        objects[0] = nullptr;
        *returned = 0;
        const CallResult scripted = ScriptedResult(methods_ ? "next_methods" : "next", calls_++);
        if (scripted.returnsNothing) {
            return record.EndWith(scripted.result);
        }
        if (next_ == panels_.size()) {
            return record.EndWith(WBEM_S_FALSE);
        }
        const Row& panel = panels_[next_++];
        record.Argument(L"panel", panel.Text("name"));
        objects[0] = methods_ ? CreateMethodsInstance(panel) : CreateBrightnessInstance(panel);
        *returned = 1;
        return record.EndWith(count == 1 ? WBEM_S_NO_ERROR : WBEM_S_FALSE);
    }

private:
    bool methods_;
    Rows panels_;
    size_t next_ = 0;
    size_t calls_ = 0;
};

class Services final : public ServicesWithout, public IClientSecurity {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        *out = nullptr;
        if (iid == __uuidof(IUnknown) || iid == __uuidof(IWbemServices)) {
            *out = static_cast<IWbemServices*>(this);
        } else if (iid == __uuidof(IClientSecurity)) {
            *out = static_cast<IClientSecurity*>(this);
        } else {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return lifetime_.AddReference(); }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = lifetime_.ReleaseReference();
        if (left == 0) {
            delete this;
        }
        return left;
    }

    HRESULT STDMETHODCALLTYPE SetBlanket(IUnknown*, DWORD authentication, DWORD authorization,
                                         OLECHAR* principal, DWORD level, DWORD impersonation, void* identity,
                                         DWORD capabilities) override {
        CallRecord record(L"SetBlanket", lifetime_.Name());
        record.Argument(L"authentication", authentication);
        record.Argument(L"authorization", authorization);
        record.Argument(L"principal", principal ? principal : L"");
        record.Argument(L"level", level);
        record.Argument(L"impersonation", impersonation);
        record.Argument(L"identity", identity != nullptr);
        record.Argument(L"capabilities", capabilities);
        return record.EndWith(ScriptedResult("blanket").result);
    }
    HRESULT STDMETHODCALLTYPE QueryBlanket(IUnknown*, DWORD*, DWORD*, OLECHAR**, DWORD*, DWORD*, void**,
                                           DWORD*) override {
        return NotImplemented(L"QueryBlanket");
    }
    HRESULT STDMETHODCALLTYPE CopyProxy(IUnknown*, IUnknown**) override {
        return NotImplemented(L"CopyProxy");
    }

    HRESULT STDMETHODCALLTYPE ExecQuery(const BSTR language, const BSTR query, LONG flags,
                                        IWbemContext* context, IEnumWbemClassObject** found) override {
        CallRecord record(L"ExecQuery", lifetime_.Name());
        RecordString(record, L"language", language);
        RecordString(record, L"query", query);
        record.Argument(L"flags", flags);
        record.Argument(L"context", context != nullptr);
        *found = nullptr;
        if (TextOf(language) != L"WQL") {
            record.MarkInvalid(L"another language");
            return record.EndWith(WBEM_E_INVALID_QUERY_TYPE);
        }
        const bool methods = TextOf(query) == kMethodsQuery;
        if (!methods && TextOf(query) != kBrightnessQuery) {
            record.MarkInvalid(L"a query that the double does not know");
            return record.EndWith(WBEM_E_INVALID_QUERY);
        }
        const CallResult scripted = ScriptedResult(methods ? "query_methods" : "query");
        if (!scripted.returnsNothing) {
            *found = new Enumerator(methods);
        }
        return record.EndWith(scripted.result);
    }

    HRESULT STDMETHODCALLTYPE GetObject(const BSTR path, LONG flags, IWbemContext* context,
                                        IWbemClassObject** object, IWbemCallResult** result) override {
        CallRecord record(L"GetObject", lifetime_.Name());
        RecordString(record, L"path", path);
        record.Argument(L"flags", flags);
        record.Argument(L"context", context != nullptr);
        record.Argument(L"call_result", result != nullptr);
        if (object) {
            *object = nullptr;
        }
        if (!object || TextOf(path) != L"WmiMonitorBrightnessMethods") {
            record.MarkInvalid(L"another object");
            return record.EndWith(WBEM_E_NOT_FOUND);
        }
        const CallResult scripted = ScriptedResult("get_object");
        if (!scripted.returnsNothing) {
            *object = CreateMethodsClass();
        }
        return record.EndWith(scripted.result);
    }

    HRESULT STDMETHODCALLTYPE ExecMethod(const BSTR path, const BSTR method, LONG flags,
                                         IWbemContext* context, IWbemClassObject* in, IWbemClassObject** out,
                                         IWbemCallResult** result) override {
        CallRecord record(L"ExecMethod", lifetime_.Name());
        RecordString(record, L"path", path);
        RecordString(record, L"method", method);
        record.Argument(L"flags", flags);
        record.Argument(L"context", context != nullptr);
        record.Argument(L"out", out != nullptr);
        record.Argument(L"call_result", result != nullptr);
        InParameters values = {};
        if (TextOf(method) != L"WmiSetBrightness" || !ReadInParameters(in, values) || values.timeout < 0 ||
            values.brightness < 0) {
            record.MarkInvalid(L"another method, or in-parameters that are missing or not of this method");
            return record.EndWith(WBEM_E_INVALID_METHOD_PARAMETERS);
        }
        record.Argument(L"timeout", values.timeout);
        record.Argument(L"brightness", values.brightness);
        const CallResult scripted = ScriptedResult("exec");
        if (FAILED(scripted.result)) {
            return record.EndWith(scripted.result);
        }
        // The method's status is an out-parameter, which the double does not return.
        if (out) {
            *out = nullptr;
        }
        return record.EndWith(SetBrightness(path, values.brightness, record));
    }

private:
    static HRESULT SetBrightness(BSTR path, LONG64 brightness, CallRecord& record) {
        Row panel;
        if (FindPanelByPath(TextOf(path), panel)) {
            const HRESULT rejected = SimulateComCall(panel.Number("delay"));
            if (FAILED(rejected)) {
                return rejected;
            }
        }
        // Read again: the script may have changed during the wait.
        if (!FindPanelByPath(TextOf(path), panel)) {
            return WBEM_E_NOT_FOUND;
        }
        record.Argument(L"panel", panel.Text("name"));
        if (panel.Text("fails") == L"set") {
            return static_cast<HRESULT>(panel.Number("error", LONG64{WBEM_E_FAILED}));
        }
        const LONG64 status = panel.Number("status");
        record.Argument(L"status", status);
        if (status == 0) {
            SetDisplayedBrightness(panel, brightness);
        }
        return WBEM_S_NO_ERROR;
    }

    ObjectLifetime lifetime_{L"services"};
};

}  // namespace

IWbemServices* CreateServices() {
    return new Services;
}
