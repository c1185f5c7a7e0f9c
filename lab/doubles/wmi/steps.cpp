#include "steps.h"

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

// The steps that leave the process: connecting and what the services and the enumerator are asked. The others
// work on objects of this process.
bool CallsOut(const std::string& step) {
    for (const char* const other :
         {"locator", "blanket", "get_method", "spawn", "put_timeout", "put_brightness"}) {
        if (step == other) {
            return false;
        }
    }
    return true;
}

HRESULT Begin(const std::string& step) {
    const LONG64 delay = WmiRow().Number(("delay_" + step).c_str());
    if (CallsOut(step)) {
        return BeginComCall(delay);
    }
    Wait(delay);
    return S_OK;
}

// The word at `index` of a comma-separated list; "" after its end.
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

Answer AnswerOf(const char* step, size_t call) {
    const HRESULT refused = Begin(step);
    if (FAILED(refused)) {
        return {refused, true};
    }
    const std::wstring word = Word(WmiRow().Text(step), call);
    if (word == L"null") {
        return {WBEM_S_NO_ERROR, true};
    }
    if (word == L"timedout") {
        return {WBEM_S_TIMEDOUT, true};
    }
    const HRESULT result = static_cast<HRESULT>(std::wcstoul(word.c_str(), nullptr, 0));
    return {result, FAILED(result)};
}
