#include "sources/worker/WorkerClient.h"

#include <algorithm>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace paperline::sources {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds pollInterval{100};
constexpr milliseconds stopTime{10000};
constexpr milliseconds closeTime{10000};

bool isSealedMemory(int descriptor) {
    const int seals = fcntl(descriptor, F_GET_SEALS);
    return seals >= 0 && (seals & F_SEAL_SHRINK) != 0;
}

int64_t sizeOf(int descriptor) {
    struct stat information {};
    return fstat(descriptor, &information) == 0 ? information.st_size : 0;
}

} // namespace

ScanStatus WorkerClient::open() {
    close();
    return openWorker();
}

ScanStatus WorkerClient::openWorker() {
    errorText_.clear();
    timeout_ = workerTimeout();
    std::string error;
    const std::vector<std::string> arguments{
        "--serve", "--device", launch_.device, "--product", launch_.product};
    if (!process_.start(launch_.program, arguments, error))
        return fail(ScanStatus::workerDied, "The scanner's worker did not start: " + error);
    ScanStatus status = greet();
    if (status == ScanStatus::good)
        status = request(MessageWriter(MessageType::open), Limit::silence);
    if (status != ScanStatus::good)
        killWorker();
    return status;
}

ScanStatus WorkerClient::greet() {
    ReceivedMessage message;
    const ScanStatus status = receive(message, Limit::silence);
    if (status != ScanStatus::good)
        return status;
    MessageReader reader(message.body);
    const auto version = reader.number<uint32_t>();
    if (message.type != MessageType::hello || !reader.whole() || version != workerProtocolVersion ||
        !isSealedMemory(message.descriptor.number()) ||
        sizeOf(message.descriptor.number()) < static_cast<int64_t>(sizeof(WorkerPulse)))
        return failInvalid();
    void* place =
        mmap(nullptr, sizeof(WorkerPulse), PROT_READ, MAP_SHARED, message.descriptor.number(), 0);
    if (place == MAP_FAILED)
        return fail(ScanStatus::noMemory, "There is no memory for the scanner's worker.");
    pulse_ = static_cast<const WorkerPulse*>(place);
    return ScanStatus::good;
}

void WorkerClient::close() {
    if (process_.isStarted()) {
        (void)sendMessage(
            process_.socket(), MessageWriter(MessageType::close).bytes(), -1, pollInterval);
        process_.waitForEnd(std::min(timeout_, closeTime));
    }
    killWorker();
    settings_.clear();
    lostInStop_ = false;
}

void WorkerClient::replaceLostWorker() {
    if (!lostInStop_)
        return;
    lostInStop_ = false;
    if (openWorker() != ScanStatus::good)
        return;
    for (const auto& [name, value] : settings_)
        if (requestOption(name, value) != ScanStatus::good)
            return;
}

// Kills the worker if it runs, and releases its memory.
void WorkerClient::killWorker() {
    process_.kill();
    forgetBatch();
    for (Buffer& buffer : buffers_) {
        if (buffer.start != nullptr)
            munmap(buffer.start, buffer.mappedBytes);
        buffer = Buffer{};
    }
    if (pulse_ != nullptr)
        munmap(const_cast<WorkerPulse*>(pulse_), sizeof *pulse_);
    pulse_ = nullptr;
    options_.clear();
}

std::vector<OptionDescriptor> WorkerClient::options() {
    if (batchRuns_)
        return options_;
    replaceLostWorker();
    options_.clear();
    if (request(MessageWriter(MessageType::options), Limit::silence) != ScanStatus::good)
        return {};
    return options_;
}

ScanStatus WorkerClient::setOption(const std::string& name, const std::string& value) {
    if (batchRuns_)
        return ScanStatus::deviceBusy;
    if (name.size() + value.size() > maximumMessageBytes / 2)
        return ScanStatus::invalid;
    replaceLostWorker();
    const ScanStatus status = requestOption(name, value);
    if (status == ScanStatus::good)
        settings_.emplace_back(name, value);
    return status;
}

ScanStatus WorkerClient::requestOption(const std::string& name, const std::string& value) {
    MessageWriter message(MessageType::setOption);
    message.putText(name);
    message.putText(value);
    return request(message, Limit::silence);
}

