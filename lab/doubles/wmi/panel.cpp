#include "panel.h"

#include <iterator>

#include <wbemcli.h>

#include "instance.h"
#include "strings.h"

namespace {

HRESULT GetText(const std::wstring& text, const std::wstring& type, VARIANT* value) {
    if (type == L"missing") {
        return WBEM_E_NOT_FOUND;
    }
    if (type == L"null") {
        V_VT(value) = VT_NULL;
    } else if (type == L"i4") {
        V_VT(value) = VT_I4;
        V_I4(value) = 4;
    } else {
        V_VT(value) = VT_BSTR;
        V_BSTR(value) = type == L"nullbstr" ? nullptr : AllocateReturnedString(text);
    }
    return WBEM_S_NO_ERROR;
}

void PutI1(VARIANT* value, LONG64 number) {
    V_I1(value) = static_cast<signed char>(number);
}
void PutI2(VARIANT* value, LONG64 number) {
    V_I2(value) = static_cast<SHORT>(number);
}
void PutI4(VARIANT* value, LONG64 number) {
    V_I4(value) = static_cast<LONG>(number);
}
void PutI8(VARIANT* value, LONG64 number) {
    V_I8(value) = number;
}
void PutUi1(VARIANT* value, LONG64 number) {
    V_UI1(value) = static_cast<BYTE>(number);
}
void PutUi2(VARIANT* value, LONG64 number) {
    V_UI2(value) = static_cast<USHORT>(number);
}
void PutUi4(VARIANT* value, LONG64 number) {
    V_UI4(value) = static_cast<ULONG>(number);
}
void PutUi8(VARIANT* value, LONG64 number) {
    V_UI8(value) = static_cast<ULONGLONG>(number);
}
void PutR8(VARIANT* value, LONG64 number) {
    V_R8(value) = static_cast<double>(number);
}
void PutBool(VARIANT* value, LONG64 number) {
    V_BOOL(value) = number ? VARIANT_TRUE : VARIANT_FALSE;
}
void PutText(VARIANT* value, LONG64 number) {
    V_BSTR(value) = AllocateReturnedString(std::to_wstring(number));
}
void PutObject(VARIANT* value, LONG64) {
    V_UNKNOWN(value) = CreateInParameters();
}
void PutNothing(VARIANT*, LONG64) {}

struct BrightnessType {
    const wchar_t* name;
    VARTYPE type;
    void (*put)(VARIANT* value, LONG64 number);
};

const BrightnessType kBrightnessTypes[] = {
    {L"i1", VT_I1, PutI1},
    {L"i2", VT_I2, PutI2},
    {L"i4", VT_I4, PutI4},
    {L"i8", VT_I8, PutI8},
    {L"ui1", VT_UI1, PutUi1},
    {L"ui2", VT_UI2, PutUi2},
    {L"ui4", VT_UI4, PutUi4},
    {L"ui8", VT_UI8, PutUi8},
    {L"r8", VT_R8, PutR8},
    {L"bool", VT_BOOL, PutBool},
    {L"bstr", VT_BSTR, PutText},
    {L"null", VT_NULL, PutNothing},
    {L"empty", VT_EMPTY, PutNothing},
    {L"unknown", VT_UNKNOWN, PutObject},
};

}  // namespace

Rows ActivePanels(const wchar_t* query) {
    Rows found;
    const auto script = ReadScript();
    for (const Row& row : *script) {
        const bool seen = row.Text("without").empty() || row.Text("without") != query;
        if (row.kind == "panel" && row.Number("present") && seen) {
            found.push_back(row);
        }
    }
    return found;
}

bool FindPanelByPath(const std::wstring& path, Row& found) {
    for (const Row& panel : ActivePanels(L"")) {
        if (panel.Text("path") == path) {
            found = panel;
            return true;
        }
    }
    return false;
}

HRESULT GetInstanceName(const Row& panel, VARIANT* value) {
    return GetText(panel.Text("instance"), panel.Text("instance_type"), value);
}

HRESULT GetPath(const Row& panel, VARIANT* value) {
    return GetText(panel.Text("path"), panel.Text("path_type"), value);
}

HRESULT GetBrightness(const Row& panel, LONG64 brightness, VARIANT* value) {
    const std::wstring wanted = panel.Text("brightness_type");
    for (const BrightnessType& row : kBrightnessTypes) {
        if (wanted == row.name) {
            V_VT(value) = row.type;
            row.put(value, brightness);
            return WBEM_S_NO_ERROR;
        }
    }
    return WBEM_E_NOT_FOUND;
}
