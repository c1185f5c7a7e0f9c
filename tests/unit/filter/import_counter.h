// Counts every call that the test program makes into any DLL while the counter runs. This detects calls of
// the program under test that no seam records. The import table's pointers lead to small pieces of code that
// count and jump to the function. Calls that a test replaces with a seam are not counted.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "win32/platform.h"

class ImportCounter {
public:
    ImportCounter();
    ~ImportCounter();
    ImportCounter(const ImportCounter&) = delete;
    ImportCounter& operator=(const ImportCounter&) = delete;

    void Start();
    void Stop();

    // Calls between Start and Stop by function name, for example "malloc"; functions that were not called are
    // omitted.
    std::map<std::string, int> Calls() const;

    // The number of counted functions.
    std::size_t Watched() const { return imports_.size(); }

private:
    struct Import {
        std::string name;
        ULONG_PTR* slot;
        ULONG_PTR function;
        ULONG_PTR detour;
        std::uint32_t calls;
    };

    void Collect();
    void WriteDetours();

    std::vector<Import> imports_;
    unsigned char* code_ = nullptr;
    bool running_ = false;
};