ScanStatus WorkerClient::start() {
    if (batchRuns_)
        return ScanStatus::deviceBusy;
    replaceLostWorker();
    cancelAsked_ = false;
    const ScanStatus status = request(MessageWriter(MessageType::start), Limit::silence);
    batchRuns_ = status == ScanStatus::good;
    return status;
}

ScanStatus WorkerClient::nextPage(PageFormat& format) {
    releaseCurrent();
    if (!process_.isStarted() || !batchRuns_)
        return ScanStatus::noMorePages;
    while (ready_.empty()) {
        if (batchHasEnded_) {
            errorText_ = batchEndText_;
            return batchEnd_;
        }
        ReceivedMessage message;
        ScanStatus status = receive(message, Limit::silence);
        if (status == ScanStatus::cancelled)
            stop();
        if (status == ScanStatus::good)
            status = takeEvent(message);
        if (status != ScanStatus::good)
            return status;
    }
    current_ = ready_.front();
    ready_.pop_front();
    hasCurrent_ = true;
    format = current_.format;
    return ScanStatus::good;
}

std::span<const uint8_t> WorkerClient::pixels() const {
    if (!hasCurrent_)
        return {};
    return {static_cast<const uint8_t*>(buffers_[current_.buffer].start),
            static_cast<size_t>(pageByteCount(current_.format))};
}

void WorkerClient::stop() {
    hasCurrent_ = false;
    if (process_.isStarted() && batchRuns_ &&
        request(MessageWriter(MessageType::stop), Limit::duration) != ScanStatus::good) {
        killWorker();
        lostInStop_ = true;
    }
    forgetBatch();
}

void WorkerClient::forgetBatch() {
    ready_.clear();
    hasCurrent_ = false;
    for (Buffer& buffer : buffers_)
        buffer.held = false;
    batchRuns_ = false;
    batchHasEnded_ = false;
    batchEnd_ = ScanStatus::good;
    batchEndText_.clear();
    cancelAsked_ = false;
}

void WorkerClient::releaseCurrent() {
    if (!hasCurrent_)
        return;
    hasCurrent_ = false;
    buffers_[current_.buffer].held = false;
    MessageWriter message(MessageType::release);
    message.putNumber(current_.buffer);
    // A failure shows in the next wait.
    (void)sendMessage(process_.socket(), message.bytes(), -1, pollInterval);
}

ScanStatus WorkerClient::request(const MessageWriter& message, Limit kind) {
    errorText_.clear();
    if (!process_.isStarted())
        return fail(ScanStatus::workerDied, "The scanner is not open.");
    MessageType type{};
    std::copy_n(message.bytes().data(), sizeof type, reinterpret_cast<std::byte*>(&type));
    if (sendMessage(process_.socket(), message.bytes(), -1, timeout_) == SocketResult::timeout)
        return fail(ScanStatus::workerHung, "The scanner did not answer in time.");
    return awaitAnswer(type, kind);
}

ScanStatus WorkerClient::awaitAnswer(MessageType type, Limit kind) {
    for (;;) {
        ReceivedMessage message;
        ScanStatus status = receive(message, kind);
        if (status != ScanStatus::good)
            return status;
        if (message.type != MessageType::answer) {
            status = takeEvent(message);
            if (status != ScanStatus::good)
                return status;
            continue;
        }
        MessageReader reader(message.body);
        const auto answered = reader.number<MessageType>();
        status = reportedStatus(reader.number<uint32_t>());
        errorText_ = reader.text();
        return reader.whole() && answered == type ? status : failInvalid();
    }
}

uint64_t WorkerClient::progress() const {
    return pulse_ == nullptr ? 0 : __atomic_load_n(&pulse_->progress, __ATOMIC_RELAXED);
}

