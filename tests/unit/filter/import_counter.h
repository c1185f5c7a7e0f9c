// Counts every call that the test program makes into any DLL while it is started, whatever the function. What
// the program under test calls beyond the calls that a test knows of is seen this way.
//
// The import table's pointers are led through small pieces of code that count and go on to the function.
// Calls that a test has taken over by a seam are not counted.
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

    // Calls between Start and Stop by function, "malloc" for example; the functions that were not called are
    // left out.
    std::map<std::string, int> Calls() const;

    // How many functions are watched.
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
