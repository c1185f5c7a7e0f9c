// Records the calls to user32 and gdi32 that the program makes while it paints, and makes them again: the
// same functions in the same order with the same arguments, except that a handle which one of the calls
// returned is replaced by the one that the repeated call returns. Only the names of the functions are shared
// with the program.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "win32/platform.h"

class RecordedCalls {
public:
    // Records what `work` calls; discards an earlier record.
    void Record(const std::function<void()>& work);

    void Replay();

    // Repeats the calls and returns the microseconds that each function took in all, once.
    std::map<std::string, double> ReplayTimed();

    std::size_t Count() const { return calls_.size(); }

    // The number of objects that the calls created.
    int Created() const { return created_; }

    // Each creating call with the arguments of an earlier one, with its number of repetitions.
    std::map<std::string, int> MadeAgain() const;

    // For the hooks.
    using Call = std::function<void*(std::vector<void*>& results)>;
    void Add(const char* name, const std::string& arguments, void* result, Call call);
    int IndexOf(const void* handle) const;  // of the call that returned it last; -1: none
    PAINTSTRUCT* Paint() { return &paint_; }

private:
    std::vector<Call> calls_;
    std::vector<const char*> names_;
    std::vector<void*> results_;
    std::map<const void*, int> latest_;
    std::map<std::string, int> creations_;
    PAINTSTRUCT paint_ = {};
    int created_ = 0;
};
