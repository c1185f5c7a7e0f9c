#include <wbemcli.h>

#include "check.h"

namespace {

constexpr wchar_t kBrightnessQuery[] =
    L"SELECT InstanceName, CurrentBrightness FROM WmiMonitorBrightness WHERE Active = TRUE";
constexpr wchar_t kMethodsQuery[] =
    L"SELECT InstanceName, __PATH FROM WmiMonitorBrightnessMethods WHERE Active = TRUE";
constexpr LONG kNextTimeout = 1500;  // ms

template <typename Interface>
struct Owned {
    Owned() = default;
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    ~Owned() {
        if (it) {
            it->Release();
        }
    }
    Interface* it = nullptr;
};

std::wstring HexText(HRESULT result) {
    wchar_t text[16] = {};
    wsprintfW(text, L"0x%08lx", static_cast<unsigned long>(result));
    return text;
}

// Prints the call's name and error if it failed.
bool Works(const wchar_t* call, HRESULT result) {
    if (FAILED(result)) {
        PrintRow({call, HexText(result)});
    }
    return SUCCEEDED(result);
}

// Also prints them if the call succeeded without returning an object. `returned` is a reference, because
// arguments are evaluated in any order.
template <typename Interface>
bool Works(const wchar_t* call, HRESULT result, const Owned<Interface>& returned) {
    if (SUCCEEDED(result) && !returned.it) {
        PrintRow({call, HexText(result)});
        return false;
    }
    return Works(call, result);
}

struct Text {
    explicit Text(const wchar_t* text) : it(SysAllocString(text)) {}
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    ~Text() { SysFreeString(it); }
    BSTR it;
};

struct Value {
    Value() { VariantInit(&it); }
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;
    ~Value() { VariantClear(&it); }
    VARIANT it;
};

struct Connection {
    Owned<IWbemLocator> locator;
    Owned<IWbemServices> services;
};

bool Connect(Connection& connection) {
    static const bool ready =
        SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) &&
        SUCCEEDED(CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_DEFAULT,
                                       RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE, nullptr));
    if (!ready) {
        PrintRow({L"COM"});
        return false;
    }
    HRESULT result = CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator,
                                      reinterpret_cast<void**>(&connection.locator.it));
    if (!Works(L"locator", result, connection.locator)) {
        return false;
    }
    const Text space(L"ROOT\\WMI");
    result = connection.locator.it->ConnectServer(space.it, nullptr, nullptr, nullptr, 0, nullptr, nullptr,
                                                  &connection.services.it);
    if (!Works(L"connect", result, connection.services)) {
        return false;
    }
    result = CoSetProxyBlanket(connection.services.it, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr,
                               RPC_C_AUTHN_LEVEL_CALL, RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
    return Works(L"blanket", result);
}

bool Query(const Connection& connection, const wchar_t* text, Owned<IEnumWbemClassObject>& found) {
    const Text language(L"WQL");
    const Text query(text);
    const HRESULT result = connection.services.it->ExecQuery(
        language.it, query.it, WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY, nullptr, &found.it);
    return Works(L"query", result, found);
}

bool Next(const Owned<IEnumWbemClassObject>& found, Owned<IWbemClassObject>& object) {
    ULONG returned = 0;
    const HRESULT result = found.it->Next(kNextTimeout, 1, &object.it, &returned);
    return Works(L"end", result, object) && returned == 1;
}

Json JsonValue(const VARIANT& value) {
    switch (V_VT(&value)) {
        case VT_BSTR: return V_BSTR(&value) ? V_BSTR(&value) : L"(null)";
        case VT_I2: return V_I2(&value);
        case VT_I4: return V_I4(&value);
        case VT_UI1: return V_UI1(&value);
        case VT_UI2: return V_UI2(&value);
        case VT_UI4: return V_UI4(&value);
        default: return L"";
    }
}

