// The seams of the unit tests. The unit under test is the object that ships; a test takes the place of what
// lies beneath it while the test runs and at no other time.
//
// Of Windows: a call of a DLL's function goes through an import pointer, and the pointer is set to the fake.
//
//     BOOL WINAPI FakeKillTimer(HWND window, UINT_PTR id) { ... }
//     AMBREL_SEAM(KillTimer, FakeKillTimer);
//
// Of the program itself: the function's first instruction becomes a jump to the replacement.
//
//     AMBREL_REPLACE(bool, SaveSettings, ()) {
//         Record("save settings");
//         return true;
//     }
//
// What stands in a file of tests is in force for the tests of that file. A fake that several files share
// names its seams, AMBREL_SEAM_SET(recorded_log), and is in force for the files that say
// AMBREL_USES_SEAMS(recorded_log), which the fake's header may say for all who include it.
//
// A function that is not imported, that is too short for a jump or that has two fakes ends the program at its
// start.
#pragma once

#include "win32/platform.h"

namespace seams {

enum class Place { kImportPointer, kCode };

// Registers one replacement; made by the macros below, before main.
struct Seam {
    template <typename Function>
    Seam(const char* sourceFile, const char* functionName, Function** importPointer, Function* function,
         Function* fake)
        : Seam(sourceFile, functionName, Place::kImportPointer, importPointer, Address(function),
               Address(fake)) {}
    template <typename Function>
    Seam(const char* sourceFile, const char* functionName, Function* function, Function* fake)
        : Seam(sourceFile, functionName, Place::kCode, Address(function), Address(function), Address(fake)) {}

    const char* file;
    const char* name;
    Place place;
    void* target;       // the import pointer, or the function's code
    void* address;      // the function as a pointer to it has it, a thunk of the program perhaps
    void* replacement;  // what is called in its place
    bool active = false;
    unsigned char saved[sizeof(void*)] = {};

private:
    Seam(const char* sourceFile, const char* functionName, Place what, void* where, void* function,
         void* fake);

    template <typename Function>
    static void* Address(Function* function) {
        return reinterpret_cast<void*>(function);
    }
};

// Says that the tests of `file` use the seams of the file that `setFile` points to.
struct Use {
    Use(const char* file, const char* const* setFile);
};

// Says on stderr what is wrong with the seams; false when anything is.
bool Verify();

// Puts the seams in force that the tests of `file` use, and takes all back again.
void Install(const char* file);
void Remove();

// What a call through a pointer with this value reaches while its seam is not in force.
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
