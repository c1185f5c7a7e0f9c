// Random calls of an accessible object from another process.
#include <oleacc.h>

#include <random>

#include "accessible.h"
#include "tool.h"

namespace {

// Most calls name a child that exists, so that they pass the checks of the arguments.
constexpr LONG kUsualChildren = 14;

struct RandomSource {
    std::mt19937 engine;

    unsigned Below(unsigned end) { return static_cast<unsigned>(engine() % end); }
    LONG AnyNumber() { return static_cast<LONG>(engine()); }
    LONG Coordinate() { return Below(4) == 0 ? AnyNumber() : static_cast<LONG>(Below(2200)) - 100; }
    VARIANT Child() {
        VARIANT child = ChildId(Below(5) == 0 ? AnyNumber() : static_cast<LONG>(Below(kUsualChildren)));
        if (Below(10) == 0) {
            child = {};
            child.vt = static_cast<VARTYPE>(Below(2) == 0 ? VT_EMPTY : VT_I2);
        }
        return child;
    }
    std::wstring Value() {
        static const wchar_t* const kValues[] = {L"2700K", L"2,700K", L"85%", L"0%",   L"999999K", L"K",
                                                 L"%",     L"",       L"-5%", L"1e3K", L"85",      L" 85%"};
        return Below(3) == 0 ? std::wstring(Below(200), static_cast<wchar_t>(Below(0xD000)))
                             : kValues[Below(std::size(kValues))];
    }
};

HRESULT CallText(IAccessible* object, RandomSource& random) {
    BSTR text = nullptr;
    const VARIANT child = random.Child();
    HRESULT result = S_OK;
    switch (random.Below(6)) {
        case 0: result = object->get_accName(child, &text); break;
        case 1: result = object->get_accValue(child, &text); break;
        case 2: result = object->get_accDescription(child, &text); break;
        case 3: result = object->get_accDefaultAction(child, &text); break;
        case 4: result = object->get_accHelp(child, &text); break;
        default: result = object->get_accKeyboardShortcut(child, &text); break;
    }
    SysFreeString(text);
    return result;
}

HRESULT CallVariant(IAccessible* object, RandomSource& random) {
    VARIANT answer = {};
    HRESULT result = S_OK;
    switch (random.Below(6)) {
        case 0: result = object->get_accRole(random.Child(), &answer); break;
        case 1: result = object->get_accState(random.Child(), &answer); break;
        case 2: result = object->get_accFocus(&answer); break;
        case 3: result = object->get_accSelection(&answer); break;
        case 4: result = object->accHitTest(random.Coordinate(), random.Coordinate(), &answer); break;
        default: {
            const LONG direction =
                random.Below(5) == 0 ? random.AnyNumber() : static_cast<LONG>(random.Below(10));
            result = object->accNavigate(direction, random.Child(), &answer);
            break;
        }
    }
    VariantClear(&answer);
    return result;
}

HRESULT CallObject(IAccessible* object, RandomSource& random) {
    IDispatch* other = nullptr;
    LONG numbers[4] = {};
    HRESULT result = S_OK;
    switch (random.Below(4)) {
        case 0: result = object->get_accParent(&other); break;
        case 1: result = object->get_accChild(random.Child(), &other); break;
        case 2: result = object->get_accChildCount(&numbers[0]); break;
        default:
            result = object->accLocation(&numbers[0], &numbers[1], &numbers[2], &numbers[3], random.Child());
            break;
    }
    if (other) {
        other->Release();
    }
    return result;
}

HRESULT CallAction(IAccessible* object, RandomSource& random) {
    const std::wstring value = random.Value();
    const BSTR text = SysAllocStringLen(value.data(), static_cast<UINT>(value.size()));
    HRESULT result = S_OK;
    switch (random.Below(4)) {
        case 0: result = object->accDoDefaultAction(random.Child()); break;
        case 1: result = object->put_accValue(random.Child(), text); break;
        case 2: result = object->put_accName(random.Child(), text); break;
        default: result = object->accSelect(random.AnyNumber() & 0x3F, random.Child()); break;
    }
    SysFreeString(text);
    return result;
}

}  // namespace

// accessible-random TARGET SEED COUNT ACTIONS: makes random calls, with ACTIONS 1 also those that act. The
// answer is {succeeded, refused, lost}: lost calls did not reach the object.
int CallAtRandom(const Arguments& arguments, Json& answer) {
    const AccessibleClient client(arguments[0]);
    if (!client.object) {
        return kToolNotFound;
    }
    RandomSource random{std::mt19937(static_cast<unsigned>(Number(arguments[1])))};
    const bool acts = Number(arguments[3]) != 0;
    int succeeded = 0;
    int refused = 0;
    int lost = 0;
    for (long long left = Number(arguments[2]); left > 0; --left) {
        HRESULT result = S_OK;
        switch (random.Below(acts ? 4 : 3)) {
            case 0: result = CallText(client.object, random); break;
            case 1: result = CallVariant(client.object, random); break;
            case 2: result = CallObject(client.object, random); break;
            default: result = CallAction(client.object, random); break;
        }
        if (SUCCEEDED(result)) {
            ++succeeded;
        } else if (HRESULT_FACILITY(result) == FACILITY_RPC || HRESULT_FACILITY(result) == FACILITY_WIN32) {
            result == E_INVALIDARG || result == E_ACCESSDENIED ? ++refused : ++lost;
        } else {
            ++refused;
        }
    }
    answer = JsonObject({{"succeeded", succeeded}, {"refused", refused}, {"lost", lost}});
    return kToolOk;
}
