#include "sources/worker/WorkerClient.h"

#include "tests/sources/worker/WorkerTesting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <thread>

#include <sys/wait.h>

namespace paperline::sources {
namespace {

using testing::Each;
using testing::HasSubstr;

std::vector<uint8_t> rowOf(const WorkerClient& client, const PageFormat& format, int row) {
    const auto bytesPerRow = static_cast<size_t>(format.bytesPerRow());
    const auto part = client.pixels().subspan(static_cast<size_t>(row) * bytesPerRow, bytesPerRow);
    return {part.begin(), part.end()};
}

// Waits until no process of the group lives any more.
bool groupGoes(pid_t group) {
    for (int i = 0; i < 500 && !processesOfGroup(group).empty(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return processesOfGroup(group).empty();
}

TEST(WorkerClient, HandsOnEveryPageOfABatchInOrder) {
    WorkerClient client(scriptedWorker("pages=5 rows=7 width=3 bits=24"));
    ASSERT_EQ(client.open(), ScanStatus::good);
    ASSERT_EQ(client.start(), ScanStatus::good);
    for (int page = 1; page <= 5; ++page) {
        PageFormat format;
        ASSERT_EQ(client.nextPage(format), ScanStatus::good);
        EXPECT_EQ(format.widthPixels, 3);
        EXPECT_EQ(format.heightPixels, 7);
        EXPECT_EQ(format.bitsPerPixel, 24);
        EXPECT_EQ(format.horizontalDpi, 300);
        EXPECT_EQ(format.verticalDpi, 150);
        ASSERT_EQ(client.pixels().size(), 63u);
        for (int row = 0; row < 7; ++row)
            EXPECT_THAT(rowOf(client, format, row), Each(page * 16 + row));
    }
    PageFormat format;
    EXPECT_EQ(client.nextPage(format), ScanStatus::noMorePages);
    EXPECT_TRUE(client.pixels().empty());
}

TEST(WorkerClient, ScansABatchAgainAfterStop) {
    WorkerClient client(scriptedWorker("pages=2"));
    ASSERT_EQ(client.open(), ScanStatus::good);
    for (int batch = 0; batch < 3; ++batch) {
        PageFormat format;
        ASSERT_EQ(client.start(), ScanStatus::good);
        ASSERT_EQ(client.nextPage(format), ScanStatus::good);
        EXPECT_THAT(rowOf(client, format, 0), Each(16));
        client.stop();
    }
}

TEST(WorkerClient, GrowsAPageOfUnknownHeight) {
    WorkerClient client(scriptedWorker("pages=2 rows=5000 width=100 unknown-height"));
    ASSERT_EQ(client.open(), ScanStatus::good);
    ASSERT_EQ(client.start(), ScanStatus::good);
    for (int page = 1; page <= 2; ++page) {
        PageFormat format;
        ASSERT_EQ(client.nextPage(format), ScanStatus::good);
        EXPECT_EQ(format.heightPixels, 5000);
        for (const int row : {0, 1023, 1024, 4999})
            EXPECT_THAT(rowOf(client, format, row), Each(static_cast<uint8_t>(page * 16 + row)));
    }
}

TEST(WorkerClient, KeepsEarlierPagesWhenTheBatchEndsBadly) {
    WorkerClient client(
        scriptedWorker("pages=2 end=" + std::to_string(static_cast<int>(ScanStatus::paperJam))));
    ASSERT_EQ(client.open(), ScanStatus::good);
    ASSERT_EQ(client.start(), ScanStatus::good);
    PageFormat format;
    EXPECT_EQ(client.nextPage(format), ScanStatus::good);
    EXPECT_EQ(client.nextPage(format), ScanStatus::good);
    EXPECT_EQ(client.nextPage(format), ScanStatus::paperJam);
    EXPECT_EQ(client.errorText(), "scripted end");
    EXPECT_EQ(client.nextPage(format), ScanStatus::paperJam);
}

TEST(WorkerClient, TellsWhyTheDeviceDoesNotOpen) {
    WorkerClient client(
        scriptedWorker("open=" + std::to_string(static_cast<int>(ScanStatus::accessDenied))));
    EXPECT_EQ(client.open(), ScanStatus::accessDenied);
    EXPECT_EQ(client.errorText(), "scripted to stay shut");
    EXPECT_EQ(client.workerProcess(), 0);
}

TEST(WorkerClient, ReportsAProgramThatIsNotThere) {
    WorkerClient client({"/nowhere/worker", "pages=1", ""});
    EXPECT_EQ(client.open(), ScanStatus::workerDied);
    EXPECT_THAT(client.errorText(), HasSubstr("/nowhere/worker"));
}

TEST(WorkerClient, CarriesOptionsBothWays) {
    WorkerClient client(scriptedWorker(""));
    ASSERT_EQ(client.open(), ScanStatus::good);
    EXPECT_EQ(client.setOption("mode", "Color"), ScanStatus::good);
    EXPECT_EQ(client.setOption("mode", "Blue"), ScanStatus::invalid);
    EXPECT_EQ(client.errorText(), "Scripted to refuse.");
    const std::vector<OptionDescriptor> options = client.options();
    ASSERT_EQ(options.size(), 2u);
    EXPECT_EQ(options[0].name, "mode");
    EXPECT_EQ(options[0].title, "Scan\tmode");
    EXPECT_EQ(options[0].value, "Color");
    EXPECT_EQ(options[0].choices, (std::vector<std::string>{"Lineart", "Gray", "Color"}));
    EXPECT_FALSE(options[0].hasRange);
    EXPECT_EQ(options[1].kind, OptionKind::integer);
    EXPECT_EQ(options[1].unit, "dpi");
    EXPECT_TRUE(options[1].hasRange);
    EXPECT_EQ(options[1].minimum, 50);
    EXPECT_EQ(options[1].maximum, 600);
    EXPECT_EQ(options[1].step, 0.5);
}

TEST(WorkerClient, AnswersForOptionsWhileTheBatchRuns) {
    WorkerClient client(scriptedWorker("pages=3"));
    ASSERT_EQ(client.open(), ScanStatus::good);
    ASSERT_EQ(client.options().size(), 2u);
    ASSERT_EQ(client.start(), ScanStatus::good);
    EXPECT_EQ(client.options().size(), 2u);
    EXPECT_EQ(client.setOption("mode", "Gray"), ScanStatus::deviceBusy);
    EXPECT_EQ(client.start(), ScanStatus::deviceBusy);
    PageFormat format;
    EXPECT_EQ(client.nextPage(format), ScanStatus::good);
}

TEST(WorkerClient, OptionsOfThisScanMustBeTaken) {
    WorkerClient client(scriptedWorker(""));
    {
        const ScopedVariable given("PAPERLINE_SOURCE_OPTIONS", "mode=Color\nresolution=75");
        ASSERT_EQ(client.open(), ScanStatus::good);
        EXPECT_EQ(client.options().at(0).value, "Color");
        EXPECT_EQ(client.options().at(1).value, "75");
    }
    {
        const ScopedVariable given("PAPERLINE_SOURCE_OPTIONS", "mode=Blue");
        EXPECT_EQ(client.open(), ScanStatus::invalid);
        EXPECT_EQ(client.errorText(),
                  "The option \"mode\" does not take \"Blue\". Scripted to refuse.");
    }
    const ScopedVariable given("PAPERLINE_SOURCE_OPTIONS", "modus=Gray");
    EXPECT_EQ(client.open(), ScanStatus::invalid);
    EXPECT_EQ(client.errorText(), "There is no option \"modus\".");
}

TEST(WorkerClient, ReportsACrashAndStartsAfreshAfterIt) {
    WorkerClient client(scriptedWorker("pages=3 crash=2"));
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(client.open(), ScanStatus::good);
        const pid_t group = client.workerProcess();
        ASSERT_EQ(client.start(), ScanStatus::good);
        PageFormat format;
        ASSERT_EQ(client.nextPage(format), ScanStatus::good);
        EXPECT_EQ(client.nextPage(format), ScanStatus::workerDied);
        EXPECT_THAT(client.errorText(), HasSubstr("ended unexpectedly"));
        EXPECT_EQ(client.start(), ScanStatus::workerDied);
        EXPECT_TRUE(groupGoes(group));
    }
}

TEST(WorkerClient, SeesACrashThoughAChildKeepsTheSocket) {
    const ScopedVariable patience("PAPERLINE_WORKER_TIMEOUT", "30");
    WorkerClient client(scriptedWorker("child crash=1"));
    ASSERT_EQ(client.open(), ScanStatus::good);
    const pid_t group = client.workerProcess();
    ASSERT_EQ(client.start(), ScanStatus::good);
    PageFormat format;
    EXPECT_EQ(client.nextPage(format), ScanStatus::workerDied);
    EXPECT_TRUE(groupGoes(group));
}

TEST(WorkerClient, KillsAWorkerThatHangsWithItsChildren) {
    const ScopedVariable patience("PAPERLINE_WORKER_TIMEOUT", "0.5");
    WorkerClient client(scriptedWorker("child hang=2"));
    ASSERT_EQ(client.open(), ScanStatus::good);
    const pid_t group = client.workerProcess();
    EXPECT_EQ(processesOfGroup(group).size(), 2u);
    ASSERT_EQ(client.start(), ScanStatus::good);
    PageFormat format;
    ASSERT_EQ(client.nextPage(format), ScanStatus::good);
    EXPECT_EQ(client.nextPage(format), ScanStatus::workerHung);
    EXPECT_TRUE(groupGoes(group));
}

TEST(WorkerClient, KillsAWorkerThatHangsInOpen) {
    const ScopedVariable patience("PAPERLINE_WORKER_TIMEOUT", "0.5");
    WorkerClient client(scriptedWorker("hang=0"));
    EXPECT_EQ(client.open(), ScanStatus::workerHung);
    EXPECT_EQ(client.workerProcess(), 0);
}

TEST(WorkerClient, KillsAStoppedWorker) {
    const ScopedVariable patience("PAPERLINE_WORKER_TIMEOUT", "0.5");
    WorkerClient client(scriptedWorker("pages=3"));
    ASSERT_EQ(client.open(), ScanStatus::good);
    const pid_t group = client.workerProcess();
    ::kill(group, SIGSTOP);
    EXPECT_EQ(client.start(), ScanStatus::workerHung);
    EXPECT_TRUE(groupGoes(group));
}

TEST(WorkerClient, AWorkerLostInStopIsReplacedByOneSetAlike) {
    const ScopedVariable patience("PAPERLINE_WORKER_TIMEOUT", "0.5");
    for (const char* script : {"pages=2 hang=-2", "pages=2 crash=-2"}) {
        WorkerClient client(scriptedWorker(script));
        ASSERT_EQ(client.open(), ScanStatus::good);
        ASSERT_EQ(client.setOption("resolution", "75"), ScanStatus::good);
        ASSERT_EQ(client.setOption("mode", "Color"), ScanStatus::good);
        for (int batch = 0; batch < 2; ++batch) {
            ASSERT_EQ(client.start(), ScanStatus::good);
            PageFormat format;
            EXPECT_EQ(client.nextPage(format), ScanStatus::good);
            EXPECT_EQ(client.nextPage(format), ScanStatus::good);
            EXPECT_EQ(client.nextPage(format), ScanStatus::noMorePages);
            client.stop();
            EXPECT_EQ(client.workerProcess(), 0);
        }
        EXPECT_EQ(client.options().at(0).value, "Color");
        EXPECT_EQ(client.options().at(1).value, "75");
    }
}

TEST(WorkerClient, KeepsTheCurrentPageOfAKilledWorker) {
    WorkerClient client(scriptedWorker("pages=3"));
    ASSERT_EQ(client.open(), ScanStatus::good);
    ASSERT_EQ(client.start(), ScanStatus::good);
    PageFormat format;
    ASSERT_EQ(client.nextPage(format), ScanStatus::good);
    ::kill(client.workerProcess(), SIGKILL);
    for (int row = 0; row < 10; ++row)
        EXPECT_THAT(rowOf(client, format, row), Each(16 + row));
}

TEST(WorkerClient, ASlowPageIsNoHungOne) {
    // The page takes two seconds, each of its rows less than the patience.
    const ScopedVariable patience("PAPERLINE_WORKER_TIMEOUT", "1");
    WorkerClient client(scriptedWorker("pages=1 rows=20 slow=100"));
    ASSERT_EQ(client.open(), ScanStatus::good);
    ASSERT_EQ(client.start(), ScanStatus::good);
    PageFormat format;
    EXPECT_EQ(client.nextPage(format), ScanStatus::good);
}

TEST(WorkerClient, StopsInTheMiddleOfAPage) {
    WorkerClient client(scriptedWorker("pages=3 rows=100000 slow=10"));
    ASSERT_EQ(client.open(), ScanStatus::good);
    ASSERT_EQ(client.start(), ScanStatus::good);
    client.stop();
    EXPECT_GT(client.workerProcess(), 0) << "the worker stopped by itself, it was not killed";
    EXPECT_EQ(client.setOption("mode", "Gray"), ScanStatus::good);
}

TEST(WorkerClient, CancelEndsAWaitInAnotherThread) {
    WorkerClient client(scriptedWorker("pages=3 rows=100000 slow=10"));
    ASSERT_EQ(client.open(), ScanStatus::good);
    ASSERT_EQ(client.start(), ScanStatus::good);
    std::thread canceller([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        client.cancel();
    });
    PageFormat format;
    EXPECT_EQ(client.nextPage(format), ScanStatus::cancelled);
    canceller.join();
    EXPECT_GT(client.workerProcess(), 0);
}

TEST(WorkerClient, LeavesNoProcessAndNoDescriptorBehind) {
    const std::set<int> before = openDescriptors();
    {
        WorkerClient client(scriptedWorker("pages=3"));
        ASSERT_EQ(client.open(), ScanStatus::good);
        const pid_t group = client.workerProcess();
        ASSERT_EQ(client.start(), ScanStatus::good);
        PageFormat format;
        while (client.nextPage(format) == ScanStatus::good) {
        }
        // The socket and a descriptor for each page buffer, of which a slow worker may need one
        // only.
        EXPECT_LE(openDescriptors().size(), before.size() + 3);
        EXPECT_GE(openDescriptors().size(), before.size() + 2);
        client.stop();
        client.close();
        EXPECT_EQ(openDescriptors(), before);
        EXPECT_TRUE(groupGoes(group));
    }
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child was not collected";
    WorkerClient hung(scriptedWorker("hang=-1"));
    const ScopedVariable patience("PAPERLINE_WORKER_TIMEOUT", "0.5");
    ASSERT_EQ(hung.open(), ScanStatus::good);
    const pid_t group = hung.workerProcess();
    hung.close();
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_TRUE(groupGoes(group));
}

TEST(WorkerClient, WorkerEndsWithItsParent) {
    // A child plays the application: it opens two workers, one of them stuck in its device, tells
    // their ids and ends without a word to them.
    int tell[2];
    ASSERT_EQ(pipe(tell), 0);
    const pid_t application = fork();
    ASSERT_GE(application, 0);
    if (application == 0) {
        WorkerClient idle(scriptedWorker("pages=3"));
        WorkerClient stuck(scriptedWorker("hang=1"));
        const bool ready = idle.open() == ScanStatus::good && stuck.open() == ScanStatus::good &&
                           stuck.start() == ScanStatus::good;
        const pid_t groups[2] = {idle.workerProcess(), stuck.workerProcess()};
        _exit(ready && write(tell[1], groups, sizeof groups) == sizeof groups ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(application, &status, 0), application);
    ASSERT_EQ(status, 0);
    pid_t groups[2] = {0, 0};
    ASSERT_EQ(read(tell[0], groups, sizeof groups), static_cast<ssize_t>(sizeof groups));
    EXPECT_TRUE(groupGoes(groups[0]));
    EXPECT_TRUE(groupGoes(groups[1]));
    ::close(tell[0]);
    ::close(tell[1]);
}

TEST(WorkerClient, StandardOutputOfTheWorkerIsStandardError) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    {
        WorkerClient client(scriptedWorker("chatter"));
        EXPECT_EQ(client.open(), ScanStatus::good);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "chatter on standard output\n");
}

} // namespace
} // namespace paperline::sources
