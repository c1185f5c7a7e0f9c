#include "brightness/wmi.h"

#include <algorithm>
#include <utility>

#include "win32/com_guards.h"

#include <objbase.h>
#include <wbemcli.h>

namespace {

constexpr long kNextTimeout = 1500;  // ms per object

// Sanity limits: no machine has more panels, and no name of WMI is longer.
constexpr int kMaxPanels = 64;
constexpr UINT kMaxTextLength = 4096;

constexpr wchar_t kPanelsQuery[] =
    L"SELECT InstanceName, CurrentBrightness FROM WmiMonitorBrightness WHERE Active = TRUE";
constexpr wchar_t kMethodsQuery[] =
    L"SELECT InstanceName, __PATH FROM WmiMonitorBrightnessMethods WHERE Active = TRUE";
constexpr wchar_t kMethodsClass[] = L"WmiMonitorBrightnessMethods";
constexpr wchar_t kSetMethod[] = L"WmiSetBrightness";

bool Connect(ComPointer<IWbemLocator>* locator, ComPointer<IWbemServices>* services) {
    if (FAILED(CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator,
                                reinterpret_cast<void**>(locator->Out()))) ||
        locator->pointer == nullptr) {
        return false;
    }
    const Bstr space(L"ROOT\\WMI");
    if (FAILED((*locator)->ConnectServer(space.text, nullptr, nullptr, nullptr, 0, nullptr, nullptr,
                                         services->Out())) ||
        services->pointer == nullptr) {
        return false;
    }
    return SUCCEEDED(CoSetProxyBlanket(services->pointer, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr,
                                       RPC_C_AUTHN_LEVEL_CALL, RPC_C_IMP_LEVEL_IMPERSONATE, nullptr,
                                       EOAC_NONE));
}

bool Query(IWbemServices* services, const wchar_t* text, ComPointer<IEnumWbemClassObject>* results) {
    const Bstr language(L"WQL");
    const Bstr query(text);
    return SUCCEEDED(services->ExecQuery(language.text, query.text,
                                         WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY, nullptr,
                                         results->Out())) &&
           results->pointer != nullptr;
}

// False at the end of the results, on failure and on a time-out, which is a success code without an object.
bool NextResult(IEnumWbemClassObject* results, ComPointer<IWbemClassObject>* object) {
    ULONG returned = 0;
    return SUCCEEDED(results->Next(kNextTimeout, 1, object->Out(), &returned)) && object->pointer != nullptr;
}

// Empty unless the property is a string of at most kMaxTextLength characters.
std::wstring TextOf(IWbemClassObject* object, const wchar_t* property) {
    Variant read;
    if (FAILED(object->Get(property, 0, &read.value, nullptr, nullptr))) return {};
    if (read.value.vt != VT_BSTR || read.value.bstrVal == nullptr) return {};
    const UINT length = SysStringLen(read.value.bstrVal);
    if (length > kMaxTextLength) return {};
    return {read.value.bstrVal, length};
}

std::uint32_t PercentOf(IWbemClassObject* object) {
    Variant read;
    if (FAILED(object->Get(L"CurrentBrightness", 0, &read.value, nullptr, nullptr))) return 0;
    return PercentFromVariant(read.value);
}

// Finds the object path of the panel's brightness methods. False if no active panel has the name.
bool FindMethodsPath(IWbemServices* services, const std::wstring& name, std::wstring* path) {
    ComPointer<IEnumWbemClassObject> results;
    if (!Query(services, kMethodsQuery, &results)) return false;
    for (int panel = 0; panel < kMaxPanels; ++panel) {
        ComPointer<IWbemClassObject> object;
        if (!NextResult(results.pointer, &object)) return false;
        if (TextOf(object.pointer, L"InstanceName") != name) continue;
        *path = TextOf(object.pointer, L"__PATH");
        return true;
    }
    return false;
}

bool NewParameters(IWbemServices* services, ComPointer<IWbemClassObject>* parameters) {
    const Bstr className(kMethodsClass);
    ComPointer<IWbemClassObject> methodsClass;
    ComPointer<IWbemClassObject> signature;
    return SUCCEEDED(services->GetObject(className.text, 0, nullptr, methodsClass.Out(), nullptr)) &&
           methodsClass.pointer != nullptr &&
           SUCCEEDED(methodsClass->GetMethod(kSetMethod, 0, signature.Out(), nullptr)) &&
           signature.pointer != nullptr && SUCCEEDED(signature->SpawnInstance(0, parameters->Out())) &&
           parameters->pointer != nullptr;
}

bool PutParameters(IWbemClassObject* parameters, std::uint32_t percent) {
    Variant timeout;
    timeout.value.vt = VT_I4;
    timeout.value.lVal = 0;
    Variant brightness;
    brightness.value.vt = VT_UI1;
    brightness.value.bVal = static_cast<BYTE>(std::min(percent, kMaxPercent));
    return SUCCEEDED(parameters->Put(L"Timeout", 0, &timeout.value, 0)) &&
           SUCCEEDED(parameters->Put(L"Brightness", 0, &brightness.value, 0));
}

std::uint32_t FromSigned(long value) {
    return value < 0 ? 0 : static_cast<std::uint32_t>(value);
}

}  // namespace

std::uint32_t PercentFromVariant(const VARIANT& value) {
    std::uint32_t percent = 0;
    switch (value.vt) {
        case VT_I2: percent = FromSigned(value.iVal); break;
        case VT_I4: percent = FromSigned(value.lVal); break;
        case VT_UI1: percent = value.bVal; break;
        case VT_UI2: percent = value.uiVal; break;
        case VT_UI4: percent = value.ulVal; break;
        default: break;
    }
    return std::min(percent, kMaxPercent);
}

void EnumerateWmiTargets(DisplayTargetList* list) {
    ComPointer<IWbemLocator> locator;
    ComPointer<IWbemServices> services;
    ComPointer<IEnumWbemClassObject> results;
    if (!Connect(&locator, &services) || !Query(services.pointer, kPanelsQuery, &results)) return;
    for (int panel = 0; panel < kMaxPanels; ++panel) {
        ComPointer<IWbemClassObject> object;
        if (!NextResult(results.pointer, &object)) return;
        std::wstring name = TextOf(object.pointer, L"InstanceName");
        const std::uint32_t percent = PercentOf(object.pointer);
        if (!name.empty()) list->push_back({TargetKind::WmiPanel, std::move(name), 0, kMaxPercent, percent});
    }
}

bool SetWmiBrightness(const std::wstring& name, std::uint32_t percent) {
    ComPointer<IWbemLocator> locator;
    ComPointer<IWbemServices> services;
    if (!Connect(&locator, &services)) return false;
    std::wstring path;
    if (!FindMethodsPath(services.pointer, name, &path)) return false;
    ComPointer<IWbemClassObject> parameters;
    if (!NewParameters(services.pointer, &parameters) || !PutParameters(parameters.pointer, percent))
        return false;
    const Bstr objectPath(path.c_str());
    const Bstr method(kSetMethod);
    return SUCCEEDED(
        services->ExecMethod(objectPath.text, method.text, 0, nullptr, parameters.pointer, nullptr, nullptr));
}
