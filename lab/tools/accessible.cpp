// A client of the program's accessible object: reads the tree, acts, and reports events, as a screen reader
// does.
#include <oleacc.h>

#include <cstdio>

#include "accessible.h"
#include "tool.h"

namespace {

std::wstring TextAndFree(BSTR text) {
    const std::wstring copy = text ? std::wstring(text, SysStringLen(text)) : L"";
    SysFreeString(text);
    return copy;
}

// A text property of a control; empty when there is none.
template <typename Read>
std::wstring TextOf(Read read) {
    BSTR text = nullptr;
    return read(&text) == S_OK ? TextAndFree(text) : L"";
}

template <typename Read>
long long NumberOf(Read read) {
    VARIANT number = {};
    return read(&number) == S_OK && number.vt == VT_I4 ? static_cast<unsigned long>(number.lVal) : -1;
}

Json Describe(IAccessible* object, LONG id) {
    const VARIANT child = ChildId(id);
    LONG left = 0;
    LONG top = 0;
    LONG width = 0;
    LONG height = 0;
    object->accLocation(&left, &top, &width, &height, child);
    return JsonObject({
        {"id", id},
        {"name", TextOf([&](BSTR* out) { return object->get_accName(child, out); })},
        {"role", NumberOf([&](VARIANT* out) { return object->get_accRole(child, out); })},
        {"state", NumberOf([&](VARIANT* out) { return object->get_accState(child, out); })},
        {"value", TextOf([&](BSTR* out) { return object->get_accValue(child, out); })},
        {"description", TextOf([&](BSTR* out) { return object->get_accDescription(child, out); })},
        {"help", TextOf([&](BSTR* out) { return object->get_accHelp(child, out); })},
        {"action", TextOf([&](BSTR* out) { return object->get_accDefaultAction(child, out); })},
        {"left", left},
        {"top", top},
        {"right", left + width},
        {"bottom", top + height},
    });
}

Json Result(HRESULT result) {
    return JsonObject({{"result", static_cast<unsigned long>(result)}});
}

Json ResultAndChild(HRESULT result, VARIANT* child) {
    const Json answer =
        JsonObject({{"result", static_cast<unsigned long>(result)},
                    {"child", child->vt == VT_I4 ? static_cast<long long>(child->lVal) : -1}});
    VariantClear(child);
    return answer;
}

// The window of the object that contains this one; empty if there is none. Wine's own objects for windows
// have neither a name nor a role.
std::wstring ParentWindow(IAccessible* object) {
    IDispatch* parent = nullptr;
    if (object->get_accParent(&parent) != S_OK || !parent) {
        return L"";
    }
    IOleWindow* owner = nullptr;
    HWND window = nullptr;
    if (parent->QueryInterface(__uuidof(IOleWindow), reinterpret_cast<void**>(&owner)) == S_OK) {
        owner->GetWindow(&window);
        owner->Release();
    }
    parent->Release();
    return window ? HandleText(window) : L"";
}

// An event as one line of output: its number, the object and the child.
void CALLBACK PrintEvent(HWINEVENTHOOK, DWORD event, HWND window, LONG object, LONG child, DWORD, DWORD) {
    const Json line = JsonObject({{"event", event},
                                  {"window", HandleText(window)},
                                  {"object", static_cast<unsigned long>(object)},
                                  {"child", child}});
    PrintBytes(line.text + "\n");
    FlushOutput();
}

}  // namespace

VARIANT ChildId(LONG id) {
    VARIANT child = {};
    child.vt = VT_I4;
    child.lVal = id;
    return child;
}

AccessibleClient::AccessibleClient(const std::wstring& target) {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    const HWND window = FindTarget(target);
    if (window) {
        AccessibleObjectFromWindow(window, static_cast<DWORD>(OBJID_CLIENT), __uuidof(IAccessible),
                                   reinterpret_cast<void**>(&object));
    }
}

AccessibleClient::~AccessibleClient() {
    if (object) {
        object->Release();
    }
    CoUninitialize();
}

