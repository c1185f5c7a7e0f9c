#include "lifetime.h"

#include "../hardware/record.h"
#include "../hardware/state.h"

ObjectLifetime::ObjectLifetime(const wchar_t* name) : name_(name) {
    Count(Counter::kObjects, 1);
}

ULONG ObjectLifetime::AddReference() {
    return static_cast<ULONG>(InterlockedIncrement(&references_));
}

ULONG ObjectLifetime::ReleaseReference() {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0) {
        Count(Counter::kObjects, -1);
        CallRecord(L"Released", name_).EndWith(S_OK);
    }
    return static_cast<ULONG>(left);
}

HRESULT NotImplemented(const wchar_t* method) {
    CallRecord record(method, L"");
    record.MarkInvalid(L"the double does not implement this method");
    return record.EndWith(E_NOTIMPL);
}
