#include <algorithm>
#include <chrono>
#include <future>
#include <map>
#include <thread>
#include <utility>

#include "store/log_fixture.h"

namespace {

// Long enough for a thread that need not wait.
constexpr std::chrono::milliseconds kUnhindered{200};

// A line that another thread is logging: it has read the clock and is not in the ring.
class HeldLine {
public:
    HeldLine() {
        log_fixture::g_afterReading = [this, first = true]() mutable {
            if (!std::exchange(first, false)) return;
            read_.set_value();
            released_.get_future().wait();
        };
        thread_ = std::thread([] { LogEvent("held"); });
        read_.get_future().wait();
    }

    void Release() {
        released_.set_value();
        thread_.join();
    }

private:
    std::promise<void> read_;
    std::promise<void> released_;
    std::thread thread_;
};

class EventLogThreads : public log_fixture::EventLogTest {
protected:
    static constexpr int kThreads = 4;
    static constexpr int kLines = 125;  // together exactly the capacity of the ring

    // The lab runs a program on one processor, where a thread can end before the next one starts.
    void SetUp() override {
        EventLogTest::SetUp();
        DWORD_PTR all = 0;
        ASSERT_NE(GetProcessAffinityMask(GetCurrentProcess(), &processors_, &all), FALSE);
        ASSERT_NE(SetProcessAffinityMask(GetCurrentProcess(), all), FALSE);
    }

    void TearDown() override {
        EXPECT_NE(SetProcessAffinityMask(GetCurrentProcess(), processors_), FALSE);
        EventLogTest::TearDown();
    }

    static void LogFromSeveralThreads() {
        std::vector<std::thread> threads;
        for (int thread = 0; thread < kThreads; ++thread) {
            threads.emplace_back([thread] {
                for (int line = 0; line < kLines; ++line)
                    LogEvent("thread %d line %d %ls", thread, line,
                             L"--------------------------------------");
            });
        }
        for (std::thread& thread : threads)
            thread.join();
    }

    static std::vector<std::string> Lines(const std::string& bytes) {
        std::vector<std::string> lines;
        std::size_t start = 0;
        for (std::size_t end; (end = bytes.find("\r\n", start)) != std::string::npos; start = end + 2)
            lines.push_back(bytes.substr(start, end - start));
        EXPECT_EQ(start, bytes.size()) << "the file ends with a line end";
        return lines;
    }

    static std::vector<std::string> Ring() {
        std::vector<std::string> lines;
        for (const std::wstring& line : ReadLogRing())
            lines.emplace_back(line.begin(), line.end());
        return lines;
    }

    // Each thread's lines are complete, present once and in their order.
    static void ExpectEveryLineWhole(const std::vector<std::string>& lines) {
        std::map<std::string, int> next;
        int found = 0;
        for (const std::string& line : lines) {
            const std::string message = line.substr(15);
            if (message == "filler") continue;
            const std::string thread = message.substr(0, 8);
            EXPECT_EQ(message, thread + " line " + std::to_string(next[thread]++) +
                                   " --------------------------------------");
            ++found;
        }
        EXPECT_EQ(next.size(), static_cast<std::size_t>(kThreads));
        EXPECT_EQ(found, kThreads * kLines);
    }

private:
    DWORD_PTR processors_ = 0;
};

}  // namespace

TEST_F(EventLogThreads, LinesAreCompleteAndTheFileHasTheRingsOrder) {
    OpenEventLogFile(path);
    LogFromSeveralThreads();

    const std::vector<std::string> ring = Ring();
    ASSERT_EQ(ring.size(), 500u);
    ExpectEveryLineWhole(ring);

    std::vector<std::string> file = Lines(ReadBytes(path));
    ASSERT_EQ(file.size(), 1u + 500u + 500u);
    file.erase(file.begin(), file.begin() + 501);
    EXPECT_EQ(file, ring);
}

TEST_F(EventLogThreads, TheStampsRunInTheRingsOrder) {
    SetTime(21, 4, 0, 0);
    log_fixture::g_ticksPerReading = 1;
    LogFromSeveralThreads();
    const std::vector<std::string> ring = Ring();
    ASSERT_EQ(ring.size(), 500u);
    EXPECT_EQ(ring.front().substr(0, 15), "[21:04:00.000] ");
    EXPECT_EQ(ring.back().substr(0, 15), "[21:04:00.499] ");
    EXPECT_TRUE(std::is_sorted(ring.begin(), ring.end(), [](const std::string& a, const std::string& b) {
        return a.compare(0, 15, b, 0, 15) < 0;
    }));
}

TEST_F(EventLogThreads, AFileOpenedWhileOthersLogHasEveryLineOnceInTheRingsOrder) {
    std::thread opener([this] { OpenEventLogFile(path); });
    LogFromSeveralThreads();
    opener.join();

    std::vector<std::string> file = Lines(ReadBytes(path));
    ASSERT_GE(file.size(), 501u);
    EXPECT_EQ(file.front() + "\r\n", log_fixture::kMarker);
    file.erase(file.begin());
    ExpectEveryLineWhole(file);
    EXPECT_EQ(std::vector<std::string>(file.end() - 500, file.end()), Ring());
}

TEST_F(EventLogThreads, TheRingMayBeReadWhileOthersLog) {
    std::thread reader([] {
        for (int i = 0; i < 200; ++i)
            EXPECT_EQ(ReadLogRing().size(), 500u);
    });
    LogFromSeveralThreads();
    reader.join();
    ExpectEveryLineWhole(Ring());
}

TEST_F(EventLogThreads, ALineWaitsUntilThePreviousOneIsComplete) {
    HeldLine held;
    std::future<void> next = std::async(std::launch::async, [] { LogEvent("next"); });
    EXPECT_EQ(next.wait_for(kUnhindered), std::future_status::timeout);
    held.Release();
    next.get();
    const std::vector<std::string> ring = Ring();
    EXPECT_EQ(ring[498], "[21:04:07.031] held");
    EXPECT_EQ(ring[499], "[21:04:07.031] next");
}

TEST_F(EventLogThreads, TheRingIsReadOnceALineIsComplete) {
    HeldLine held;
    std::future<std::vector<std::string>> ring = std::async(std::launch::async, Ring);
    EXPECT_EQ(ring.wait_for(kUnhindered), std::future_status::timeout);
    held.Release();
    EXPECT_EQ(ring.get().back(), "[21:04:07.031] held");
}

TEST_F(EventLogThreads, TheFileIsOpenedOnceALineIsComplete) {
    HeldLine held;
    std::future<void> opened = std::async(std::launch::async, [this] { OpenEventLogFile(path); });
    EXPECT_EQ(opened.wait_for(kUnhindered), std::future_status::timeout);
    held.Release();
    opened.get();
    EXPECT_EQ(Lines(ReadBytes(path)).back(), "[21:04:07.031] held");
}
