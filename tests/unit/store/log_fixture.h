// Fixture for the tests of the event log: a stopped clock, a record of the opened files, and a ring of known
// lines. Including it installs its seams.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "store/event_log.h"
#include "store/temp_folder.h"
#include "support/seam.h"

namespace log_fixture {

inline SYSTEMTIME g_now = {};
inline std::atomic<int> g_ticksPerReading = 0;  // milliseconds that pass at each reading
inline std::function<void()> g_afterReading;    // called after each reading, unless empty
inline std::vector<std::string> g_opened;       // modes, in order
inline std::string g_refusedMode;               // an open in this mode fails

// Only called under the log's lock.
inline void WINAPI FakeGetLocalTime(SYSTEMTIME* now) {
    *now = g_now;
    g_now.wMilliseconds = static_cast<WORD>(g_now.wMilliseconds + g_ticksPerReading);
    if (g_now.wMilliseconds > 999) {
        g_now.wMilliseconds = static_cast<WORD>(g_now.wMilliseconds - 1000);
        ++g_now.wSecond;
    }
    if (g_afterReading) g_afterReading();
}

inline errno_t FakeOpen(std::FILE** file, const wchar_t* path, const wchar_t* mode) {
    std::string narrow;
    for (const wchar_t* c = mode; *c != L'\0'; ++c)
        narrow += static_cast<char>(*c);
    g_opened.push_back(narrow);
    if (narrow == g_refusedMode) {
        *file = nullptr;
        return EACCES;
    }
    return Real(&_wfopen_s)(file, path, mode);
}

constexpr char kMarker[] = "---------- session start ----------\r\n";

inline std::string Repeated(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i)
        all += text;
    return all;
}

// The initial 500 lines of every test, as they appear in the file.
inline std::string FillerBytes() {
    return Repeated("[21:04:07.031] filler\r\n", 500);
}

class EventLogTest : public testing::Test {
protected:
    TempFolder folder;
    std::wstring path = folder.Child(L"events.log");

    void SetUp() override {
        g_ticksPerReading = 0;
        g_refusedMode.clear();
        SetTime(21, 4, 7, 31);
        FillRing();
        g_opened.clear();
    }

    // Closes the log's file. The ring cannot be emptied, so it is filled with known lines.
    void TearDown() override {
        g_afterReading = nullptr;
        g_refusedMode.clear();
        OpenEventLogFile(L"");
    }

    static void SetTime(WORD hour, WORD minute, WORD second, WORD milliseconds) {
        // A date unlike any other number; no line may show it.
        g_now = {.wYear = 2026,
                 .wMonth = 8,
                 .wDayOfWeek = 6,
                 .wDay = 15,
                 .wHour = hour,
                 .wMinute = minute,
                 .wSecond = second,
                 .wMilliseconds = milliseconds};
    }

    static void FillRing() {
        for (int i = 0; i < 500; ++i)
            LogEvent("filler");
    }

    static std::wstring LastLine() { return ReadLogRing().back(); }
};

}  // namespace log_fixture

AMBREL_SEAM(GetLocalTime, log_fixture::FakeGetLocalTime);
AMBREL_SEAM(_wfopen_s, log_fixture::FakeOpen);