bool SetThrough(const Connection& connection, BSTR path, BYTE percent) {
    Owned<IWbemClassObject> methods;
    Owned<IWbemClassObject> signature;
    Owned<IWbemClassObject> parameters;
    const Text name(L"WmiMonitorBrightnessMethods");
    if (!Works(L"get_object", connection.services.it->GetObject(name.it, 0, nullptr, &methods.it, nullptr),
               methods) ||
        !Works(L"get_method", methods.it->GetMethod(L"WmiSetBrightness", 0, &signature.it, nullptr),
               signature) ||
        !Works(L"spawn", signature.it->SpawnInstance(0, &parameters.it), parameters)) {
        return false;
    }
    Value timeout;
    V_VT(&timeout.it) = VT_I4;
    V_I4(&timeout.it) = 0;
    Value brightness;
    V_VT(&brightness.it) = VT_UI1;
    V_UI1(&brightness.it) = percent;
    const Text method(L"WmiSetBrightness");
    return Works(L"put_timeout", parameters.it->Put(L"Timeout", 0, &timeout.it, 0)) &&
           Works(L"put_brightness", parameters.it->Put(L"Brightness", 0, &brightness.it, 0)) &&
           Works(L"exec", connection.services.it->ExecMethod(path, method.it, 0, nullptr, parameters.it,
                                                             nullptr, nullptr));
}

}  // namespace

int ListPanels(const Arguments&) {
    Connection connection;
    Owned<IEnumWbemClassObject> found;
    if (!Connect(connection) || !Query(connection, kBrightnessQuery, found)) {
        return kToolOk;
    }
    for (;;) {
        Owned<IWbemClassObject> object;
        if (!Next(found, object)) {
            return kToolOk;
        }
        Value name;
        Value brightness;
        const HRESULT named = object.it->Get(L"InstanceName", 0, &name.it, nullptr, nullptr);
        const HRESULT read = object.it->Get(L"CurrentBrightness", 0, &brightness.it, nullptr, nullptr);
        PrintRow({L"panel", static_cast<int>(SUCCEEDED(named)), V_VT(&name.it),
                  static_cast<int>(SUCCEEDED(read)), V_VT(&brightness.it), JsonValue(name.it),
                  JsonValue(brightness.it)});
    }
}

int SetPanel(const Arguments& arguments) {
    Connection connection;
    Owned<IEnumWbemClassObject> found;
    if (!Connect(connection) || !Query(connection, kMethodsQuery, found)) {
        return kToolOk;
    }
    for (;;) {
        Owned<IWbemClassObject> object;
        if (!Next(found, object)) {
            return kToolOk;
        }
        Value name;
        Value path;
        object.it->Get(L"InstanceName", 0, &name.it, nullptr, nullptr);
        object.it->Get(L"__PATH", 0, &path.it, nullptr, nullptr);
        if (V_VT(&name.it) == VT_BSTR && V_BSTR(&name.it) && arguments[0] == V_BSTR(&name.it) &&
            V_VT(&path.it) == VT_BSTR) {
            const bool set =
                SetThrough(connection, V_BSTR(&path.it), static_cast<BYTE>(Number(arguments[1])));
            PrintRow({set ? L"set" : L"not set"});
            return kToolOk;
        }
    }
}

int MisusePanels(const Arguments& arguments) {
    Connection connection;
    Owned<IEnumWbemClassObject> found;
    if (!Connect(connection) || !Query(connection, kBrightnessQuery, found)) {
        return kToolOk;
    }
    Owned<IWbemClassObject> object;
    if (!Next(found, object)) {
        return kToolOk;
    }
    VARIANT name = {};
    object.it->Get(L"InstanceName", 0, &name, nullptr, nullptr);
    if (arguments[0] != L"value") {
        VariantClear(&name);
    }
    if (arguments[0] == L"object") {
        object.it->AddRef();
    } else if (arguments[0] == L"argument" || arguments[0] == L"literal") {
        static wchar_t literal[] = L"\1\1\1\1WmiMonitorBrightnessMethods";
        const BSTR text = arguments[0] == L"argument" ? SysAllocString(literal + 4) : literal + 4;
        Owned<IWbemClassObject> methods;
        connection.services.it->GetObject(text, 0, nullptr, &methods.it, nullptr);
    }
    return kToolOk;
}
