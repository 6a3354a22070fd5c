#include "platform/LzwDecoder.h"

#include <cstring>
#include <limits>

namespace paperline {
namespace {

constexpr uint32_t clearCode = 256;
constexpr uint32_t firstCode = 258;
constexpr uint32_t codeLimit = 4096;
constexpr unsigned narrowest = 9;
constexpr unsigned widest = 12;

// Codes of changing width, the highest bit first.
class CodeReader {
public:
    explicit CodeReader(std::span<const uint8_t> stream)
        : next_(stream.data()), end_(stream.data() + stream.size()) {}

    // The end code where the stream ends without one.
    uint32_t read(unsigned width) {
        constexpr uint32_t endCode = 257;
        while (count_ < width) {
            if (next_ == end_)
                return endCode;
            bits_ = bits_ << 8 | *next_++;
            count_ += 8;
        }
        count_ -= width;
        return static_cast<uint32_t>(bits_ >> count_) & ((1U << width) - 1);
    }

private:
    const uint8_t* next_;
    const uint8_t* end_;
    uint64_t bits_ = 0; // older ones above those that wait
    unsigned count_ = 0;
};

// From before `to`, byte after byte: a string may run into its own copy.
void copyString(const uint8_t* from, uint8_t* to, size_t length, size_t room) {
    constexpr size_t atOnce = 8; // longer than most strings of a noisy page
    if (length <= atOnce && room >= atOnce && from + length <= to) {
        uint64_t bytes = 0;
        std::memcpy(&bytes, from, atOnce);
        std::memcpy(to, &bytes, atOnce);
        return;
    }
    for (size_t at = 0; at < length; ++at)
        to[at] = from[at];
}

} // namespace

bool LzwDecoder::decode(std::span<const uint8_t> stream, std::span<uint8_t> target) {
    if (target.size() > std::numeric_limits<uint32_t>::max())
        return false;
    CodeReader codes(stream);
    if (codes.read(narrowest) != clearCode)
        return false;
    const auto size = static_cast<uint32_t>(target.size());
    unsigned width = narrowest;
    uint32_t nextCode = firstCode;
    String before; // of no length behind a clear code
    for (uint32_t filled = 0; filled < size;) {
        const uint32_t code = codes.read(width);
        if (code == clearCode) {
            width = narrowest;
            nextCode = firstCode;
            before = {};
            continue;
        }
        if (before.length != 0) {
            if (nextCode == codeLimit)
                return false;
            strings_[nextCode++] = {before.start, before.length + 1};
            if (nextCode + 1 >= uint32_t{1} << width && width < widest)
                ++width;
        }
        before = {filled, 1};
        if (code < clearCode) {
            target[filled++] = static_cast<uint8_t>(code);
            continue;
        }
        if (code < firstCode || code >= nextCode)
            return false;
        const String string = strings_[code];
        before.length = string.length;
        const uint32_t room = size - filled;
        const uint32_t length = string.length < room ? string.length : room;
        copyString(target.data() + string.start, target.data() + filled, length, room);
        filled += length;
    }
    return true;
}

} // namespace paperline
