#include "scripted_calls.h"

#include <cwchar>

#include <wbemcli.h>

#include "apartment.h"

namespace {

Row WmiRow() {
    const auto script = ReadScript();
    for (const Row& row : *script) {
        if (row.kind == "wmi") {
            return row;
        }
    }
    return {};
}

// Whether the call leaves the process: connecting, and calls on the services and the enumerator. The others
// are calls on objects of this process.
bool LeavesProcess(const std::string& call) {
    for (const char* const local :
         {"locator", "blanket", "get_method", "spawn", "put_timeout", "put_brightness"}) {
        if (call == local) {
            return false;
        }
    }
    return true;
}

HRESULT StartCall(const std::string& call) {
    const LONG64 delay = WmiRow().Number(("delay_" + call).c_str());
    if (LeavesProcess(call)) {
        return SimulateComCall(delay);
    }
    Wait(delay);
    return S_OK;
}

// The word at `index` of a comma-separated list; "" beyond its end.
std::wstring Word(const std::wstring& list, size_t index) {
    size_t start = 0;
    for (; index > 0; --index) {
        const size_t comma = list.find(L',', start);
        if (comma == std::wstring::npos) {
            return {};
        }
        start = comma + 1;
    }
    return list.substr(start, list.find(L',', start) - start);
}

}  // namespace

CallResult ScriptedResult(const char* call, size_t index) {
    const HRESULT rejected = StartCall(call);
    if (FAILED(rejected)) {
        return {rejected, true};
    }
    const std::wstring word = Word(WmiRow().Text(call), index);
    if (word == L"null") {
        return {WBEM_S_NO_ERROR, true};
    }
    if (word == L"timedout") {
        return {WBEM_S_TIMEDOUT, true};
    }
    const HRESULT result = static_cast<HRESULT>(std::wcstoul(word.c_str(), nullptr, 0));
    return {result, FAILED(result)};
}
