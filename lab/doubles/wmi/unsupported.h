#pragma once

#include <windows.h>

#include <wbemcli.h>

#include "lifetime.h"

// Base classes of the double's objects. They implement the methods that the double does not support; the
// derived classes implement the others.

class ServicesWithout : public IWbemServices {
public:
    HRESULT STDMETHODCALLTYPE OpenNamespace(const BSTR, LONG, IWbemContext*, IWbemServices**,
                                            IWbemCallResult**) override {
        return NotImplemented(L"OpenNamespace");
    }
    HRESULT STDMETHODCALLTYPE CancelAsyncCall(IWbemObjectSink*) override {
        return NotImplemented(L"CancelAsyncCall");
    }
    HRESULT STDMETHODCALLTYPE QueryObjectSink(LONG, IWbemObjectSink**) override {
        return NotImplemented(L"QueryObjectSink");
    }
    HRESULT STDMETHODCALLTYPE GetObjectAsync(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return NotImplemented(L"GetObjectAsync");
    }
    HRESULT STDMETHODCALLTYPE PutClass(IWbemClassObject*, LONG, IWbemContext*, IWbemCallResult**) override {
        return NotImplemented(L"PutClass");
    }
    HRESULT STDMETHODCALLTYPE PutClassAsync(IWbemClassObject*, LONG, IWbemContext*,
                                            IWbemObjectSink*) override {
        return NotImplemented(L"PutClassAsync");
    }
    HRESULT STDMETHODCALLTYPE DeleteClass(const BSTR, LONG, IWbemContext*, IWbemCallResult**) override {
        return NotImplemented(L"DeleteClass");
    }
    HRESULT STDMETHODCALLTYPE DeleteClassAsync(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return NotImplemented(L"DeleteClassAsync");
    }
    HRESULT STDMETHODCALLTYPE CreateClassEnum(const BSTR, LONG, IWbemContext*,
                                              IEnumWbemClassObject**) override {
        return NotImplemented(L"CreateClassEnum");
    }
    HRESULT STDMETHODCALLTYPE CreateClassEnumAsync(const BSTR, LONG, IWbemContext*,
                                                   IWbemObjectSink*) override {
        return NotImplemented(L"CreateClassEnumAsync");
    }
    HRESULT STDMETHODCALLTYPE PutInstance(IWbemClassObject*, LONG, IWbemContext*,
                                          IWbemCallResult**) override {
        return NotImplemented(L"PutInstance");
    }
    HRESULT STDMETHODCALLTYPE PutInstanceAsync(IWbemClassObject*, LONG, IWbemContext*,
                                               IWbemObjectSink*) override {
        return NotImplemented(L"PutInstanceAsync");
    }
    HRESULT STDMETHODCALLTYPE DeleteInstance(const BSTR, LONG, IWbemContext*, IWbemCallResult**) override {
        return NotImplemented(L"DeleteInstance");
    }
    HRESULT STDMETHODCALLTYPE DeleteInstanceAsync(const BSTR, LONG, IWbemContext*,
                                                  IWbemObjectSink*) override {
        return NotImplemented(L"DeleteInstanceAsync");
    }
    HRESULT STDMETHODCALLTYPE CreateInstanceEnum(const BSTR, LONG, IWbemContext*,
                                                 IEnumWbemClassObject**) override {
        return NotImplemented(L"CreateInstanceEnum");
    }
    HRESULT STDMETHODCALLTYPE CreateInstanceEnumAsync(const BSTR, LONG, IWbemContext*,
                                                      IWbemObjectSink*) override {
        return NotImplemented(L"CreateInstanceEnumAsync");
    }
    HRESULT STDMETHODCALLTYPE ExecQueryAsync(const BSTR, const BSTR, LONG, IWbemContext*,
                                             IWbemObjectSink*) override {
        return NotImplemented(L"ExecQueryAsync");
    }
    HRESULT STDMETHODCALLTYPE ExecNotificationQuery(const BSTR, const BSTR, LONG, IWbemContext*,
                                                    IEnumWbemClassObject**) override {
        return NotImplemented(L"ExecNotificationQuery");
    }
    HRESULT STDMETHODCALLTYPE ExecNotificationQueryAsync(const BSTR, const BSTR, LONG, IWbemContext*,
                                                         IWbemObjectSink*) override {
        return NotImplemented(L"ExecNotificationQueryAsync");
    }
    HRESULT STDMETHODCALLTYPE ExecMethodAsync(const BSTR, const BSTR, LONG, IWbemContext*, IWbemClassObject*,
                                              IWbemObjectSink*) override {
        return NotImplemented(L"ExecMethodAsync");
    }
};

