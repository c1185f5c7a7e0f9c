// The load configuration, which the Windows loader reads before any code of the program runs, and the stack
// guard that the loader initialises. Microsoft's runtime provides both. mingw-w64's provides neither: its
// stack protector (libssp) requests the guard from a cryptographic provider before wWinMain, which loads the
// provider's DLLs through the default search path, the program's folder included.
//
// Compiled without stack protector. Layout: IMAGE_LOAD_CONFIG_DIRECTORY64 in Microsoft's "PE Format".
#include "win32/fast_fail.h"

#include <cstddef>
#include <cstdint>

namespace {

// The loader replaces the guard with a random value only if the file holds exactly this one.
constexpr std::uintptr_t kDefaultSecurityCookie = 0x00002B992DDFA232;

// LOAD_LIBRARY_SEARCH_SYSTEM32, for the DLLs that the file imports. Windows 10 1607 and later.
constexpr WORD kDependentLoadFlags = 0x800;

// Windows' own declaration stores addresses as integers. An address is not an integer constant expression, so
// initialising that structure would take code that runs after the loader has read the file. mingw-w64 also
// names DependentLoadFlags Reserved1.
struct LoadConfiguration {
    DWORD size = {};
    DWORD timeDateStamp = {};
    WORD majorVersion = {};
    WORD minorVersion = {};
    DWORD globalFlagsClear = {};
    DWORD globalFlagsSet = {};
    DWORD criticalSectionDefaultTimeout = {};
    ULONGLONG deCommitFreeBlockThreshold = {};
    ULONGLONG deCommitTotalFreeThreshold = {};
    const void* lockPrefixTable = {};
    ULONGLONG maximumAllocationSize = {};
    ULONGLONG virtualMemoryThreshold = {};
    ULONGLONG processAffinityMask = {};
    DWORD processHeapFlags = {};
    WORD csdVersion = {};
    WORD dependentLoadFlags = {};
    const void* editList = {};
    std::uintptr_t* securityCookie = {};
    const void* seHandlerTable = {};
    ULONGLONG seHandlerCount = {};
};
static_assert(sizeof(LoadConfiguration) == 0x70);
static_assert(offsetof(LoadConfiguration, dependentLoadFlags) == 0x4E);
static_assert(offsetof(LoadConfiguration, securityCookie) == 0x58);

}  // namespace

// The names below are the compiler's and the linker's.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" {

// The value that -fstack-protector compares. The loader replaces it only in a writable section.
extern constinit std::uintptr_t __stack_chk_guard;
constinit std::uintptr_t __stack_chk_guard = kDefaultSecurityCookie;

// Called by a function that detects that its stack was overwritten.
[[noreturn]] void __stack_chk_fail();
void __stack_chk_fail() {
    FastFail(FAST_FAIL_STACK_COOKIE_CHECK_FAILURE);
}

// lld fills the data directory from this symbol. `extern`, because a constant has internal linkage by
// default.
extern const LoadConfiguration _load_config_used;
[[gnu::used]] constinit const LoadConfiguration _load_config_used = {
    .size = sizeof(LoadConfiguration),
    .dependentLoadFlags = kDependentLoadFlags,
    .securityCookie = &__stack_chk_guard,
};
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
