#include "ui/accessible_host.h"

#include "app/state/app_state.h"
#include "ui/accessible_object.h"
#include "win32/system_library.h"

#include <oleacc.h>

namespace {

// Not a known DLL, so it is loaded at run time. It stays loaded, because it may have references to the
// object.
void LoadOleaccOnce() {
    if (g_app.oleaccRequested) return;
    g_app.oleaccRequested = true;
    HMODULE oleacc = LoadSystemLibrary(L"oleacc.dll");
    if (oleacc == nullptr) return;
    g_app.lresultFromObject =
        reinterpret_cast<decltype(&LresultFromObject)>(GetProcAddress(oleacc, "LresultFromObject"));
    g_app.accessibleObjectFromWindow = reinterpret_cast<decltype(&AccessibleObjectFromWindow)>(
        GetProcAddress(oleacc, "AccessibleObjectFromWindow"));
}

}  // namespace

LRESULT AnswerAccessibilityRequest(WPARAM wParam) {
    // Windows announces a window to clients before WM_CREATE arrives. An object must not be passed on before
    // it can answer.
    if (g_app.mainWindow == nullptr || g_app.windowDestroyed) return 0;
    LoadOleaccOnce();
    if (g_app.lresultFromObject == nullptr) return 0;
    if (g_app.accessibleObject == nullptr) g_app.accessibleObject = CreateAccessibleObject();
    if (g_app.accessibleObject == nullptr) return 0;
    // A message that the call dispatches may destroy the window and release the program's reference.
    IAccessible* const object = g_app.accessibleObject;
    object->AddRef();
    const LRESULT answer = g_app.lresultFromObject(__uuidof(IAccessible), wParam, object);
    object->Release();
    return answer > 0 ? answer : 0;
}

void ReleaseAccessibleObject() {
    if (g_app.accessibleObject != nullptr) g_app.accessibleObject->Release();
    g_app.accessibleObject = nullptr;
}
