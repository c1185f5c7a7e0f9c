#include "ui/accessible_object.h"

#include <algorithm>
#include <new>

#include "app/state/dpi.h"
#include "ui/accessible_actions.h"
#include "ui/accessible_controls.h"
#include "ui/accessible_navigation.h"
#include "ui/slider_text.h"

#include <oleacc.h>

namespace {

bool IsConnected() {
    return g_app.mainWindow != nullptr && !g_app.windowDestroyed;
}

// Clears an out-parameter, before any other check: a client may use or free it after a failure. False if it
// is null.
template <typename Value>
bool Clear(Value* out) {
    if (out != nullptr) *out = Value{};
    return out != nullptr;
}

// Finds the control with the child id, or the popup itself.
HRESULT Find(const VARIANT& child, ShownControl* found) {
    if (!IsConnected()) return CO_E_OBJNOTCONNECTED;
    if (child.vt != VT_I4) return E_INVALIDARG;
    if (child.lVal == CHILDID_SELF) {
        *found = ReadShownPopup();
        return S_OK;
    }
    const ShownPanel panel = ReadShownPanel();
    if (child.lVal < 1 || child.lVal > panel.count) return E_INVALIDARG;
    *found = panel.controls[child.lVal - 1];
    return S_OK;
}

// The flags that the window adds to the state of each control. A message box disables the window.
DWORD WindowState() {
    const DWORD hidden = IsWindowVisible(g_app.mainWindow) ? 0 : STATE_SYSTEM_INVISIBLE;
    return hidden | (IsWindowEnabled(g_app.mainWindow) ? 0 : STATE_SYSTEM_UNAVAILABLE);
}

HRESULT CopyText(const wchar_t* text, BSTR* copy) {
    if (text == nullptr || text[0] == 0) return S_FALSE;
    *copy = SysAllocString(text);
    return *copy != nullptr ? S_OK : E_OUTOFMEMORY;
}

enum class Property { Name, Value, Description, Action };

const wchar_t* TextOf(const ShownControl& control, Property property) {
    switch (property) {
        case Property::Name: return control.facts.name;
        case Property::Value: return control.facts.value;
        case Property::Description: return control.facts.description;
        case Property::Action: return control.action;
    }
    return nullptr;
}

HRESULT GetText(const VARIANT& child, Property property, BSTR* text) {
    if (!Clear(text)) return E_INVALIDARG;
    ShownControl control;
    const HRESULT result = Find(child, &control);
    return result == S_OK ? CopyText(TextOf(control, property), text) : result;
}

// For texts that no control has: help topic and keyboard shortcut.
HRESULT GetNoText(const VARIANT& child, BSTR* text) {
    if (!Clear(text)) return E_INVALIDARG;
    ShownControl control;
    const HRESULT result = Find(child, &control);
    return result == S_OK ? S_FALSE : result;
}

HRESULT GetNumber(const VARIANT& child, VARIANT* number, DWORD (*read)(const ShownControl& control)) {
    if (!Clear(number)) return E_INVALIDARG;
    ShownControl control;
    const HRESULT result = Find(child, &control);
    if (result != S_OK) return result;
    number->vt = VT_I4;
    number->lVal = static_cast<LONG>(read(control));
    return S_OK;
}

// Returns S_FALSE and an empty variant if there is no control.
HRESULT ReturnChild(int child, VARIANT* returned) {
    if (child < 0) return S_FALSE;
    returned->vt = VT_I4;
    returned->lVal = child;
    return S_OK;
}

HRESULT Press(const ShownControl& control) {
    if (control.action == nullptr) return DISP_E_MEMBERNOTFOUND;
    if (!IsWindowEnabled(g_app.mainWindow)) return E_ACCESSDENIED;
    return RequestPress(control.region) ? S_OK : E_FAIL;
}

HRESULT SetValue(const ShownControl& control, BSTR text) {
    const Slider slider = SliderOf(control.region);
    if (slider == Slider::None) return DISP_E_MEMBERNOTFOUND;
    double value = 0.0;
    if (!ParseSliderText(slider, text, SysStringLen(text), &value)) return E_INVALIDARG;
    if (!IsWindowEnabled(g_app.mainWindow)) return E_ACCESSDENIED;
    return RequestSliderValue(control.region, value) ? S_OK : E_FAIL;
}

// Whether the flags are SELFLAG_... in a combination that their documentation allows.
bool IsValidSelectFlags(LONG flags) {
    constexpr LONG kAddAndRemove = SELFLAG_ADDSELECTION | SELFLAG_REMOVESELECTION;
    if ((flags & ~static_cast<LONG>(SELFLAG_VALID)) != 0) return false;
    if ((flags & SELFLAG_TAKESELECTION) != 0) return (flags & (kAddAndRemove | SELFLAG_EXTENDSELECTION)) == 0;
    return (flags & kAddAndRemove) != kAddAndRemove;
}

struct AccessibleObject final : IAccessible {
    volatile LONG references = 1;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (!Clear(object)) return E_POINTER;
        if (iid != __uuidof(IUnknown) && iid != __uuidof(IDispatch) && iid != __uuidof(IAccessible))
            return E_NOINTERFACE;
        AddRef();
        *object = static_cast<IAccessible*>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override {
        return static_cast<ULONG>(InterlockedIncrement(&references));
    }
    ULONG STDMETHODCALLTYPE Release() override {
        const LONG left = InterlockedDecrement(&references);
        if (left == 0) delete this;
        return static_cast<ULONG>(left);
    }

