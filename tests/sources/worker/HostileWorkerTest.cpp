// Workers that send what no worker should: each is found out, killed and reported.
#include "sources/worker/WorkerClient.h"

#include "tests/sources/worker/WorkerTesting.h"

#include <gtest/gtest.h>

namespace paperline::sources {
namespace {

class FalseGreeting : public testing::TestWithParam<const char*> {};

TEST_P(FalseGreeting, IsNotOpened) {
    WorkerClient client(scriptedWorker(std::string("raw ") + GetParam()));
    EXPECT_EQ(client.open(), ScanStatus::workerDied);
    EXPECT_EQ(client.errorText(), "The scanner's worker sent something unintelligible.");
    EXPECT_EQ(client.workerProcess(), 0);
}

INSTANTIATE_TEST_SUITE_P(Every,
                         FalseGreeting,
                         testing::Values("version", "no-pulse", "wrong-answer"));

class FalsePage : public testing::TestWithParam<const char*> {};

TEST_P(FalsePage, EndsTheWorker) {
    const std::set<int> before = openDescriptors();
    WorkerClient client(scriptedWorker(std::string("raw ") + GetParam()));
    ASSERT_EQ(client.open(), ScanStatus::good);
    ASSERT_EQ(client.start(), ScanStatus::good);
    ScanStatus status = ScanStatus::good;
    PageFormat format;
    for (int i = 0; i < 3 && status == ScanStatus::good; ++i)
        status = client.nextPage(format);
    EXPECT_EQ(status, ScanStatus::workerDied);
    EXPECT_EQ(client.errorText(), "The scanner's worker sent something unintelligible.");
    EXPECT_TRUE(client.pixels().empty());
    EXPECT_EQ(client.workerProcess(), 0);
    EXPECT_EQ(openDescriptors(), before);
}

INSTANTIATE_TEST_SUITE_P(Every,
                         FalsePage,
                         testing::Values("larger-than-its-memory",
                                         "gigantic",
                                         "negative",
                                         "odd-depth",
                                         "unsealed",
                                         "without-memory",
                                         "unknown-buffer",
                                         "cut-off",
                                         "unknown-type",
                                         "good-end",
                                         "one-byte",
                                         "overlong"));

TEST(FalsePage, ABufferInUseIsNotTakenTwice) {
    WorkerClient client(scriptedWorker("raw same-buffer-twice"));
    ASSERT_EQ(client.open(), ScanStatus::good);
    ASSERT_EQ(client.start(), ScanStatus::good);
    // Stop reads what has come, the second page included.
    client.stop();
    EXPECT_EQ(client.workerProcess(), 0);
}

} // namespace
} // namespace paperline::sources
