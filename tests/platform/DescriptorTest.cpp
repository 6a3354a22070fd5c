#include "platform/files/Descriptor.h"

#include "tests/support/FileTesting.h"

#include <gtest/gtest.h>

#include <array>
#include <pthread.h>
#include <thread>

namespace paperline {
namespace {

using namespace testing_support;

TEST(RegularFiles, AreOpenedWithTheirSize) {
    const TestFolder folder;
    ASSERT_TRUE(put(folder / "file", "0123456789"));
    const std::optional<RegularFile> file = openRegularFile(folder / "file");
    ASSERT_TRUE(file);
    EXPECT_EQ(file->status.st_size, 10);
    EXPECT_EQ(::fcntl(file->descriptor.number(), F_GETFD), FD_CLOEXEC);
}

TEST(RegularFiles, AreNoFoldersAndNoPipes) {
    const TestFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(openRegularFile(folder / "pipe")); // returns although no process writes to it
    EXPECT_FALSE(openRegularFile(folder.path()));
    EXPECT_FALSE(openRegularFile(folder / "gone"));
}

TEST(RegularFiles, AreFoundThroughLinksUnlessRefused) {
    const TestFolder folder;
    ASSERT_TRUE(put(folder / "file", "x"));
    ASSERT_EQ(::symlink((folder / "file").c_str(), (folder / "link").c_str()), 0);
    EXPECT_TRUE(openRegularFile(folder / "link"));
    EXPECT_FALSE(openRegularFile(folder / "link", O_RDONLY | O_NOFOLLOW));
}

TEST(Positions, AreWrittenAndReadWithoutMovingTheFilesOwn) {
    const TestFolder folder;
    ASSERT_TRUE(put(folder / "file", "0123456789"));
    const Descriptor file = openFile(folder / "file", O_RDWR);
    EXPECT_TRUE(writeAllAt(file.number(), 3, bytesOf("abc")));
    std::array<uint8_t, 4> bytes{};
    EXPECT_EQ(readAt(file.number(), 4, bytes), 4U);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "bc67");
    EXPECT_EQ(readAt(file.number(), 8, bytes), 2U);
    EXPECT_EQ(readAt(file.number(), UINT64_MAX, bytes), 0U);
    EXPECT_EQ(readUpTo(file.number(), bytes), 4U);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "012a");
}

// Signals without SA_RESTART interrupt a write that waits for room in a pipe.
TEST(Writing, GoesOnAfterSignals) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    const Descriptor reading(ends[0]);
    Descriptor writing(ends[1]);
    struct sigaction interrupting {};
    interrupting.sa_handler = [](int) {};
    struct sigaction before {};
    ASSERT_EQ(::sigaction(SIGUSR1, &interrupting, &before), 0);

    const std::string text(1 << 20, 'x');
    size_t received = 0;
    std::thread reader([&, writer = ::pthread_self()] {
        std::vector<uint8_t> bytes(16384);
        while (received < text.size()) {
            // The first signal ends a write that has written a part, the second one that has not.
            for (int signal = 0; signal < 2; ++signal) {
                ::pthread_kill(writer, SIGUSR1);
                ::usleep(1000);
            }
            const ssize_t count = ::read(reading.number(), bytes.data(), bytes.size());
            if (count <= 0)
                break;
            received += static_cast<size_t>(count);
        }
    });
    EXPECT_TRUE(writeAll(writing.number(), text));
    writing.close();
    reader.join();
    EXPECT_EQ(received, text.size());
    ::sigaction(SIGUSR1, &before, nullptr);
}

TEST(Writing, SaysWhenItCannot) {
    const Descriptor full = openFile("/dev/full", O_WRONLY);
    ASSERT_TRUE(full.isOpen());
    EXPECT_FALSE(writeAll(full.number(), "x"));
    EXPECT_EQ(errno, ENOSPC);
    std::array<uint8_t, 1> byte{};
    EXPECT_FALSE(readUpTo(full.number(), byte)); // opened for writing
}

} // namespace
} // namespace paperline
