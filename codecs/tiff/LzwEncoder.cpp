#include "codecs/tiff/LzwEncoder.h"

#include <algorithm>

namespace paperline {
namespace {

constexpr uint32_t clearCode = 256;
constexpr uint32_t endCode = 257;
constexpr uint32_t firstCode = 258;
constexpr uint32_t noString = UINT32_MAX; // code 4095 and byte 255: never written
constexpr unsigned narrowest = 9;
constexpr unsigned widest = 12;

// Of the code that is written when so many stand behind the clear code.
unsigned widthAfter(size_t codeCount) {
    unsigned width = narrowest;
    while (width < widest && codeCount + firstCode >= (size_t{1} << width))
        ++width;
    return width;
}

} // namespace

LzwEncoder::LzwEncoder() {
    for (uint32_t byte = 0; byte < placeOfByte_.size(); ++byte)
        placeOfByte_[byte] = byte * 0x9E3779B1U >> (32 - placeBits); // spread by the golden ratio
}

std::span<const uint8_t> LzwEncoder::encode(std::span<const uint8_t> bytes) {
    // At most a code of 12 bits for each byte, a clear code for each 3836 and the end.
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

// The codes up to the next clear code; gives the bytes that they stand for. Noise makes every guess
// at a match wrong half of the time, so the loop has no branch that depends on one. A string whose
// place is taken drives out the one that was there: the reader knows it still, it only is not
// written again.
size_t LzwEncoder::takeCodes(std::span<const uint8_t> bytes) {
    strings_.fill(noString);
    uint32_t prefix = bytes[0];
    uint32_t count = 0;
    size_t at = 1;
    for (; at < bytes.size() && count < mostCodes; ++at) {
        const uint32_t byte = bytes[at];
        const uint32_t longer = prefix << 20 | byte << 12;
        uint32_t& place = strings_[prefix << (placeBits - 12) ^ placeOfByte_[byte]];
        const uint32_t known = place;
        const uint32_t code = known ^ longer; // if it is the same string
        const uint32_t isNew = code >> 12 != 0 ? UINT32_MAX : 0;
        codes_[count] = static_cast<uint16_t>(prefix);
        place = known ^ ((known ^ (longer | (firstCode + count))) & isNew);
        prefix = code ^ ((code ^ byte) & isNew);
        count += isNew & 1;
    }
    codeCount_ = count;
    if (count == mostCodes)
        return at - 1; // the last byte begins the next string
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
    waitingBits_ = waitingBits_ << width | code;
    waitingCount_ += width;
    if (waitingCount_ < 32)
        return;
    waitingCount_ -= 32;
    const auto word = static_cast<uint32_t>(waitingBits_ >> waitingCount_);
    uint8_t* target = stream_.data() + streamBytes_;
    target[0] = static_cast<uint8_t>(word >> 24);
    target[1] = static_cast<uint8_t>(word >> 16);
    target[2] = static_cast<uint8_t>(word >> 8);
    target[3] = static_cast<uint8_t>(word);
    streamBytes_ += 4;
}

// The last bits, padded with zeros to a whole byte.
void LzwEncoder::writeRest() {
    while (waitingCount_ > 0) {
        const unsigned taken = std::min(waitingCount_, 8U);
        waitingCount_ -= taken;
        stream_[streamBytes_++] =
            static_cast<uint8_t>(waitingBits_ >> waitingCount_ << (8 - taken));
    }
    waitingBits_ = 0;
}

} // namespace paperline