class ObjectWithout : public IWbemClassObject {
public:
    HRESULT STDMETHODCALLTYPE GetQualifierSet(IWbemQualifierSet**) override {
        return NotImplemented(L"GetQualifierSet");
    }
    HRESULT STDMETHODCALLTYPE Delete(LPCWSTR) override { return NotImplemented(L"Delete"); }
    HRESULT STDMETHODCALLTYPE GetNames(LPCWSTR, LONG, VARIANT*, SAFEARRAY**) override {
        return NotImplemented(L"GetNames");
    }
    HRESULT STDMETHODCALLTYPE BeginEnumeration(LONG) override { return NotImplemented(L"BeginEnumeration"); }
    HRESULT STDMETHODCALLTYPE Next(LONG, BSTR*, VARIANT*, CIMTYPE*, LONG*) override {
        return NotImplemented(L"Next");
    }
    HRESULT STDMETHODCALLTYPE EndEnumeration() override { return NotImplemented(L"EndEnumeration"); }
    HRESULT STDMETHODCALLTYPE GetPropertyQualifierSet(LPCWSTR, IWbemQualifierSet**) override {
        return NotImplemented(L"GetPropertyQualifierSet");
    }
    HRESULT STDMETHODCALLTYPE Clone(IWbemClassObject**) override { return NotImplemented(L"Clone"); }
    HRESULT STDMETHODCALLTYPE GetObjectText(LONG, BSTR*) override { return NotImplemented(L"GetObjectText"); }
    HRESULT STDMETHODCALLTYPE SpawnDerivedClass(LONG, IWbemClassObject**) override {
        return NotImplemented(L"SpawnDerivedClass");
    }
    HRESULT STDMETHODCALLTYPE CompareTo(LONG, IWbemClassObject*) override {
        return NotImplemented(L"CompareTo");
    }
    HRESULT STDMETHODCALLTYPE GetPropertyOrigin(LPCWSTR, BSTR*) override {
        return NotImplemented(L"GetPropertyOrigin");
    }
    HRESULT STDMETHODCALLTYPE InheritsFrom(LPCWSTR) override { return NotImplemented(L"InheritsFrom"); }
    HRESULT STDMETHODCALLTYPE PutMethod(LPCWSTR, LONG, IWbemClassObject*, IWbemClassObject*) override {
        return NotImplemented(L"PutMethod");
    }
    HRESULT STDMETHODCALLTYPE DeleteMethod(LPCWSTR) override { return NotImplemented(L"DeleteMethod"); }
    HRESULT STDMETHODCALLTYPE BeginMethodEnumeration(LONG) override {
        return NotImplemented(L"BeginMethodEnumeration");
    }
    HRESULT STDMETHODCALLTYPE NextMethod(LONG, BSTR*, IWbemClassObject**, IWbemClassObject**) override {
        return NotImplemented(L"NextMethod");
    }
    HRESULT STDMETHODCALLTYPE EndMethodEnumeration() override {
        return NotImplemented(L"EndMethodEnumeration");
    }
    HRESULT STDMETHODCALLTYPE GetMethodQualifierSet(LPCWSTR, IWbemQualifierSet**) override {
        return NotImplemented(L"GetMethodQualifierSet");
    }
    HRESULT STDMETHODCALLTYPE GetMethodOrigin(LPCWSTR, BSTR*) override {
        return NotImplemented(L"GetMethodOrigin");
    }
};

class EnumeratorWithout : public IEnumWbemClassObject {
public:
    HRESULT STDMETHODCALLTYPE Reset() override { return NotImplemented(L"Reset"); }
    HRESULT STDMETHODCALLTYPE NextAsync(ULONG, IWbemObjectSink*) override {
        return NotImplemented(L"NextAsync");
    }
    HRESULT STDMETHODCALLTYPE Clone(IEnumWbemClassObject**) override { return NotImplemented(L"Clone"); }
    HRESULT STDMETHODCALLTYPE Skip(LONG, ULONG) override { return NotImplemented(L"Skip"); }
};
