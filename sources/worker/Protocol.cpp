#include "sources/worker/Protocol.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include <poll.h>
#include <sys/socket.h>

namespace paperline::sources {

namespace {

// False on timeout; a negative one has no limit.
bool waitFor(int socket, short events, std::chrono::milliseconds timeout) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + timeout;
    for (;;) {
        int milliseconds = -1;
        if (timeout.count() >= 0) {
            const auto left =
                std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
            milliseconds = static_cast<int>(std::clamp<int64_t>(left, 0, 1000 * 3600));
        }
        pollfd entry{socket, events, 0};
        const int ready = poll(&entry, 1, milliseconds);
        if (ready > 0)
            return true; // errors and hang-ups show in the next call
        if (ready == 0 || errno != EINTR)
            return false;
    }
}

// Closes all descriptors but the last; false when there was more than one.
bool takeDescriptor(msghdr& header, Descriptor& descriptor) {
    bool asExpected = true;
    for (cmsghdr* part = CMSG_FIRSTHDR(&header); part != nullptr;
         part = CMSG_NXTHDR(&header, part)) {
        if (part->cmsg_level != SOL_SOCKET || part->cmsg_type != SCM_RIGHTS)
            continue;
        const size_t count = (part->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (size_t i = 0; i < count; ++i) {
            int number = -1;
            std::memcpy(&number, CMSG_DATA(part) + i * sizeof number, sizeof number);
            asExpected = asExpected && !descriptor.isOpen();
            descriptor = Descriptor(number);
        }
    }
    return asExpected;
}

} // namespace

void MessageWriter::append(const void* data, size_t count) {
    if (count == 0 || count > room())
        return;
    const size_t start = bytes_.size();
    bytes_.resize(start + count);
    std::memcpy(bytes_.data() + start, data, count);
}

void MessageWriter::putText(std::string_view text) {
    const size_t available = room() > sizeof(uint32_t) ? room() - sizeof(uint32_t) : 0;
    const std::string_view kept = text.substr(0, available);
    putNumber(static_cast<uint32_t>(kept.size()));
    append(kept.data(), kept.size());
}

void MessageReader::take(void* data, size_t count) {
    if (failed_ || count > rest_.size()) {
        failed_ = true;
        return;
    }
    std::memcpy(data, rest_.data(), count);
    rest_ = rest_.subspan(count);
}

std::string MessageReader::text() {
    const auto length = number<uint32_t>();
    if (failed_ || length > rest_.size()) {
        failed_ = true;
        return {};
    }
    std::string text(length, '\0');
    if (length > 0)
        take(text.data(), length);
    return text;
}

void putOption(MessageWriter& message, const OptionDescriptor& option) {
    message.putNumber(static_cast<uint32_t>(option.kind));
    message.putNumber(static_cast<uint8_t>(option.hasRange));
    message.putNumber(static_cast<uint8_t>(option.active));
    message.putNumber(static_cast<uint8_t>(option.settable));
    message.putNumber(option.minimum);
    message.putNumber(option.maximum);
    message.putNumber(option.step);
    // The limit leaves room for the choices.
    constexpr size_t textLimit = maximumMessageBytes / 10;
    const auto limited = [](const std::string& text) {
        return std::string_view(text).substr(0, textLimit);
    };
    message.putText(limited(option.name));
    message.putText(limited(option.title));
    message.putText(limited(option.unit));
    message.putText(limited(option.value));
    uint32_t count = 0;
    size_t room = message.room() - sizeof count;
    for (const std::string& choice : option.choices) {
        if (choice.size() + sizeof(uint32_t) > room)
            break;
        room -= choice.size() + sizeof(uint32_t);
        ++count;
    }
    message.putNumber(count);
    for (uint32_t i = 0; i < count; ++i)
        message.putText(option.choices[i]);
}

OptionDescriptor readOption(MessageReader& message) {
    OptionDescriptor option;
    const auto kind = message.number<uint32_t>();
    option.kind = kind <= static_cast<uint32_t>(OptionKind::button) ? static_cast<OptionKind>(kind)
                                                                    : OptionKind::text;
    option.hasRange = message.flag();
    option.active = message.flag();
    option.settable = message.flag();
    option.minimum = message.number<double>();
    option.maximum = message.number<double>();
    option.step = message.number<double>();
    option.name = message.text();
    option.title = message.text();
    option.unit = message.text();
    option.value = message.text();
    const auto count = message.number<uint32_t>();
    for (uint32_t i = 0; i < count && message.good(); ++i)
        option.choices.push_back(message.text());
    return option;
}

void putPageFormat(MessageWriter& message, const PageFormat& format) {
    message.putNumber(format.widthPixels);
    message.putNumber(format.heightPixels);
    message.putNumber(static_cast<int32_t>(format.bitsPerPixel));
    message.putNumber(format.horizontalDpi);
    message.putNumber(format.verticalDpi);
}

PageFormat readPageFormat(MessageReader& message) {
    PageFormat format;
    format.widthPixels = message.number<int32_t>();
    format.heightPixels = message.number<int32_t>();
    format.bitsPerPixel = message.number<int32_t>();
    format.horizontalDpi = message.number<double>();
    format.verticalDpi = message.number<double>();
    return format;
}

ScanStatus reportedStatus(uint32_t number) {
    return number <= static_cast<uint32_t>(ScanStatus::noSuchDevice)
               ? static_cast<ScanStatus>(number)
               : ScanStatus::ioError;
}

SocketResult sendMessage(int socket,
                         std::span<const std::byte> bytes,
                         int descriptor,
                         std::chrono::milliseconds timeout) {
    iovec part{const_cast<std::byte*>(bytes.data()), bytes.size()};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    msghdr header{};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    if (descriptor >= 0) {
        header.msg_control = control.data();
        header.msg_controllen = control.size();
        cmsghdr* rights = CMSG_FIRSTHDR(&header);
        rights->cmsg_level = SOL_SOCKET;
        rights->cmsg_type = SCM_RIGHTS;
        rights->cmsg_len = CMSG_LEN(sizeof descriptor);
        std::memcpy(CMSG_DATA(rights), &descriptor, sizeof descriptor);
    }
    for (;;) {
        if (sendmsg(socket, &header, MSG_NOSIGNAL | MSG_DONTWAIT) >= 0)
            return SocketResult::done;
        if (errno == EINTR)
            continue;
        if (errno != EAGAIN)
            return SocketResult::closed;
        if (!waitFor(socket, POLLOUT, timeout))
            return SocketResult::timeout;
    }
}

SocketResult
receiveMessage(int socket, std::chrono::milliseconds timeout, ReceivedMessage& message) {
    message = ReceivedMessage{};
    if (!waitFor(socket, POLLIN, timeout))
        return SocketResult::timeout;
    std::vector<std::byte> buffer(maximumMessageBytes);
    iovec part{buffer.data(), buffer.size()};
    // Room for several descriptors, so that unexpected ones are seen and closed.
    alignas(cmsghdr) std::array<char, CMSG_SPACE(8 * sizeof(int))> control{};
    msghdr header{};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    header.msg_control = control.data();
    header.msg_controllen = control.size();
    ssize_t count = 0;
    do {
        count = recvmsg(socket, &header, MSG_CMSG_CLOEXEC | MSG_DONTWAIT);
    } while (count < 0 && errno == EINTR);
    if (count < 0 && errno == EAGAIN)
        return SocketResult::timeout;
    if (count <= 0)
        return SocketResult::closed;
    const bool oneAtMost = takeDescriptor(header, message.descriptor);
    if (!oneAtMost || (header.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) != 0 ||
        static_cast<size_t>(count) < sizeof(MessageType))
        return SocketResult::damaged;
    std::memcpy(&message.type, buffer.data(), sizeof message.type);
    message.body.assign(buffer.begin() + sizeof message.type, buffer.begin() + count);
    return SocketResult::done;
}

} // namespace paperline::sources
