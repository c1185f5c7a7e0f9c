#include "record.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "state.h"

namespace {

constexpr wchar_t kLogPath[] = L"C:\\lab\\hardware.log";

std::wstring Decimal(LONG64 number) {
    return std::to_wstring(number);
}

}  // namespace

CallRecord::CallRecord(const wchar_t* function, const std::wstring& target)
    : number_(Count(Counter::kCalls, 1)), time_(Now()), function_(function), target_(target) {}

void CallRecord::Argument(const wchar_t* name, const std::wstring& value) {
    arguments_ += L'\t' + std::wstring(name) + L'=' + Escape(value);
}

void CallRecord::Argument(const wchar_t* name, LONG64 value) {
    Argument(name, Decimal(value));
}

void CallRecord::MarkInvalid(const wchar_t* reason) {
    Count(Counter::kInvalidCalls, 1);
    Argument(L"invalid", reason);
}

BOOL CallRecord::EndWithError(DWORD error) {
    const BOOL success = error == ERROR_SUCCESS;
    Write(success ? L"1" : L"0", error);
    SetLastError(error);
    return success;
}

HRESULT CallRecord::EndWith(HRESULT result) {
    wchar_t text[16];
    std::swprintf(text, std::size(text), L"0x%08lx", static_cast<unsigned long>(result));
    Write(text, ERROR_SUCCESS);
    return result;
}

void CallRecord::Write(const wchar_t* result, DWORD error) const {
    const std::string line = ToUtf8(
        Decimal(number_) + L'\t' + Decimal(time_) + L'\t' + Decimal(GetCurrentProcessId()) + L'\t' +
        function_ + L'\t' + Escape(target_) + L'\t' + result + L'\t' + Decimal(error) + arguments_ + L'\n');
    const HANDLE file =
        CreateFileW(kLogPath, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_ALWAYS, 0, nullptr);
    DWORD written = 0;
    WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
    CloseHandle(file);
}

void Wait(LONG64 delay) {
    if (delay <= 0) {
        return;
    }
    constexpr LONG64 kCheckPeriod = 5;  // ms
    const Delay running(delay);
    for (LONG64 left = running.Left(); left > 0; left = running.Left()) {
        Sleep(static_cast<DWORD>(std::min(left, kCheckPeriod)));
    }
}
