// Random calls with arbitrary arguments while the state changes: every call returns a well-formed result, and
// no reference is leaked. Deterministic.
#include <gtest/gtest.h>

#include <random>

#include "ui/accessible_actions.h"
#include "ui/accessible_events.h"
#include "ui/accessible_fixture.h"
#include "ui/click_fixture.h"

namespace {

constexpr int kCalls = 100000;

class AccessibleRandom : public AccessibleTest {
protected:
    unsigned Below(unsigned end) { return static_cast<unsigned>(engine_() % end); }
    bool OneIn(unsigned chance) { return Below(chance) == 0; }
    LONG AnyNumber() { return static_cast<LONG>(engine_()); }

    VARIANT Child() {
        VARIANT child = ChildId(OneIn(4) ? AnyNumber() : static_cast<LONG>(Below(14)) - 1);
        if (OneIn(10)) child.vt = static_cast<VARTYPE>(Below(0x100));
        return child;
    }

    // The pointer, or null now and then.
    template <typename Value>
    Value* Maybe(Value* pointer) {
        return OneIn(8) ? nullptr : pointer;
    }

    void ChangeState() {
        g_app.panel = OneIn(2) ? Panel::Settings : Panel::Main;
        g_app.filterOn = OneIn(2);
        g_app.pwmTargetsPresent = OneIn(2);
        g_app.pwmSafe = OneIn(3);
        g_app.useLegacyGamma = OneIn(3);
        g_app.lastApplyRejected = OneIn(3);
        g_app.copiedUntil = OneIn(3) ? UINT64_MAX : 0;
        g_app.intensity = Below(1001) / 1000.0;
        g_app.brightness = Below(1001) / 1000.0;
        g_app.dpi = 24 * (1 + Below(20));
        g_app.pwmOperationRunning = OneIn(4);
        g_app.windowDestroyed = OneIn(8);
        g_accessibleWindow.visible = !OneIn(3);
        g_accessibleWindow.enabled = !OneIn(6);
        g_accessibleWindow.origin = {AnyNumber() / 4, AnyNumber() / 4};
        AnnouncePopup(OneIn(2));
        AnnouncePanel();
    }

    HRESULT CallText() {
        constexpr HRESULT (STDMETHODCALLTYPE IAccessible::*kMethods[])(VARIANT, BSTR*) = {
            &IAccessible::get_accName,        &IAccessible::get_accValue,
            &IAccessible::get_accDescription, &IAccessible::get_accDefaultAction,
            &IAccessible::get_accHelp,        &IAccessible::get_accKeyboardShortcut};
        BSTR text = nullptr;
        const HRESULT result = (object->*kMethods[Below(std::size(kMethods))])(Child(), Maybe(&text));
        EXPECT_EQ(text != nullptr, result == S_OK);
        EXPECT_LT(SysStringLen(text), 80U);
        SysFreeString(text);
        return result;
    }

    HRESULT CallVariant() {
        VARIANT answer = {};
        VARIANT* out = Maybe(&answer);
        HRESULT result = S_OK;
        switch (Below(6)) {
            case 0: result = object->get_accRole(Child(), out); break;
            case 1: result = object->get_accState(Child(), out); break;
            case 2: result = object->get_accFocus(out); break;
            case 3: result = object->get_accSelection(out); break;
            case 4: result = object->accHitTest(AnyNumber(), AnyNumber(), out); break;
            default:
                result =
                    object->accNavigate(OneIn(4) ? AnyNumber() : static_cast<LONG>(Below(10)), Child(), out);
                break;
        }
        EXPECT_EQ(answer.vt, result == S_OK ? VT_I4 : VT_EMPTY);
        return result;
    }

    HRESULT CallObject() {
        IDispatch* other = nullptr;
        LONG numbers[4] = {};
        BSTR text = nullptr;
        void* interfacePointer = nullptr;
        switch (Below(5)) {
            case 0: return object->get_accParent(Maybe(&other));
            case 1: {
                const HRESULT result = object->get_accChild(Child(), Maybe(&other));
                if (other != nullptr) other->Release();
                return result;
            }
            case 2: return object->get_accChildCount(Maybe(&numbers[0]));
            case 3: {
                const HRESULT result = object->QueryInterface(
                    OneIn(2) ? __uuidof(IAccessible) : __uuidof(IOleWindow), Maybe(&interfacePointer));
                if (interfacePointer != nullptr) static_cast<IUnknown*>(interfacePointer)->Release();
                return result;
            }
            default:
                EXPECT_NE(object->get_accHelpTopic(Maybe(&text), Child(), Maybe(&numbers[1])), S_OK);
                return object->accLocation(Maybe(&numbers[0]), Maybe(&numbers[1]), Maybe(&numbers[2]),
                                           Maybe(&numbers[3]), Child());
        }
    }

    HRESULT CallAction() {
        constexpr const wchar_t* kTexts[] = {L"2700K",        L"2,700K", L"85%", L"0%",
                                             L"99999999999K", L"K",      L"",    L"-1%"};
        const Bstr text(kTexts[Below(std::size(kTexts))]);
        switch (Below(4)) {
            case 0: return object->accDoDefaultAction(Child());
            case 1: return object->put_accValue(Child(), OneIn(8) ? nullptr : text.text);
            case 2: return object->put_accName(Child(), text.text);
            default: return object->accSelect(OneIn(2) ? AnyNumber() : SELFLAG_TAKESELECTION, Child());
        }
    }

    HRESULT CallAny() {
        switch (Below(4)) {
            case 0: return CallText();
            case 1: return CallVariant();
            case 2: return CallObject();
            default: return CallAction();
        }
    }

private:
    std::mt19937 engine_{20240229};
};

}  // namespace

TEST_F(AccessibleRandom, AHundredThousandCallsLeaveNoReferenceAndNoValueOutOfRange) {
    int succeeded = 0;
    for (int i = 0; i < kCalls && !HasFailure(); ++i) {
        if (OneIn(20)) ChangeState();
        const HRESULT result = CallAny();
        if (SUCCEEDED(result)) ++succeeded;
        if (g_app.windowDestroyed) {
            EXPECT_TRUE(result == CO_E_OBJNOTCONNECTED || result == E_INVALIDARG || result == E_POINTER ||
                        result == E_NOINTERFACE || result == S_OK)
                << std::hex << result;
        }
        if (OneIn(10)) PerformAccessibleActions();
        ASSERT_GE(g_app.intensity, 0.0);
        ASSERT_LE(g_app.intensity, 1.0);
        ASSERT_GE(g_app.brightness, 0.0);
        ASSERT_LE(g_app.brightness, 1.0);
        if (g_calls.size() > 1000) g_calls.clear();
    }
    EXPECT_GT(succeeded, kCalls / 4) << "most calls must reach what they ask for";
}
