#include "brightness/fake_wmi_objects.h"

#include <gtest/gtest.h>

#include "support/com_tracker.h"
#include "unsupported.h"

// unsupported.h calls this in every method that the program does not call.
HRESULT NotImplemented(const wchar_t* method) {
    ADD_FAILURE() << "unexpected call of " << Narrow(method);
    return E_NOTIMPL;
}

namespace {

int g_alive = 0;
IUnknown* g_services = nullptr;
IUnknown* g_parameters = nullptr;

// Interface is an interface of WMI, or a class of unsupported.h that implements part of one.
template <typename Interface>
class ReferenceCounted : public Interface {
public:
    explicit ReferenceCounted(const std::string& name) : name_(name) { ++g_alive; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** out) override {
        *out = nullptr;
        return NotImplemented(L"QueryInterface");
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references_); }
    ULONG STDMETHODCALLTYPE Release() override {
        --references_;
        EXPECT_GE(references_, 0) << name_ << " is released too often";
        if (references_ == 0) {
            --g_alive;
            Record("release ", name_);
        }
        return static_cast<ULONG>(references_);
    }

protected:
    void ExpectAlive() const { EXPECT_GT(references_, 0) << name_ << " is used after its release"; }

private:
    std::string name_;
    long references_ = 1;
};

template <typename Made, typename Interface, typename... Arguments>
HRESULT ReturnObject(const CallResult& call, Interface** out, const Arguments&... arguments) {
    EXPECT_EQ(*out, nullptr) << "the pointer is overwritten without a release";
    *out = call.returnsObject ? new Made(arguments...) : nullptr;
    return call.result;
}

std::string Shown(BSTR text) {
    return text != nullptr ? Narrow(text) : "NULL";
}

// WMI refuses a call with a missing string.
bool IsMissing(BSTR text) {
    return text == nullptr;
}

class Object : public ReferenceCounted<ObjectWithout> {
public:
    using ReferenceCounted::ReferenceCounted;

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

void Fill(VARIANT* value, const Property& property) {
    switch (property.type) {
        case VT_BSTR:
            value->bstrVal = property.hasText ? AllocateReturnedText(property.text) : nullptr;
            break;
        case VT_UNKNOWN: value->punkVal = new Object("object in a property"); break;
        case VT_I2: value->iVal = static_cast<SHORT>(property.number); break;
        case VT_UI1: value->bVal = static_cast<BYTE>(property.number); break;
        case VT_UI2: value->uiVal = static_cast<USHORT>(property.number); break;
        case VT_UI4: value->ulVal = static_cast<ULONG>(property.number); break;
        default: value->lVal = property.number; break;
    }
    value->vt = property.type;
}

class Result final : public Object {
public:
    Result(const Properties& properties, std::size_t number)
        : Object("result " + std::to_string(number)), properties_(properties) {}

    HRESULT STDMETHODCALLTYPE Get(LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE*, LONG*) override {
        ExpectAlive();
        Record("get ", Narrow(name));
        EXPECT_EQ(flags, 0);
        EXPECT_EQ(value->vt, VT_EMPTY) << "the variant is not empty";
        const auto found = properties_.find(name);
        if (found == properties_.end()) return static_cast<HRESULT>(WBEM_E_NOT_FOUND);
        if (SUCCEEDED(found->second.result)) Fill(value, found->second);
        return found->second.result;
    }

private:
    Properties properties_;
};

class Parameters final : public Object {
public:
    Parameters() : Object("in-parameters") { g_parameters = this; }

    HRESULT STDMETHODCALLTYPE Put(LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE type) override {
        ExpectAlive();
        const long number = value->vt == VT_UI1 ? value->bVal : value->lVal;
        Record("put ", Narrow(name), " type ", value->vt, " value ", number);
        EXPECT_EQ(flags, 0);
        EXPECT_EQ(type, 0);
        return std::wstring(name) == L"Timeout" ? g_wmi.putTimeout : g_wmi.putBrightness;
    }
};

class Signature final : public Object {
public:
    Signature() : Object("signature") {}

    HRESULT STDMETHODCALLTYPE SpawnInstance(LONG flags, IWbemClassObject** instance) override {
        ExpectAlive();
        Record("spawn");
        EXPECT_EQ(flags, 0);
        return ReturnObject<Parameters>(g_wmi.spawn, instance);
    }
};

class MethodsClass final : public Object {
public:
    MethodsClass() : Object("class") {}

