// The worker process of a SANE device when it is stopped, killed or crashes, and what it holds.
#include "sources/worker/WorkerClient.h"

#include "tests/sources/sane/SaneTesting.h"
#include "tests/sources/worker/WorkerTesting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>

#include <sys/wait.h>

namespace paperline::sources {
namespace {

namespace fs = std::filesystem;

class SaneWorker : public testing::Test {
protected:
    void openFeeder(const OptionValues& more = {}) {
        ASSERT_EQ(client.open(), ScanStatus::good) << client.errorText();
        group = client.workerProcess();
        OptionValues options{{"source", "Automatic Document Feeder"}, {"resolution", "50"}};
        options.insert(options.end(), more.begin(), more.end());
        for (const auto& [name, value] : options)
            ASSERT_EQ(client.setOption(name, value), ScanStatus::good) << client.errorText();
    }
    bool groupGoes() const {
        for (int i = 0; i < 500 && !processesOfGroup(group).empty(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return processesOfGroup(group).empty();
    }
    // How many page memories the worker has open.
    size_t workersPageBuffers() const {
        size_t count = 0;
        for (const auto& entry : fs::directory_iterator("/proc/" + std::to_string(group) + "/fd")) {
            std::error_code gone;
            const std::string target = fs::read_symlink(entry.path(), gone).string();
            if (target.starts_with("/memfd:paperline-page"))
                ++count;
        }
        return count;
    }

    SaneConfiguration configuration{"test", testBackendLines};
    WorkerClient client{WorkerLaunch{SANE_WORKER, "test:0", ""}};
    pid_t group = 0;
    PageFormat format;
};

TEST_F(SaneWorker, KilledInABatchItIsReportedAndReplaced) {
    for (int round = 0; round < 2; ++round) {
        openFeeder({{"read-delay", "yes"}, {"read-delay-duration", "20000"}});
        ASSERT_EQ(client.start(), ScanStatus::good);
        ASSERT_EQ(client.nextPage(format), ScanStatus::good);
        kill(group, SIGKILL);
        ScanStatus status = ScanStatus::good;
        for (int page = 0; page < 3 && status == ScanStatus::good; ++page)
            status = client.nextPage(format);
        EXPECT_EQ(status, ScanStatus::workerDied);
        EXPECT_EQ(client.errorText(), "The scanner's worker ended unexpectedly (signal 9).");
        EXPECT_TRUE(groupGoes());
    }
}

TEST_F(SaneWorker, StoppedInABatchItIsKilled) {
    const ScopedVariable patience("PAPERLINE_WORKER_TIMEOUT", "2");
    openFeeder({{"read-delay", "yes"}, {"read-delay-duration", "20000"}});
    ASSERT_EQ(client.start(), ScanStatus::good);
    ASSERT_EQ(client.nextPage(format), ScanStatus::good);
    kill(group, SIGSTOP);
    ScanStatus status = ScanStatus::good;
    for (int page = 0; page < 3 && status == ScanStatus::good; ++page)
        status = client.nextPage(format);
    EXPECT_EQ(status, ScanStatus::workerHung);
    EXPECT_TRUE(groupGoes());
}

TEST_F(SaneWorker, ABackendThatCrashesAtOpeningIsReported) {
    // The test backend falls over when it has no devices at all.
    const SaneConfiguration crashing("test", "number_of_devices 0\n");
    EXPECT_EQ(client.open(), ScanStatus::workerDied);
    EXPECT_THAT(client.errorText(), testing::StartsWith("The scanner's worker ended unexpectedly"));
}

TEST_F(SaneWorker, StopsWhileAPageIsRead) {
    openFeeder({{"resolution", "300"}, {"read-delay", "yes"}, {"read-delay-duration", "200000"}});
    ASSERT_EQ(client.start(), ScanStatus::good);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    client.stop();
    EXPECT_EQ(client.workerProcess(), group) << "it stopped by itself";
    ASSERT_EQ(client.setOption("read-delay", "no"), ScanStatus::good);
    ASSERT_EQ(client.setOption("resolution", "50"), ScanStatus::good);
    ASSERT_EQ(client.start(), ScanStatus::good);
    EXPECT_EQ(client.nextPage(format), ScanStatus::good);
}

TEST_F(SaneWorker, HoldsTwoPagesHoweverManyThereAre) {
    const std::set<int> before = openDescriptors();
    openFeeder();
    ASSERT_EQ(client.start(), ScanStatus::good);
    for (int page = 0; page < 10; ++page) {
        ASSERT_EQ(client.nextPage(format), ScanStatus::good);
        EXPECT_LE(workersPageBuffers(), 2u);
        EXPECT_LE(openDescriptors().size(), before.size() + 3);
    }
    EXPECT_EQ(client.nextPage(format), ScanStatus::noMorePages);
    client.stop();
    client.close();
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_TRUE(groupGoes());
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child was not collected";
}

TEST_F(SaneWorker, StoredOptionsAreAppliedAtOpening) {
    const std::string folder = configuration.folder() + "/data";
    const ScopedVariable data("XDG_DATA_HOME", folder);
    fs::create_directories(folder + "/paperline/Device Options");
    std::ofstream(folder + "/paperline/Device Options/Noname tester.conf")
        << "mode=Gray\nresolution=75\nbr-x=20\nno-such=1\n";
    WorkerClient stored(WorkerLaunch{SANE_WORKER, "test:0", "Noname tester"});
    ASSERT_EQ(stored.open(), ScanStatus::good);
    ASSERT_EQ(stored.start(), ScanStatus::good);
    ASSERT_EQ(stored.nextPage(format), ScanStatus::good);
    EXPECT_EQ(format.bitsPerPixel, 8);
    EXPECT_EQ(format.horizontalDpi, 75);
    EXPECT_EQ(format.widthPixels, 59); // 20 mm
}

} // namespace
} // namespace paperline::sources
