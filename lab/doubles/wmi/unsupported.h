#pragma once

#include <windows.h>

#include <wbemcli.h>

#include "life.h"

// The methods of WMI's interfaces that the double does not have. What it has is left to the derived classes.

class ServicesWithout : public IWbemServices {
public:
    HRESULT STDMETHODCALLTYPE OpenNamespace(const BSTR, LONG, IWbemContext*, IWbemServices**,
                                            IWbemCallResult**) override {
        return NotHere(L"OpenNamespace");
    }
    HRESULT STDMETHODCALLTYPE CancelAsyncCall(IWbemObjectSink*) override {
        return NotHere(L"CancelAsyncCall");
    }
    HRESULT STDMETHODCALLTYPE QueryObjectSink(LONG, IWbemObjectSink**) override {
        return NotHere(L"QueryObjectSink");
    }
    HRESULT STDMETHODCALLTYPE GetObjectAsync(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return NotHere(L"GetObjectAsync");
    }
    HRESULT STDMETHODCALLTYPE PutClass(IWbemClassObject*, LONG, IWbemContext*, IWbemCallResult**) override {
        return NotHere(L"PutClass");
    }
    HRESULT STDMETHODCALLTYPE PutClassAsync(IWbemClassObject*, LONG, IWbemContext*,
                                            IWbemObjectSink*) override {
        return NotHere(L"PutClassAsync");
    }
    HRESULT STDMETHODCALLTYPE DeleteClass(const BSTR, LONG, IWbemContext*, IWbemCallResult**) override {
        return NotHere(L"DeleteClass");
    }
    HRESULT STDMETHODCALLTYPE DeleteClassAsync(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return NotHere(L"DeleteClassAsync");
    }
    HRESULT STDMETHODCALLTYPE CreateClassEnum(const BSTR, LONG, IWbemContext*,
                                              IEnumWbemClassObject**) override {
        return NotHere(L"CreateClassEnum");
    }
    HRESULT STDMETHODCALLTYPE CreateClassEnumAsync(const BSTR, LONG, IWbemContext*,
                                                   IWbemObjectSink*) override {
        return NotHere(L"CreateClassEnumAsync");
    }
    HRESULT STDMETHODCALLTYPE PutInstance(IWbemClassObject*, LONG, IWbemContext*,
                                          IWbemCallResult**) override {
        return NotHere(L"PutInstance");
    }
    HRESULT STDMETHODCALLTYPE PutInstanceAsync(IWbemClassObject*, LONG, IWbemContext*,
                                               IWbemObjectSink*) override {
        return NotHere(L"PutInstanceAsync");
    }
    HRESULT STDMETHODCALLTYPE DeleteInstance(const BSTR, LONG, IWbemContext*, IWbemCallResult**) override {
        return NotHere(L"DeleteInstance");
    }
    HRESULT STDMETHODCALLTYPE DeleteInstanceAsync(const BSTR, LONG, IWbemContext*,
                                                  IWbemObjectSink*) override {
        return NotHere(L"DeleteInstanceAsync");
    }
    HRESULT STDMETHODCALLTYPE CreateInstanceEnum(const BSTR, LONG, IWbemContext*,
                                                 IEnumWbemClassObject**) override {
        return NotHere(L"CreateInstanceEnum");
    }
    HRESULT STDMETHODCALLTYPE CreateInstanceEnumAsync(const BSTR, LONG, IWbemContext*,
                                                      IWbemObjectSink*) override {
        return NotHere(L"CreateInstanceEnumAsync");
    }
    HRESULT STDMETHODCALLTYPE ExecQueryAsync(const BSTR, const BSTR, LONG, IWbemContext*,
                                             IWbemObjectSink*) override {
        return NotHere(L"ExecQueryAsync");
    }
    HRESULT STDMETHODCALLTYPE ExecNotificationQuery(const BSTR, const BSTR, LONG, IWbemContext*,
                                                    IEnumWbemClassObject**) override {
        return NotHere(L"ExecNotificationQuery");
    }
    HRESULT STDMETHODCALLTYPE ExecNotificationQueryAsync(const BSTR, const BSTR, LONG, IWbemContext*,
                                                         IWbemObjectSink*) override {
        return NotHere(L"ExecNotificationQueryAsync");
    }
    HRESULT STDMETHODCALLTYPE ExecMethodAsync(const BSTR, const BSTR, LONG, IWbemContext*, IWbemClassObject*,
                                              IWbemObjectSink*) override {
        return NotHere(L"ExecMethodAsync");
    }
};

