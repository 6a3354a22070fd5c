// The messages between a data source and its worker process. A SOCK_SEQPACKET socket carries them;
// page memory is passed once per buffer as a sealed memfd (SCM_RIGHTS), pixels never go through the
// socket. Both sides treat what they receive as untrusted.
//
// The data source asks, one request at a time, and waits for its answer:
//   open, close, options, setOption, start, stop        -> answer (options: an option message each,
//                                                          then the answer)
//   release                                              no answer: a page buffer is free again
// The worker sends hello when it has started, and between start and the end of the batch
//   page (with the buffer's memfd the first time it is used), batchEnd
#pragma once

#include "platform/files/Descriptor.h"
#include "sources/framework/ScanTypes.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace paperline::sources {

inline constexpr uint32_t workerProtocolVersion = 1;
inline constexpr int workerSocketDescriptor = 3; // in the worker process
inline constexpr size_t maximumMessageBytes = 64 * 1024;
// The current page and the one read ahead.
inline constexpr uint32_t pageBufferCount = 2;

enum class MessageType : uint32_t {
    // requests
    open = 1,
    close,
    options,
    setOption,
    start,
    stop,
    release,
    // from the worker
    hello = 100,
    answer,
    option,
    page,
    batchEnd,
    // from a process that lists devices: one message each, then an answer
    device,
};

// Shared by both processes from hello on. The worker increments `progress` with each sign of life
// of the device; the data source only looks for changes.
struct WorkerPulse {
    uint64_t progress;
};

// Builds one message: numbers in the machine's byte order, texts after their length.
class MessageWriter {
public:
    explicit MessageWriter(MessageType type) { putNumber(type); }

    template <typename Number> void putNumber(Number value) { append(&value, sizeof value); }
    // Cuts a text that does not fit.
    void putText(std::string_view text);
    std::span<const std::byte> bytes() const { return bytes_; }
    size_t room() const { return maximumMessageBytes - bytes_.size(); }

private:
    void append(const void* data, size_t count);
    std::vector<std::byte> bytes_;
};

// Reads one message. Past its end every value reads as zero or empty, and whole() is false.
class MessageReader {
public:
    explicit MessageReader(std::span<const std::byte> bytes) : rest_(bytes) {}

    template <typename Number> Number number() {
        Number value{};
        take(&value, sizeof value);
        return value;
    }
    bool flag() { return number<uint8_t>() != 0; }
    std::string text();
    bool good() const { return !failed_; }
    // Every value was there, and nothing is left.
    bool whole() const { return !failed_ && rest_.empty(); }

private:
    void take(void* data, size_t count);
    std::span<const std::byte> rest_;
    bool failed_ = false;
};

void putOption(MessageWriter& message, const OptionDescriptor& option);
OptionDescriptor readOption(MessageReader& message);
void putPageFormat(MessageWriter& message, const PageFormat& format);
PageFormat readPageFormat(MessageReader& message);

// ioError for numbers that a worker must not report.
ScanStatus reportedStatus(uint32_t number);

enum class SocketResult { done, timeout, closed, damaged };

struct ReceivedMessage {
    MessageType type{};
    std::vector<std::byte> body; // without the type
    Descriptor descriptor;       // if one was attached
};

// Sends one message, with a descriptor unless it is -1.
SocketResult sendMessage(int socket,
                         std::span<const std::byte> bytes,
                         int descriptor = -1,
                         std::chrono::milliseconds timeout = std::chrono::seconds(5));
// Receives one message. A negative time has no limit. damaged: truncated, too short, or with more
// than one descriptor.
SocketResult
receiveMessage(int socket, std::chrono::milliseconds timeout, ReceivedMessage& message);

} // namespace paperline::sources
