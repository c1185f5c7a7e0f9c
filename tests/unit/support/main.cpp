// Runs the tests of a program, each with the seams of its file installed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/seam.h"

namespace {

// Appended last, so that other listeners call the real functions when they print.
class SeamsOfTheTest : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo& test) override { seams::Install(test.file()); }
    void OnTestEnd(const testing::TestInfo&) override { seams::Remove(); }
};

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    if (!seams::Verify()) return 1;
    testing::UnitTest::GetInstance()->listeners().Append(new SeamsOfTheTest);
    return RUN_ALL_TESTS();
}