// Waits for a message. Silence is counted in polls, not by the clock: time during which the
// application itself was stopped does not count.
ScanStatus WorkerClient::receive(ReceivedMessage& message, Limit kind) {
    const milliseconds limit = kind == Limit::duration ? std::min(timeout_, stopTime) : timeout_;
    uint64_t before = progress();
    for (milliseconds silence{0}; silence < limit;) {
        const bool ended = process_.hasEnded();
        const milliseconds wait = ended ? milliseconds(0) : std::min(pollInterval, limit - silence);
        switch (receiveMessage(process_.socket(), wait, message)) {
        case SocketResult::done:
            return ScanStatus::good;
        case SocketResult::damaged:
            return failInvalid();
        case SocketResult::closed:
            return fail(ScanStatus::workerDied, {});
        case SocketResult::timeout:
            break;
        }
        if (ended)
            return fail(ScanStatus::workerDied, {});
        if (kind == Limit::silence && batchRuns_ && cancelAsked_)
            return ScanStatus::cancelled;
        silence += wait;
        if (kind == Limit::silence && progress() != before) {
            before = progress();
            silence = milliseconds(0);
        }
    }
    return fail(ScanStatus::workerHung, "The scanner did not answer in time.");
}

// A message that is no answer: an option, a page, or the end of the batch.
ScanStatus WorkerClient::takeEvent(ReceivedMessage& message) {
    MessageReader reader(message.body);
    switch (message.type) {
    case MessageType::option:
        options_.push_back(readOption(reader));
        return reader.whole() && options_.size() <= 10000 ? ScanStatus::good : failInvalid();
    case MessageType::page:
        return takePage(message);
    case MessageType::batchEnd:
        batchEnd_ = reportedStatus(reader.number<uint32_t>());
        batchEndText_ = reader.text();
        if (!reader.whole() || !batchRuns_ || batchHasEnded_ || batchEnd_ == ScanStatus::good)
            return failInvalid();
        batchHasEnded_ = true;
        return ScanStatus::good;
    default:
        return failInvalid();
    }
}

ScanStatus WorkerClient::takePage(ReceivedMessage& message) {
    MessageReader reader(message.body);
    ReadyPage page;
    page.buffer = reader.number<uint32_t>();
    page.format = readPageFormat(reader);
    const int64_t bytes = pageByteCount(page.format);
    if (!reader.whole() || page.buffer >= buffers_.size() || bytes == 0 || !batchRuns_ ||
        batchHasEnded_)
        return failInvalid();
    Buffer& buffer = buffers_[page.buffer];
    if (message.descriptor.isOpen()) {
        if (buffer.memory.isOpen() || !isSealedMemory(message.descriptor.number()))
            return failInvalid();
        buffer.memory = std::move(message.descriptor);
    }
    if (buffer.held || !buffer.memory.isOpen() || sizeOf(buffer.memory.number()) < bytes)
        return failInvalid();
    if (!mapPage(buffer, bytes))
        return fail(ScanStatus::noMemory, "There is no memory for the page.");
    buffer.held = true;
    ready_.push_back(page);
    return ScanStatus::good;
}

bool WorkerClient::mapPage(Buffer& buffer, int64_t bytes) {
    if (static_cast<size_t>(bytes) <= buffer.mappedBytes)
        return true;
    if (buffer.start != nullptr)
        munmap(buffer.start, buffer.mappedBytes);
    buffer.start = nullptr;
    buffer.mappedBytes = 0;
    void* place = mmap(nullptr,
                       static_cast<size_t>(bytes),
                       PROT_READ,
                       MAP_SHARED | MAP_POPULATE,
                       buffer.memory.number(),
                       0);
    if (place == MAP_FAILED)
        return false;
    buffer.start = place;
    buffer.mappedBytes = static_cast<size_t>(bytes);
    return true;
}

// Without a text, the error says how the worker ended.
ScanStatus WorkerClient::fail(ScanStatus status, const std::string& text) {
    if (status == ScanStatus::workerDied && text.empty())
        process_.waitForEnd(pollInterval);
    killWorker();
    errorText_ = text;
    if (text.empty()) {
        errorText_ = "The scanner's worker ended unexpectedly";
        errorText_ += process_.ending().empty() ? "." : " (" + process_.ending() + ").";
    }
    return status;
}

ScanStatus WorkerClient::failInvalid() {
    return fail(ScanStatus::workerDied, "The scanner's worker sent something unintelligible.");
}

} // namespace paperline::sources
