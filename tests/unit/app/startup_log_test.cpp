// A start with the real event log: lines that are logged before the file is known must not be lost.
#include <gtest/gtest.h>

#include <cstdio>

#include "app/startup_fakes.h"
#include "app/state/app_state.h"

namespace {

std::wstring TemporaryFolder() {
    wchar_t folder[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, folder);
    const std::wstring own = std::wstring(folder) + L"ambrel-startup-log\\";
    CreateDirectoryW(own.c_str(), nullptr);
    return own;
}

std::wstring LogPath() {
    return TemporaryFolder() + L"events.log";
}

std::vector<std::string> ReadLines(const std::wstring& path) {
    std::vector<std::string> lines;
    std::FILE* file = _wfopen(path.c_str(), L"rb");
    if (file == nullptr) return lines;
    std::string line;
    for (int character = std::fgetc(file); character != EOF; character = std::fgetc(file)) {
        if (character == '\n') {
            lines.push_back(line);
            line.clear();
        } else if (character != '\r') {
            line += static_cast<char>(character);
        }
    }
    std::fclose(file);
    return lines;
}

// The text after the stamp "[hh:mm:ss.mmm] ".
std::string Message(const std::string& line) {
    return line.size() > 15 ? line.substr(15) : line;
}

class StartupLog : public testing::Test {
protected:
    void SetUp() override {
        ResetSystem();
        DeleteFileW(LogPath().c_str());
        g_system.settingsPath = TemporaryFolder() + L"settings.ini";
    }
    void TearDown() override {
        DeleteFileW(LogPath().c_str());
        RemoveDirectoryW(TemporaryFolder().c_str());
    }
};

}  // namespace

// The log keeps its file for the rest of the process, so the instance that opens no file runs first.
TEST_F(StartupLog, ASecondInstanceWritesNoLineAndTheFirstItsThreeLinesAfterTheMarker) {
    g_system.mutexError = ERROR_ALREADY_EXISTS;
    EXPECT_EQ(Start(), 0);
    EXPECT_EQ(GetFileAttributesW(LogPath().c_str()), INVALID_FILE_ATTRIBUTES);

    g_system.mutexError = ERROR_SUCCESS;
    g_system.trayAccepts = false;
    EXPECT_EQ(Start(), 0);
    const std::vector<std::string> lines = ReadLines(LogPath());
    // Both starts in this process log their three lines into the same ring.
    ASSERT_EQ(lines.size(), 9U);
    EXPECT_EQ(lines[0], "---------- session start ----------");
    for (const std::size_t first : {1U, 4U}) {
        EXPECT_EQ(Message(lines[first]), "Ambrel Windows v2.23 starting");
        EXPECT_EQ(Message(lines[first + 1]), "OS: Windows 11 Pro 23H2 (10.0.22631)");
        EXPECT_EQ(Message(lines[first + 2]), "Hardware: Contoso Slate 7 / Contoso CPU @ 2.00GHz");
    }
    EXPECT_EQ(Message(lines[7]), "Gamma range: Windows default");
    EXPECT_EQ(Message(lines[8]), "Tray icon add failed (taskbar not ready?) - retry timer armed");
}
