#include "services.h"

#include <cwchar>

#include <objidl.h>

#include "../hardware/knob.h"
#include "apartment.h"
#include "instance.h"
#include "panel.h"
#include "steps.h"
#include "strings.h"
#include "unsupported.h"

namespace {

constexpr wchar_t kBrightnessQuery[] =
    L"SELECT InstanceName, CurrentBrightness FROM WmiMonitorBrightness WHERE Active = TRUE";
constexpr wchar_t kMethodsQuery[] =
    L"SELECT InstanceName, __PATH FROM WmiMonitorBrightnessMethods WHERE Active = TRUE";

// Records a BSTR argument and watches it until it is freed.
void TakeString(CallRecord& record, const wchar_t* name, BSTR text) {
    if (!WatchArgument(text)) {
        record.Mistake(L"an argument that is no BSTR");
    }
    record.Argument(name, TextOf(text));
}

// The panels that a query found, as they were when it was asked; their brightness is read when they are
// fetched.
class Enumerator final : public EnumeratorWithout {
public:
    explicit Enumerator(bool methods)
        : life_(L"enumerator"),
          methods_(methods),
          panels_(ActivePanels(methods ? L"methods" : L"brightness")) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        const bool known = iid == __uuidof(IUnknown) || iid == __uuidof(IEnumWbemClassObject);
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

    HRESULT STDMETHODCALLTYPE Next(LONG timeout, ULONG count, IWbemClassObject** objects,
                                   ULONG* returned) override {
        CallRecord record(L"Next", life_.Name());
        record.Argument(L"timeout", timeout);
        record.Argument(L"count", count);
        if (count == 0 || !objects || !returned) {
            record.Mistake(L"nowhere to put the objects");
            return record.EndWith(WBEM_E_INVALID_PARAMETER);
        }
        objects[0] = nullptr;
        *returned = 0;
        const Answer answer = AnswerOf(methods_ ? "next_methods" : "next", calls_++);
        if (answer.nothing) {
            return record.EndWith(answer.result);
        }
        if (next_ == panels_.size()) {
            return record.EndWith(WBEM_S_FALSE);
        }
        const Row& panel = panels_[next_++];
        record.Argument(L"panel", panel.Text("name"));
        objects[0] = methods_ ? MakeMethodsInstance(panel) : MakeBrightnessInstance(panel);
        *returned = 1;
        return record.EndWith(count == 1 ? WBEM_S_NO_ERROR : WBEM_S_FALSE);
    }

private:
    Life life_;
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
    ULONG STDMETHODCALLTYPE AddRef() override { return life_.Add(); }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = life_.Drop();
        if (left == 0) {
            delete this;
        }
        return left;
    }

    HRESULT STDMETHODCALLTYPE SetBlanket(IUnknown*, DWORD authentication, DWORD authorization,
                                         OLECHAR* principal, DWORD level, DWORD impersonation, void* identity,
                                         DWORD capabilities) override {
        CallRecord record(L"SetBlanket", life_.Name());
        record.Argument(L"authentication", authentication);
        record.Argument(L"authorization", authorization);
        record.Argument(L"principal", principal ? principal : L"");
        record.Argument(L"level", level);
        record.Argument(L"impersonation", impersonation);
        record.Argument(L"identity", identity != nullptr);
        record.Argument(L"capabilities", capabilities);
        return record.EndWith(AnswerOf("blanket").result);
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
        CallRecord record(L"ExecQuery", life_.Name());
        TakeString(record, L"language", language);
        TakeString(record, L"query", query);
        record.Argument(L"flags", flags);
        record.Argument(L"context", context != nullptr);
        *found = nullptr;
        if (TextOf(language) != L"WQL") {
            record.Mistake(L"another language");
            return record.EndWith(WBEM_E_INVALID_QUERY_TYPE);
        }
        const bool methods = TextOf(query) == kMethodsQuery;
        if (!methods && TextOf(query) != kBrightnessQuery) {
            record.Mistake(L"a query that the double does not know");
            return record.EndWith(WBEM_E_INVALID_QUERY);
        }
        const Answer answer = AnswerOf(methods ? "query_methods" : "query");
        if (!answer.nothing) {
            *found = new Enumerator(methods);
        }
        return record.EndWith(answer.result);
    }

    HRESULT STDMETHODCALLTYPE GetObject(const BSTR path, LONG flags, IWbemContext* context,
                                        IWbemClassObject** object, IWbemCallResult** result) override {
        CallRecord record(L"GetObject", life_.Name());
        TakeString(record, L"path", path);
        record.Argument(L"flags", flags);
        record.Argument(L"context", context != nullptr);
        record.Argument(L"call_result", result != nullptr);
        if (object) {
            *object = nullptr;
        }
        if (!object || TextOf(path) != L"WmiMonitorBrightnessMethods") {
            record.Mistake(L"another object");
            return record.EndWith(WBEM_E_NOT_FOUND);
        }
        const Answer answer = AnswerOf("get_object");
        if (!answer.nothing) {
            *object = MakeMethodsClass();
        }
        return record.EndWith(answer.result);
    }

    HRESULT STDMETHODCALLTYPE ExecMethod(const BSTR path, const BSTR method, LONG flags,
                                         IWbemContext* context, IWbemClassObject* in, IWbemClassObject** out,
                                         IWbemCallResult** result) override {
        CallRecord record(L"ExecMethod", life_.Name());
        TakeString(record, L"path", path);
        TakeString(record, L"method", method);
        record.Argument(L"flags", flags);
        record.Argument(L"context", context != nullptr);
        record.Argument(L"out", out != nullptr);
        record.Argument(L"call_result", result != nullptr);
        InParameters values = {};
        if (TextOf(method) != L"WmiSetBrightness" || !ReadInParameters(in, values) || values.timeout < 0 ||
            values.brightness < 0) {
            record.Mistake(L"another method, or in-parameters that are missing or not of this method");
            return record.EndWith(WBEM_E_INVALID_METHOD_PARAMETERS);
        }
        record.Argument(L"timeout", values.timeout);
        record.Argument(L"brightness", values.brightness);
        const Answer answer = AnswerOf("exec");
        if (FAILED(answer.result)) {
            return record.EndWith(answer.result);
        }
        // What the method itself answers is an out-parameter that the caller may or may not have asked for.
        if (out) {
            *out = nullptr;
        }
        return record.EndWith(SetBrightness(path, values.brightness, record));
    }

private:
    static HRESULT SetBrightness(BSTR path, LONG64 brightness, CallRecord& record) {
        Row panel;
        if (FindPanelByPath(TextOf(path), panel)) {
            const HRESULT refused = BeginComCall(panel.Number("delay"));
            if (FAILED(refused)) {
                return refused;
            }
        }
        // Asked again: what happened while the call waited counts.
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
            TurnKnob(panel, brightness);
        }
        return WBEM_S_NO_ERROR;
    }

    Life life_{L"services"};
};

}  // namespace

IWbemServices* MakeServices() {
    return new Services;
}