    HRESULT STDMETHODCALLTYPE GetMethod(LPCWSTR name, LONG flags, IWbemClassObject** in,
                                        IWbemClassObject** out) override {
        ExpectAlive();
        Record("get method ", Narrow(name));
        EXPECT_EQ(flags, 0);
        EXPECT_EQ(out, nullptr);
        return ReturnObject<Signature>(g_wmi.getMethod, in);
    }
};

class Enumerator final : public ReferenceCounted<EnumeratorWithout> {
public:
    Enumerator() : ReferenceCounted("enumerator") {}

    HRESULT STDMETHODCALLTYPE Next(LONG timeout, ULONG count, IWbemClassObject** objects,
                                   ULONG* returned) override {
        ExpectAlive();
        Record("next ", timeout, " ", count);
        EXPECT_EQ(*objects, nullptr);
        *returned = 0;
        if (next_ == g_wmi.results.size()) return WBEM_S_FALSE;
        const QueryResult& found = g_wmi.results[next_++];
        *objects = found.returnsObject ? new Result(found.properties, next_) : nullptr;
        *returned = found.returnsObject ? 1 : 0;
        return found.result;
    }

private:
    std::size_t next_ = 0;
};

class Services final : public ReferenceCounted<ServicesWithout> {
public:
    Services() : ReferenceCounted("services") { g_services = this; }

    HRESULT STDMETHODCALLTYPE ExecQuery(const BSTR language, const BSTR query, LONG flags,
                                        IWbemContext* context, IEnumWbemClassObject** found) override {
        ExpectAlive();
        Record("query ", Shown(language), " ", Shown(query), " flags ", flags);
        EXPECT_EQ(context, nullptr);
        if (IsMissing(language) || IsMissing(query)) return static_cast<HRESULT>(WBEM_E_INVALID_PARAMETER);
        return ReturnObject<Enumerator>(g_wmi.query, found);
    }
    HRESULT STDMETHODCALLTYPE GetObject(const BSTR path, LONG flags, IWbemContext* context,
                                        IWbemClassObject** object, IWbemCallResult** result) override {
        ExpectAlive();
        Record("get object ", Shown(path));
        EXPECT_EQ(flags, 0);
        EXPECT_EQ(context, nullptr);
        EXPECT_EQ(result, nullptr);
        if (IsMissing(path)) return static_cast<HRESULT>(WBEM_E_INVALID_PARAMETER);
        return ReturnObject<MethodsClass>(g_wmi.getObject, object);
    }
    HRESULT STDMETHODCALLTYPE ExecMethod(const BSTR path, const BSTR method, LONG flags,
                                         IWbemContext* context, IWbemClassObject* in, IWbemClassObject** out,
                                         IWbemCallResult** result) override {
        ExpectAlive();
        Record("exec ", Shown(path), ": ", Shown(method), " flags ", flags);
        EXPECT_EQ(context, nullptr);
        EXPECT_EQ(in, g_parameters);
        EXPECT_EQ(out, nullptr);
        EXPECT_EQ(result, nullptr);
        if (IsMissing(path) || IsMissing(method)) return static_cast<HRESULT>(WBEM_E_INVALID_PARAMETER);
        return g_wmi.exec;
    }
};

class Locator final : public ReferenceCounted<IWbemLocator> {
public:
    Locator() : ReferenceCounted("locator") {}

    HRESULT STDMETHODCALLTYPE ConnectServer(const BSTR resource, const BSTR user, const BSTR password,
                                            const BSTR locale, LONG flags, const BSTR authority,
                                            IWbemContext* context, IWbemServices** services) override {
        ExpectAlive();
        Record("connect ", Shown(resource));
        for (const BSTR absent : {user, password, locale, authority})
            EXPECT_EQ(absent, nullptr);
        EXPECT_EQ(flags, 0);
        EXPECT_EQ(context, nullptr);
        if (IsMissing(resource)) return static_cast<HRESULT>(WBEM_E_INVALID_PARAMETER);
        return ReturnObject<Services>(g_wmi.connect, services);
    }
};

}  // namespace

IWbemLocator* CreateLocator() {
    return new Locator;
}

IUnknown* LatestServices() {
    return g_services;
}

int ObjectsAlive() {
    return g_alive;
}

void ResetObjects() {
    g_alive = 0;
    g_services = nullptr;
    g_parameters = nullptr;
}
