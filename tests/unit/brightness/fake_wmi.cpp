#include "brightness/fake_wmi.h"

#include <gtest/gtest.h>

#include "brightness/fake_wmi_objects.h"
#include "support/com_tracker.h"
#include "support/seam.h"

AMBREL_SEAM_SET(fake_wmi);

FakeWmi g_wmi;

namespace {

constexpr GUID kLocatorClass = {0x4590F811, 0x1D3A, 0x11D0, {0x89, 0x1F, 0x00, 0xAA, 0x00, 0x4B, 0x2E, 0x24}};
constexpr GUID kLocatorInterface = {
    0xDC12A687, 0x737F, 0x11CF, {0x88, 0x4D, 0x00, 0xAA, 0x00, 0x4B, 0x2E, 0x24}};

HRESULT WINAPI FakeCoCreateInstance(REFCLSID classId, LPUNKNOWN outer, DWORD context, REFIID iid,
                                    LPVOID* out) {
    Record("create locator");
    EXPECT_TRUE(IsEqualGUID(classId, kLocatorClass));
    EXPECT_TRUE(IsEqualGUID(iid, kLocatorInterface));
    EXPECT_EQ(outer, nullptr);
    EXPECT_EQ(context, 1U) << "in this process only";
    *out = g_wmi.locator.returnsObject ? CreateLocator() : nullptr;
    return g_wmi.locator.result;
}

// The numbers are RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, RPC_C_AUTHN_LEVEL_CALL and
// RPC_C_IMP_LEVEL_IMPERSONATE.
HRESULT WINAPI FakeCoSetProxyBlanket(IUnknown* proxy, DWORD authentication, DWORD authorisation,
                                     OLECHAR* principal, DWORD level, DWORD impersonation,
                                     RPC_AUTH_IDENTITY_HANDLE identity, DWORD capabilities) {
    Record("blanket");
    EXPECT_EQ(proxy, LatestServices());
    EXPECT_EQ(authentication, 10U);
    EXPECT_EQ(authorisation, 0U);
    EXPECT_EQ(principal, nullptr);
    EXPECT_EQ(level, 3U);
    EXPECT_EQ(impersonation, 3U);
    EXPECT_EQ(identity, nullptr);
    EXPECT_EQ(capabilities, 0U);
    return g_wmi.blanket;
}

}  // namespace

AMBREL_SEAM(CoCreateInstance, FakeCoCreateInstance);
AMBREL_SEAM(CoSetProxyBlanket, FakeCoSetProxyBlanket);

Property Text(const std::wstring& text) {
    return {S_OK, VT_BSTR, text, 0, true};
}

Property Number(VARTYPE type, long number) {
    return {S_OK, type, L"", number, true};
}

QueryResult Panel(const std::wstring& name, long percent) {
    return {{{L"InstanceName", Text(name)},
             {L"CurrentBrightness", Number(VT_UI1, percent)},
             {L"__PATH", Text(L"path of " + name)}},
            WBEM_S_NO_ERROR,
            true};
}

void ResetWmi() {
    g_wmi = FakeWmi{};
    g_calls.clear();
    ResetObjects();
    StartComTracking();
}

void ExpectNoLeaks() {
    EXPECT_EQ(ObjectsAlive(), 0);
    ExpectNoComLeaks();
}

CallRecord operator+(const CallRecord& first, const CallRecord& second) {
    CallRecord both = first;
    both.insert(both.end(), second.begin(), second.end());
    return both;
}
