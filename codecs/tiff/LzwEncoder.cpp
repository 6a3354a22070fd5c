#include "codecs/tiff/LzwEncoder.h"

#include "platform/files/ByteOrder.h"

#include <algorithm>

namespace paperline {
namespace {

constexpr uint32_t clearCode = 256;
constexpr uint32_t endCode = 257;
constexpr uint32_t firstCode = 258;
constexpr uint32_t noString = UINT32_MAX; // code 4095, which is never used
constexpr unsigned narrowest = 9;
constexpr unsigned widest = 12;

// The code width after n codes since the clear code.
unsigned widthAfter(size_t codeCount) {
    unsigned width = narrowest;
    while (width < widest && codeCount + firstCode >= (size_t{1} << width))
        ++width;
    return width;
}

} // namespace

LzwEncoder::LzwEncoder() {
    for (uint32_t byte = 0; byte < hashOfByte_.size(); ++byte)
        hashOfByte_[byte] = byte * 0x9E3779B1U >> (32 - slotBits); // Fibonacci hashing
}

std::span<const uint8_t> LzwEncoder::encode(std::span<const uint8_t> bytes) {
    // At most one code of 12 bits for each byte, a clear code for each 3836 codes, the end code.
    stream_.resize(std::max(stream_.size(), bytes.size() / 2 * 3 + bytes.size() / 1024 + 64));
    streamBytes_ = 0;
    writeCode(clearCode, narrowest);
    while (true) {
        bytes = bytes.subspan(takeCodes(bytes));
        writeCodes();
        const bool isFull = codeCount_ == mostCodes;
        if (isFull)
            writeCode(clearCode, widest);
        if (bytes.empty()) {
            writeCode(endCode, isFull ? narrowest : widthAfter(codeCount_));
            break;
        }
    }
    writeRest();
    return std::span(stream_).first(streamBytes_);
}

// Fills `codes_` up to the next clear code and returns the number of bytes that they encode. A
// string that collides with another replaces it: the decoder still knows that one, it is only not
// used again.
size_t LzwEncoder::takeCodes(std::span<const uint8_t> bytes) {
    strings_.fill(noString);
    uint32_t prefix = bytes[0];
    uint32_t count = 0;
    size_t at = 1;
    for (; at < bytes.size() && count < mostCodes; ++at) {
        const uint32_t byte = bytes[at];
        const uint32_t longer = prefix << 20 | byte << 12;
        uint32_t& slot = strings_[prefix << (slotBits - 12) ^ hashOfByte_[byte]];
        const uint32_t known = slot;
        const uint32_t code = known ^ longer; // below 4096 if it is the same string
        const uint32_t isNew = code >> 12 != 0 ? UINT32_MAX : 0;
        codes_[count] = static_cast<uint16_t>(prefix);
        slot = known ^ ((known ^ (longer | (firstCode + count))) & isNew);
        prefix = code ^ ((code ^ byte) & isNew);
        count += isNew & 1;
    }
    codeCount_ = count;
    if (count == mostCodes)
        return at - 1; // the last byte begins the next table's first string
    codes_[codeCount_++] = static_cast<uint16_t>(prefix);
    return at;
}

void LzwEncoder::writeCodes() {
    for (size_t next = 0; next < codeCount_;) {
        const unsigned width = widthAfter(next);
        const size_t end = width == widest
                               ? codeCount_
                               : std::min(codeCount_, (size_t{1} << width) - size_t{firstCode});
        for (; next < end; ++next)
            writeCode(codes_[next], width);
    }
}

inline void LzwEncoder::writeCode(uint32_t code, unsigned width) {
    pendingBits_ = pendingBits_ << width | code;
    pendingCount_ += width;
    if (pendingCount_ < 32)
        return;
    pendingCount_ -= 32;
    const auto word = static_cast<uint32_t>(pendingBits_ >> pendingCount_);
    writeInteger(std::span(stream_.data() + streamBytes_, sizeof word), std::endian::big, word);
    streamBytes_ += sizeof word;
}

// The pending bits, padded with zeros to a whole byte.
void LzwEncoder::writeRest() {
    while (pendingCount_ > 0) {
        const unsigned taken = std::min(pendingCount_, 8U);
        pendingCount_ -= taken;
        stream_[streamBytes_++] =
            static_cast<uint8_t>(pendingBits_ >> pendingCount_ << (8 - taken));
    }
    pendingBits_ = 0;
}

} // namespace paperline
