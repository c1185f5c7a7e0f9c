// The load configuration, which the Windows loader reads before any code of the program runs, and the stack
// guard that it fills in. Microsoft's runtime has its own of both; this file is for mingw-w64, whose runtime
// has neither: its stack protector (libssp) asks a cryptographic provider for the guard before wWinMain, and
// loads that provider's DLLs from where Windows searches by default, the program's own folder included.
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

// Windows' own declaration holds addresses as integers. An address is no integer constant, so initialising
// that would take code that runs after the loader has read the file. mingw-w64 calls DependentLoadFlags
// Reserved1 besides.
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

// What -fstack-protector compares. In a writable section, or the loader leaves it alone.
extern constinit std::uintptr_t __stack_chk_guard;
constinit std::uintptr_t __stack_chk_guard = kDefaultSecurityCookie;

// Called by a function that finds its stack overwritten.
[[noreturn]] void __stack_chk_fail();
void __stack_chk_fail() {
    FastFail(FAST_FAIL_STACK_COOKIE_CHECK_FAILURE);
}

// lld makes the data directory of this symbol. `extern`: a constant is otherwise known in this file only.
extern const LoadConfiguration _load_config_used;
[[gnu::used]] constinit const LoadConfiguration _load_config_used = {
    .size = sizeof(LoadConfiguration),
    .dependentLoadFlags = kDependentLoadFlags,
    .securityCookie = &__stack_chk_guard,
};
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