// accessible TARGET: the object itself and its children in order, and the window of its parent.
int ShowAccessible(const Arguments& arguments, Json& answer) {
    const AccessibleClient client(arguments[0]);
    if (!client.object) {
        return kToolNotFound;
    }
    LONG count = 0;
    client.object->get_accChildCount(&count);
    std::vector<Json> controls;
    for (LONG id = CHILDID_SELF; id <= count; ++id) {
        controls.push_back(Describe(client.object, id));
    }
    answer = JsonObject({{"controls", JsonArray(controls)}, {"parent_window", ParentWindow(client.object)}});
    return kToolOk;
}

// accessible-press TARGET CHILD: the result of the default action.
int PressAccessible(const Arguments& arguments, Json& answer) {
    const AccessibleClient client(arguments[0]);
    if (!client.object) {
        return kToolNotFound;
    }
    answer = Result(client.object->accDoDefaultAction(ChildId(static_cast<LONG>(Number(arguments[1])))));
    return kToolOk;
}

// accessible-set TARGET CHILD TEXT: the result of setting the value.
int SetAccessibleValue(const Arguments& arguments, Json& answer) {
    const AccessibleClient client(arguments[0]);
    if (!client.object) {
        return kToolNotFound;
    }
    const BSTR text = SysAllocStringLen(arguments[2].data(), static_cast<UINT>(arguments[2].size()));
    answer = Result(client.object->put_accValue(ChildId(static_cast<LONG>(Number(arguments[1]))), text));
    SysFreeString(text);
    return kToolOk;
}

// accessible-select TARGET CHILD FLAGS: the result of selecting.
int SelectAccessible(const Arguments& arguments, Json& answer) {
    const AccessibleClient client(arguments[0]);
    if (!client.object) {
        return kToolNotFound;
    }
    answer = Result(client.object->accSelect(static_cast<LONG>(Number(arguments[2])),
                                             ChildId(static_cast<LONG>(Number(arguments[1])))));
    return kToolOk;
}

// accessible-hit TARGET X Y: the result and the child at that point of the screen, -1 for none.
int HitAccessible(const Arguments& arguments, Json& answer) {
    const AccessibleClient client(arguments[0]);
    if (!client.object) {
        return kToolNotFound;
    }
    VARIANT child = {};
    const HRESULT result = client.object->accHitTest(static_cast<LONG>(Number(arguments[1])),
                                                     static_cast<LONG>(Number(arguments[2])), &child);
    answer = ResultAndChild(result, &child);
    return kToolOk;
}

// accessible-navigate TARGET DIRECTION CHILD: the result and the child there, -1 for none.
int NavigateAccessible(const Arguments& arguments, Json& answer) {
    const AccessibleClient client(arguments[0]);
    if (!client.object) {
        return kToolNotFound;
    }
    VARIANT child = {};
    const HRESULT result = client.object->accNavigate(
        static_cast<LONG>(Number(arguments[1])), ChildId(static_cast<LONG>(Number(arguments[2]))), &child);
    answer = ResultAndChild(result, &child);
    return kToolOk;
}

// accessible-hold TARGET: holds the object and reads a name from it until a call fails, prints that call's
// result, and releases the object. Prints "ready" first.
int HoldAccessible(const Arguments& arguments, Json& answer) {
    constexpr DWORD kPause = 1;  // ms; a call is under way at almost any moment
    const AccessibleClient client(arguments[0]);
    if (!client.object) {
        return kToolNotFound;
    }
    PrintReady();
    HRESULT result = S_OK;
    while (SUCCEEDED(result)) {
        BSTR name = nullptr;
        result = client.object->get_accName(ChildId(1), &name);
        SysFreeString(name);
        Sleep(kPause);
    }
    answer = Result(result);
    return kToolOk;
}

// accessible-events TARGET: prints each event of the window's process as a line, until the tool is killed.
// Prints "ready" first.
int ReportEvents(const Arguments& arguments, Json&) {
    const HWND window = FindTarget(arguments[0]);
    DWORD process = 0;
    if (!window || !GetWindowThreadProcessId(window, &process)) {
        return kToolNotFound;
    }
    // Creates the thread's message queue: events for a thread without one are lost.
    MSG message = {};
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
    if (!SetWinEventHook(EVENT_MIN, EVENT_MAX, nullptr, PrintEvent, process, 0, WINEVENT_OUTOFCONTEXT)) {
        return kToolFailed;
    }
    PrintReady();
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        DispatchMessageW(&message);
    }
    return kToolOk;
}
