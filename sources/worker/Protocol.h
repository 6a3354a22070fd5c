// What a data source and its worker process say to each other. One SOCK_SEQPACKET socket carries
// small messages; page memory travels once per buffer as a sealed memfd (SCM_RIGHTS), pixels never
// go through the socket. Whatever arrives is checked as if a stranger had sent it.
//
// The data source asks, one request at a time, and waits for its answer:
//   open, close, options, setOption, start, stop        -> answer (options: an option message each,
//                                                          then the answer)
//   release                                              no answer: a page buffer is free again
// The worker sends hello on its own when it is up, and between start and the end of the batch
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
// The page being fetched and the one read ahead.
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

// Shared between both processes from hello on. The worker raises `progress` whenever the device
// moves on; the data source only compares it with what it was.
struct WorkerPulse {
    uint64_t progress;
};

// Builds one message: values in the machine's own order, texts with their length in front.
class MessageWriter {
public:
    explicit MessageWriter(MessageType type) { putNumber(type); }

    template <typename Number> void putNumber(Number value) { append(&value, sizeof value); }
    // Texts are cut where they would not fit any more.
    void putText(std::string_view text);
    std::span<const std::byte> bytes() const { return bytes_; }
    size_t room() const { return maximumMessageBytes - bytes_.size(); }

private:
    void append(const void* data, size_t count);
    std::vector<std::byte> bytes_;
};

// Takes a message apart. After the first value that is not there, everything reads as zero or
// empty and whole() is false.
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
    // Every value was there and nothing is left over.
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

// A status that a worker may report; anything else becomes ioError.
ScanStatus reportedStatus(uint32_t number);

enum class SocketResult { done, timeout, closed, damaged };

struct ReceivedMessage {
    MessageType type{};
    std::vector<std::byte> body; // without the type
    Descriptor descriptor;       // the one that came along, if any
};

// Sends one message, with a descriptor unless -1. Waits at most so long for room.
SocketResult sendMessage(int socket,
                         std::span<const std::byte> bytes,
                         int descriptor = -1,
                         std::chrono::milliseconds patience = std::chrono::seconds(5));
// Receives one message; timeout when none came in time (negative: waits for ever). damaged: cut
// off, too short, or with descriptors that do not belong there.
SocketResult
receiveMessage(int socket, std::chrono::milliseconds patience, ReceivedMessage& message);

} // namespace paperline::sources
