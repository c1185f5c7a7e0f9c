// The seams of the unit tests. The unit under test is the shipped object. While a test runs, fakes replace
// functions that the unit calls.
//
// A function of Windows: calls use an import pointer, which is set to the fake.
//
//     BOOL WINAPI FakeKillTimer(HWND window, UINT_PTR id) { ... }
//     AMBREL_SEAM(KillTimer, FakeKillTimer);
//
// A function of the program: its first instruction becomes a jump to the replacement.
//
//     AMBREL_REPLACE(bool, SaveSettings, ()) {
//         Record("save settings");
//         return true;
//     }
//
// A seam in a file of tests is installed for the tests of that file. A fake that several files share names
// its seams, AMBREL_SEAM_SET(recorded_log), which are installed for the files that contain
// AMBREL_USES_SEAMS(recorded_log). The fake's header may contain it for every file that includes the header.
//
// If a function is not imported, is too short for a jump or has two fakes, the test program exits at
// start-up.
#pragma once

#include "win32/platform.h"

namespace seams {

enum class SeamKind { kImportPointer, kCode };

// Registers one replacement. The macros below create it before main.
struct Seam {
    template <typename Function>
    Seam(const char* sourceFile, const char* functionName, Function** importPointer, Function* function,
         Function* fake)
        : Seam(sourceFile, functionName, SeamKind::kImportPointer, importPointer, Address(function),
               Address(fake)) {}
    template <typename Function>
    Seam(const char* sourceFile, const char* functionName, Function* function, Function* fake)
        : Seam(sourceFile, functionName, SeamKind::kCode, Address(function), Address(function),
               Address(fake)) {}

    const char* file;
    const char* name;
    SeamKind kind;
    void* target;       // the import pointer, or the function's code
    void* address;      // the value of a pointer to the function, possibly a thunk in the program
    void* replacement;  // the fake
    bool active = false;
    unsigned char saved[sizeof(void*)] = {};

private:
    Seam(const char* sourceFile, const char* functionName, SeamKind what, void* where, void* function,
         void* fake);

    template <typename Function>
    static void* Address(Function* function) {
        return reinterpret_cast<void*>(function);
    }
};

// Declares that the tests of `file` use the seams of the file that `setFile` points to.
struct Use {
    Use(const char* file, const char* const* setFile);
};

// Checks all seams and reports errors on stderr. False if there are any.
bool Verify();

// Installs the seams that the tests of `file` use.
void Install(const char* file);

// Removes all installed seams.
void Remove();

// Returns the real function for a pointer value that may lead to a fake.
void* RealAddress(void* current);

}  // namespace seams

// The real function behind a seam, for a fake that calls it: Real(&DeleteObject)(bitmap).
template <typename Function>
Function* Real(Function* current) {
    return reinterpret_cast<Function*>(seams::RealAddress(reinterpret_cast<void*>(current)));
}

#define AMBREL_SEAM(function, fake)                  \
    extern "C" decltype(&function) __imp_##function; \
    static const seams::Seam seam_of_##function(__BASE_FILE__, #function, &__imp_##function, &function, &fake)

#define AMBREL_REPLACE(result, function, parameters)                                                  \
    static result Replaced##function parameters;                                                      \
    static const seams::Seam seam_of_##function(                                                      \
        __BASE_FILE__, #function, static_cast<result(*) parameters>(&function), &Replaced##function); \
    static result Replaced##function parameters

#define AMBREL_SEAM_SET(set)                 \
    extern const char* const seam_set_##set; \
    const char* const seam_set_##set = __BASE_FILE__

#define AMBREL_USES_SEAMS(set)               \
    extern const char* const seam_set_##set; \
    static const seams::Use use_of_##set(__BASE_FILE__, &seam_set_##set)
