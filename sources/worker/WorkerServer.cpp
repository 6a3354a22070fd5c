#include "sources/worker/WorkerServer.h"

#include "sources/worker/OptionSettings.h"
#include "sources/worker/PageBuffer.h"
#include "sources/worker/Protocol.h"

#include <array>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>

#include <sys/mman.h>

namespace paperline::sources {

namespace {

struct Request {
    MessageType type{};
    std::string name, value; // setOption's
};

// Two threads: the calling one reads the socket, so that a stop or the data source's end is seen at
// once; the other makes every call of the device and sends every message, so that messages keep
// their order.
class Server {
public:
    Server(ScanDevice& device, int socket, const std::string& product)
        : device_(device), socket_(socket), product_(product) {}

    void run(const std::function<void()>& closing);

private:
    struct Buffer {
        std::unique_ptr<PageBuffer> page;
        bool used = false; // by the device or by the data source
        bool sent = false; // the data source has its descriptor
    };

    // The listening thread.
    [[nodiscard]] bool takeMessage(const ReceivedMessage& message);
    [[nodiscard]] bool freeBuffer(uint32_t index);
    void queueRequest(Request request);
    void askBatchToEnd();

    // The device's thread.
    void serveRequests();
    void serve(const Request& request);
    void openDevice();
    void sendOptions();
    void runBatch();
    ScanStatus readPages();
    bool waitForFreeBuffer(uint32_t& index);
    void sendPage(uint32_t index);
    void send(const MessageWriter& message, int descriptor = -1);
    void answer(MessageType request, ScanStatus status, const std::string& text);
    [[nodiscard]] bool sendHello();

    ScanDevice& device_;
    int socket_;
    std::string product_;
    Descriptor pulseMemory_;
    WorkerPulse* pulse_ = nullptr;

