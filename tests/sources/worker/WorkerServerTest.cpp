// The worker's half against data sources that break the rules, and its program around it.
#include "sources/worker/WorkerServer.h"
#include "sources/worker/WorkerProgram.h"

#include "sources/worker/Protocol.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include <sys/socket.h>
#include <unistd.h>

namespace paperline::sources {
namespace {

using std::chrono::milliseconds;
constexpr milliseconds patience{10000};

// Endless pages of one pixel.
class OnePixel final : public ScanDevice {
public:
    ScanStatus open() override { return ScanStatus::good; }
    std::vector<OptionDescriptor> options() override { return {}; }
    ScanStatus setOption(const std::string&, const std::string&) override {
        return ScanStatus::invalid;
    }
    ScanStatus start() override { return ScanStatus::good; }
    ScanStatus readPage(PageSink& sink) override {
        ++pagesRead;
        PageFormat format;
        format.widthPixels = format.heightPixels = 1;
        if (!sink.begin(format))
            return ScanStatus::noMemory;
        sink.rows(0, 1)[0] = 9;
        sink.finish(1);
        return ScanStatus::good;
    }
    void cancel() override { cancelled = true; }
    void stop() override { stopped = true; }
    std::string errorText() const override { return {}; }

    std::atomic<int> pagesRead{0};
    std::atomic<bool> cancelled{false}, stopped{false};
};

class WorkerServerTest : public testing::Test {
protected:
    void SetUp() override {
        int pair[2];
        ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, pair), 0);
        source = Descriptor(pair[0]);
        worker = Descriptor(pair[1]);
        server = std::thread([this] {
            serveDevice(device, worker.number(), "");
            worker.close();
        });
        ASSERT_EQ(next(), MessageType::hello);
    }
    void TearDown() override {
        source.close();
        server.join();
    }
    void send(const MessageWriter& message) {
        ASSERT_EQ(sendMessage(source.number(), message.bytes()), SocketResult::done);
    }
    void release(uint32_t index) {
        MessageWriter message(MessageType::release);
        message.putNumber(index);
        send(message);
    }
    MessageType next() {
        result = receiveMessage(source.number(), patience, received);
        return result == SocketResult::done ? received.type : MessageType{};
    }
    // The server has closed its end; what it sent before is read away.
    bool serverIsGone() {
        while (next() != MessageType{}) {
        }
        return result == SocketResult::closed;
    }

    OnePixel device;
    Descriptor source, worker;
    std::thread server;
    ReceivedMessage received;
    SocketResult result{};
};

TEST_F(WorkerServerTest, ReadsNoFurtherAheadThanItsBuffers) {
    send(MessageWriter(MessageType::start));
    EXPECT_EQ(next(), MessageType::answer);
    EXPECT_EQ(next(), MessageType::page);
    EXPECT_TRUE(received.descriptor.isOpen());
    EXPECT_EQ(next(), MessageType::page);
    EXPECT_TRUE(received.descriptor.isOpen());
    EXPECT_EQ(receiveMessage(source.number(), milliseconds(100), received), SocketResult::timeout);
    EXPECT_EQ(device.pagesRead, 2);
    release(0);
    EXPECT_EQ(next(), MessageType::page);
    EXPECT_FALSE(received.descriptor.isOpen()) << "the buffer is known already";
    EXPECT_EQ(device.pagesRead, 3);
}

TEST_F(WorkerServerTest, StopEndsABatchThatWaitsForABuffer) {
    send(MessageWriter(MessageType::start));
    EXPECT_EQ(next(), MessageType::answer);
    EXPECT_EQ(next(), MessageType::page);
    EXPECT_EQ(next(), MessageType::page);
    send(MessageWriter(MessageType::stop));
    EXPECT_EQ(next(), MessageType::batchEnd);
    EXPECT_EQ(next(), MessageType::answer);
    EXPECT_TRUE(device.cancelled);
    EXPECT_TRUE(device.stopped);
}

TEST_F(WorkerServerTest, EndsWhenTheDataSourceIsGone) {
    send(MessageWriter(MessageType::start));
    EXPECT_EQ(next(), MessageType::answer);
    source.close();
    server.join();
    EXPECT_TRUE(device.stopped);
    server = std::thread([] {});
}

TEST_F(WorkerServerTest, ABufferThatWasNotLentCannotBeGivenBack) {
    release(1);
    EXPECT_TRUE(serverIsGone());
}

TEST_F(WorkerServerTest, ABufferNumberPastTheEndIsFoundOut) {
    release(UINT32_MAX);
    EXPECT_TRUE(serverIsGone());
}

TEST_F(WorkerServerTest, ACutOffRequestIsFoundOut) {
    MessageWriter message(MessageType::setOption);
    message.putNumber(uint32_t{1000});
    send(message);
    EXPECT_TRUE(serverIsGone());
}

TEST_F(WorkerServerTest, AnUnknownRequestIsFoundOut) {
    send(MessageWriter(static_cast<MessageType>(4711)));
    EXPECT_TRUE(serverIsGone());
}

TEST_F(WorkerServerTest, AnOverlongRequestIsFoundOut) {
    const std::vector<std::byte> bytes(maximumMessageBytes + 1);
    ASSERT_GT(::send(source.number(), bytes.data(), bytes.size(), 0), 0);
    EXPECT_TRUE(serverIsGone());
}

TEST(WorkerMessages, AMessageIsCutWhereItWouldBeTooLong) {
    MessageWriter message(MessageType::answer);
    message.putText(std::string(2 * maximumMessageBytes, 'a'));
    EXPECT_EQ(message.bytes().size(), maximumMessageBytes);
}

TEST(WorkerMessages, AnOptionKeepsTheChoicesThatHaveRoom) {
    OptionDescriptor option;
    option.name = "many";
    option.choices.assign(100000, "choice");
    MessageWriter message(MessageType::option);
    putOption(message, option);
    MessageReader reader(message.bytes().subspan(sizeof(MessageType)));
    const OptionDescriptor read = readOption(reader);
    EXPECT_TRUE(reader.whole());
    EXPECT_GT(read.choices.size(), 6000u);
    EXPECT_EQ(read.choices.back(), "choice");
}

TEST(WorkerMessages, OnlyStatusesOfADeviceAreBelieved) {
    EXPECT_EQ(reportedStatus(4), ScanStatus::paperJam);
    EXPECT_EQ(reportedStatus(static_cast<uint32_t>(ScanStatus::workerHung)), ScanStatus::ioError);
    EXPECT_EQ(reportedStatus(UINT32_MAX), ScanStatus::ioError);
}

TEST(WorkerArguments, NameTheModeTheDeviceAndTheProduct) {
    const char* serve[] = {"worker", "--serve", "--device", "test:0", "--product", "Noname A"};
    WorkerArguments arguments = parseWorkerArguments(6, serve);
    EXPECT_EQ(arguments.mode, WorkerArguments::Mode::serve);
    EXPECT_EQ(arguments.device, "test:0");
    EXPECT_EQ(arguments.product, "Noname A");
    const char* describe[] = {"worker", "--describe", "test:0"};
    arguments = parseWorkerArguments(3, describe);
    EXPECT_EQ(arguments.mode, WorkerArguments::Mode::describe);
    EXPECT_EQ(arguments.device, "test:0");
    const char* wrong[] = {"worker", "--serve", "--colour", "red"};
    EXPECT_EQ(parseWorkerArguments(4, wrong).mode, WorkerArguments::Mode::none);
    EXPECT_EQ(parseWorkerArguments(1, wrong).mode, WorkerArguments::Mode::none);
}

} // namespace
} // namespace paperline::sources