class ObjectWithout : public IWbemClassObject {
public:
    HRESULT STDMETHODCALLTYPE GetQualifierSet(IWbemQualifierSet**) override {
        return NotHere(L"GetQualifierSet");
    }
    HRESULT STDMETHODCALLTYPE Delete(LPCWSTR) override { return NotHere(L"Delete"); }
    HRESULT STDMETHODCALLTYPE GetNames(LPCWSTR, LONG, VARIANT*, SAFEARRAY**) override {
        return NotHere(L"GetNames");
    }
    HRESULT STDMETHODCALLTYPE BeginEnumeration(LONG) override { return NotHere(L"BeginEnumeration"); }
    HRESULT STDMETHODCALLTYPE Next(LONG, BSTR*, VARIANT*, CIMTYPE*, LONG*) override {
        return NotHere(L"Next");
    }
    HRESULT STDMETHODCALLTYPE EndEnumeration() override { return NotHere(L"EndEnumeration"); }
    HRESULT STDMETHODCALLTYPE GetPropertyQualifierSet(LPCWSTR, IWbemQualifierSet**) override {
        return NotHere(L"GetPropertyQualifierSet");
    }
    HRESULT STDMETHODCALLTYPE Clone(IWbemClassObject**) override { return NotHere(L"Clone"); }
    HRESULT STDMETHODCALLTYPE GetObjectText(LONG, BSTR*) override { return NotHere(L"GetObjectText"); }
    HRESULT STDMETHODCALLTYPE SpawnDerivedClass(LONG, IWbemClassObject**) override {
        return NotHere(L"SpawnDerivedClass");
    }
    HRESULT STDMETHODCALLTYPE CompareTo(LONG, IWbemClassObject*) override { return NotHere(L"CompareTo"); }
    HRESULT STDMETHODCALLTYPE GetPropertyOrigin(LPCWSTR, BSTR*) override {
        return NotHere(L"GetPropertyOrigin");
    }
    HRESULT STDMETHODCALLTYPE InheritsFrom(LPCWSTR) override { return NotHere(L"InheritsFrom"); }
    HRESULT STDMETHODCALLTYPE PutMethod(LPCWSTR, LONG, IWbemClassObject*, IWbemClassObject*) override {
        return NotHere(L"PutMethod");
    }
    HRESULT STDMETHODCALLTYPE DeleteMethod(LPCWSTR) override { return NotHere(L"DeleteMethod"); }
    HRESULT STDMETHODCALLTYPE BeginMethodEnumeration(LONG) override {
        return NotHere(L"BeginMethodEnumeration");
    }
    HRESULT STDMETHODCALLTYPE NextMethod(LONG, BSTR*, IWbemClassObject**, IWbemClassObject**) override {
        return NotHere(L"NextMethod");
    }
    HRESULT STDMETHODCALLTYPE EndMethodEnumeration() override { return NotHere(L"EndMethodEnumeration"); }
    HRESULT STDMETHODCALLTYPE GetMethodQualifierSet(LPCWSTR, IWbemQualifierSet**) override {
        return NotHere(L"GetMethodQualifierSet");
    }
    HRESULT STDMETHODCALLTYPE GetMethodOrigin(LPCWSTR, BSTR*) override { return NotHere(L"GetMethodOrigin"); }
};

class EnumeratorWithout : public IEnumWbemClassObject {
public:
    HRESULT STDMETHODCALLTYPE Reset() override { return NotHere(L"Reset"); }
    HRESULT STDMETHODCALLTYPE NextAsync(ULONG, IWbemObjectSink*) override { return NotHere(L"NextAsync"); }
    HRESULT STDMETHODCALLTYPE Clone(IEnumWbemClassObject**) override { return NotHere(L"Clone"); }
    HRESULT STDMETHODCALLTYPE Skip(LONG, ULONG) override { return NotHere(L"Skip"); }
};