    // Windows implements IDispatch for clients of a server that does not ("IDispatch Interface and
    // Accessibility").
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        Clear(count);
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** information) override {
        Clear(information);
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT count, LCID, DISPID* ids) override {
        if (ids != nullptr) std::fill_n(ids, count, DISPID_UNKNOWN);
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result,
                                     EXCEPINFO* exception, UINT* argument) override {
        Clear(result);
        Clear(exception);
        Clear(argument);
        return E_NOTIMPL;
    }

    HRESULT STDMETHODCALLTYPE get_accParent(IDispatch** parent) override {
        if (!Clear(parent)) return E_INVALIDARG;
        if (!IsConnected()) return CO_E_OBJNOTCONNECTED;
        if (g_app.accessibleObjectFromWindow == nullptr) return S_FALSE;
        // Windows provides the object of the window, to which the client area belongs.
        return g_app.accessibleObjectFromWindow(g_app.mainWindow, static_cast<DWORD>(OBJID_WINDOW),
                                                __uuidof(IDispatch), reinterpret_cast<void**>(parent));
    }
    HRESULT STDMETHODCALLTYPE get_accChildCount(LONG* count) override {
        if (!Clear(count)) return E_INVALIDARG;
        if (!IsConnected()) return CO_E_OBJNOTCONNECTED;
        *count = ReadShownPanel().count;
        return S_OK;
    }
    // A simple element has no separate object.
    HRESULT STDMETHODCALLTYPE get_accChild(VARIANT child, IDispatch** object) override {
        if (!Clear(object)) return E_INVALIDARG;
        ShownControl control;
        const HRESULT result = Find(child, &control);
        if (result != S_OK) return result;
        if (child.lVal != CHILDID_SELF) return S_FALSE;
        AddRef();
        *object = this;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE get_accName(VARIANT child, BSTR* name) override {
        return GetText(child, Property::Name, name);
    }
    // A control without a value does not support the property; S_FALSE is not documented for it.
    HRESULT STDMETHODCALLTYPE get_accValue(VARIANT child, BSTR* value) override {
        const HRESULT result = GetText(child, Property::Value, value);
        return result == S_FALSE ? DISP_E_MEMBERNOTFOUND : result;
    }
    HRESULT STDMETHODCALLTYPE get_accDescription(VARIANT child, BSTR* description) override {
        return GetText(child, Property::Description, description);
    }
    HRESULT STDMETHODCALLTYPE get_accDefaultAction(VARIANT child, BSTR* action) override {
        return GetText(child, Property::Action, action);
    }
    // Windows' bridge passes the help text on to UI Automation (HelpText) but not the description.
    HRESULT STDMETHODCALLTYPE get_accHelp(VARIANT child, BSTR* help) override {
        return GetText(child, Property::Description, help);
    }
    HRESULT STDMETHODCALLTYPE get_accKeyboardShortcut(VARIANT child, BSTR* shortcut) override {
        return GetNoText(child, shortcut);
    }
    HRESULT STDMETHODCALLTYPE get_accHelpTopic(BSTR* file, VARIANT child, LONG* topic) override {
        const bool hasTopic = Clear(topic);
        const HRESULT result = GetNoText(child, file);
        return hasTopic ? result : E_INVALIDARG;
    }
    HRESULT STDMETHODCALLTYPE get_accRole(VARIANT child, VARIANT* role) override {
        return GetNumber(child, role,
                         [](const ShownControl& control) -> DWORD { return control.facts.role; });
    }
    HRESULT STDMETHODCALLTYPE get_accState(VARIANT child, VARIANT* state) override {
        return GetNumber(child, state, [](const ShownControl& control) -> DWORD {
            return control.facts.state | WindowState();
        });
    }

    // The popup reacts to no key, so nothing in it has the focus or can be selected.
    HRESULT STDMETHODCALLTYPE get_accFocus(VARIANT* child) override { return ReturnNoChild(child); }
    HRESULT STDMETHODCALLTYPE get_accSelection(VARIANT* children) override { return ReturnNoChild(children); }
    // Selecting a preset is a click on it.
    HRESULT STDMETHODCALLTYPE accSelect(LONG flags, VARIANT child) override {
        ShownControl control;
        const HRESULT result = Find(child, &control);
        if (result != S_OK) return result;
        if (!IsValidSelectFlags(flags)) return E_INVALIDARG;
        const bool selects = (flags & SELFLAG_TAKESELECTION) != 0;
        if (!selects || control.facts.role != ROLE_SYSTEM_RADIOBUTTON) return DISP_E_MEMBERNOTFOUND;
        return Press(control);
    }

    HRESULT STDMETHODCALLTYPE accLocation(LONG* left, LONG* top, LONG* width, LONG* height,
                                          VARIANT child) override {
        bool complete = true;
        for (LONG* out : {left, top, width, height})
            complete = Clear(out) && complete;
        if (!complete) return E_INVALIDARG;
        ShownControl control;
        const HRESULT result = Find(child, &control);
        if (result != S_OK) return result;
        POINT origin = {};
        ClientToScreen(g_app.mainWindow, &origin);
        const RECT& rect = control.rect;
        *left = origin.x + ScaleByDpi(rect.left);
        *top = origin.y + ScaleByDpi(rect.top);
        *width = ScaleByDpi(rect.right) - ScaleByDpi(rect.left);
        *height = ScaleByDpi(rect.bottom) - ScaleByDpi(rect.top);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE accHitTest(LONG x, LONG y, VARIANT* child) override {
        if (!Clear(child)) return E_INVALIDARG;
        if (!IsConnected()) return CO_E_OBJNOTCONNECTED;
        return ReturnChild(ChildAtScreenPoint(x, y), child);
    }
    HRESULT STDMETHODCALLTYPE accNavigate(LONG direction, VARIANT start, VARIANT* end) override {
        if (!Clear(end)) return E_INVALIDARG;
        ShownControl control;
        const HRESULT result = Find(start, &control);
        if (result != S_OK) return result;
        if (direction <= NAVDIR_MIN || direction >= NAVDIR_MAX) return E_INVALIDARG;
        return ReturnChild(NavigateFrom(start.lVal, direction), end);
    }

    HRESULT STDMETHODCALLTYPE accDoDefaultAction(VARIANT child) override {
        ShownControl control;
        const HRESULT result = Find(child, &control);
        return result == S_OK ? Press(control) : result;
    }
    HRESULT STDMETHODCALLTYPE put_accName(VARIANT child, BSTR) override {
        ShownControl control;
        const HRESULT result = Find(child, &control);
        return result == S_OK ? DISP_E_MEMBERNOTFOUND : result;
    }
    HRESULT STDMETHODCALLTYPE put_accValue(VARIANT child, BSTR value) override {
        ShownControl control;
        const HRESULT result = Find(child, &control);
        return result == S_OK ? SetValue(control, value) : result;
    }

    static HRESULT ReturnNoChild(VARIANT* child) {
        if (!Clear(child)) return E_INVALIDARG;
        return IsConnected() ? S_FALSE : CO_E_OBJNOTCONNECTED;
    }
};

}  // namespace

IAccessible* CreateAccessibleObject() {
    return new (std::nothrow) AccessibleObject;
}