    std::mutex mutex_; // guards everything below
    std::condition_variable changed_;
    std::deque<Request> requests_;
    std::array<Buffer, pageBufferCount> buffers_;
    bool quitting_ = false;
    bool batchRuns_ = false;
    bool batchIsToEnd_ = false;
};

void Server::run(const std::function<void()>& closing) {
    if (!sendHello())
        return;
    std::thread deviceThread([this] { serveRequests(); });
    ReceivedMessage message;
    for (;;) {
        const SocketResult result = receiveMessage(socket_, std::chrono::milliseconds(-1), message);
        if (result == SocketResult::timeout)
            continue;
        if (result != SocketResult::done || !takeMessage(message))
            break;
    }
    if (closing)
        closing();
    askBatchToEnd();
    {
        const std::lock_guard lock(mutex_);
        quitting_ = true;
    }
    changed_.notify_all();
    deviceThread.join();
    munmap(pulse_, sizeof *pulse_);
}

// False ends the service: a close, or an invalid message.
bool Server::takeMessage(const ReceivedMessage& message) {
    MessageReader reader(message.body);
    switch (message.type) {
    case MessageType::release: {
        const auto index = reader.number<uint32_t>();
        return reader.whole() && freeBuffer(index);
    }
    case MessageType::setOption: {
        Request request{message.type, reader.text(), {}};
        request.value = reader.text();
        if (!reader.whole())
            return false;
        queueRequest(std::move(request));
        return true;
    }
    case MessageType::stop:
        askBatchToEnd();
        [[fallthrough]];
    case MessageType::open:
    case MessageType::options:
    case MessageType::start:
        queueRequest({message.type, {}, {}});
        return reader.whole();
    default:
        return false;
    }
}

bool Server::freeBuffer(uint32_t index) {
    {
        const std::lock_guard lock(mutex_);
        if (index >= buffers_.size() || !buffers_[index].used || !buffers_[index].sent)
            return false;
        buffers_[index].used = false;
    }
    changed_.notify_all();
    return true;
}

void Server::queueRequest(Request request) {
    {
        const std::lock_guard lock(mutex_);
        requests_.push_back(std::move(request));
    }
    changed_.notify_all();
}

void Server::askBatchToEnd() {
    {
        const std::lock_guard lock(mutex_);
        if (!batchRuns_)
            return;
        batchIsToEnd_ = true;
    }
    changed_.notify_all();
    device_.cancel();
}

void Server::serveRequests() {
    for (;;) {
        Request request;
        {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [this] { return quitting_ || !requests_.empty(); });
            if (quitting_)
                return;
            request = std::move(requests_.front());
            requests_.pop_front();
            if (request.type == MessageType::start) {
                batchRuns_ = true;
                batchIsToEnd_ = false;
            }
        }
        serve(request);
    }
}

void Server::serve(const Request& request) {
    switch (request.type) {
    case MessageType::open:
        openDevice();
        break;
    case MessageType::options:
        sendOptions();
        break;
    case MessageType::setOption: {
        const ScanStatus status = device_.setOption(request.name, request.value);
        answer(request.type, status, device_.errorText());
        break;
    }
    case MessageType::start:
        runBatch();
        break;
    default: // stop: by now the batch is over
        answer(request.type, ScanStatus::good, {});
        break;
    }
}

void Server::openDevice() {
    const ScanStatus opened = device_.open();
    if (opened != ScanStatus::good) {
        answer(MessageType::open, opened, device_.errorText());
        return;
    }
    std::string text;
    const ScanStatus status = applyOptionSettings(device_, product_, text);
    answer(MessageType::open, status, text);
}

void Server::sendOptions() {
    for (const OptionDescriptor& option : device_.options()) {
        MessageWriter message(MessageType::option);
        putOption(message, option);
        send(message);
    }
    answer(MessageType::options, ScanStatus::good, {});
}

void Server::runBatch() {
    {
        // The data source has dropped every page of the last batch.
        const std::lock_guard lock(mutex_);
        for (Buffer& buffer : buffers_)
            buffer.used = false;
    }
    const ScanStatus started = device_.start();
    answer(MessageType::start, started, device_.errorText());
    const ScanStatus end = started == ScanStatus::good ? readPages() : started;
    {
        const std::lock_guard lock(mutex_);
        batchRuns_ = false;
    }
    if (started != ScanStatus::good)
        return;
    MessageWriter message(MessageType::batchEnd);
    message.putNumber(static_cast<uint32_t>(end));
    message.putText(device_.errorText());
    // Sent before the device is stopped, because some drivers hang there.
    send(message);
    device_.stop();
}

// Until the device or the data source ends the batch; never `good`.
ScanStatus Server::readPages() {
    for (;;) {
        uint32_t index = 0;
        if (!waitForFreeBuffer(index))
            return ScanStatus::cancelled;
        PageBuffer& page = *buffers_[index].page;
        page.clear();
        const ScanStatus status = device_.readPage(page);
        if (status != ScanStatus::good)
            return status;
        if (!page.isWhole())
            return ScanStatus::ioError;
        sendPage(index);
    }
}

// False when the batch is to end.
bool Server::waitForFreeBuffer(uint32_t& index) {
    std::unique_lock lock(mutex_);
    for (;;) {
        if (batchIsToEnd_ || quitting_)
            return false;
        for (index = 0; index < buffers_.size(); ++index) {
            Buffer& buffer = buffers_[index];
            if (buffer.used)
                continue;
            buffer.used = true;
            if (!buffer.page)
                buffer.page = std::make_unique<PageBuffer>(
                    [this] { __atomic_fetch_add(&pulse_->progress, 1, __ATOMIC_RELAXED); });
            return true;
        }
        changed_.wait(lock);
    }
}

void Server::sendPage(uint32_t index) {
    int descriptor = -1;
    {
        const std::lock_guard lock(mutex_);
        Buffer& buffer = buffers_[index];
        if (!buffer.sent)
            descriptor = buffer.page->descriptor();
        buffer.sent = true;
    }
    MessageWriter message(MessageType::page);
    message.putNumber(index);
    putPageFormat(message, buffers_[index].page->format());
    send(message, descriptor);
}

void Server::send(const MessageWriter& message, int descriptor) {
    // The socket holds every message that the data source may have left unread. When it is gone the
    // other thread sees that, too.
    (void)sendMessage(socket_, message.bytes(), descriptor, std::chrono::minutes(10));
}

void Server::answer(MessageType request, ScanStatus status, const std::string& text) {
    MessageWriter message(MessageType::answer);
    message.putNumber(request);
    message.putNumber(static_cast<uint32_t>(status));
    message.putText(status == ScanStatus::good ? std::string() : text);
    send(message);
}

bool Server::sendHello() {
    pulseMemory_ = makeSharedMemory("paperline-pulse", sizeof *pulse_);
    if (!pulseMemory_.isOpen())
        return false;
    void* place =
        mmap(nullptr, sizeof *pulse_, PROT_READ | PROT_WRITE, MAP_SHARED, pulseMemory_.number(), 0);
    if (place == MAP_FAILED)
        return false;
    pulse_ = static_cast<WorkerPulse*>(place);
    MessageWriter message(MessageType::hello);
    message.putNumber(workerProtocolVersion);
    send(message, pulseMemory_.number());
    return true;
}

} // namespace

void serveDevice(ScanDevice& device,
                 int socket,
                 const std::string& product,
                 const std::function<void()>& closing) {
    Server(device, socket, product).run(closing);
}

} // namespace paperline::sources
