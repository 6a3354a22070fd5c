#include "codecs/gif/LzwDecoder.h"

#include "platform/files/ByteOrder.h"

#include <array>
#include <cstring>
#include <utility>

namespace paperline {
namespace {

constexpr unsigned widest = 12;
constexpr uint32_t mostCodes = uint32_t{1} << widest;
// Strings are copied in pieces of this size; most are shorter.
constexpr size_t pieceBytes = 16;

// Each string of the code table already stands in the picture: the previous string and the pixel
// after it. So a code is an offset and a length, and the literals are stored in front of the
// picture.
class LzwExpander {
public:
    LzwExpander(std::span<const uint8_t> codes, unsigned literalBits, uint8_t* bytes)
        : codes_(codes.data()), codeBits_(uint64_t{codes.size() - lzwSpareBytes} * 8),
          literalBits_(literalBits), clearCode_(uint32_t{1} << literalBits), bytes_(bytes) {
        for (uint32_t literal = 0; literal < clearCode_; ++literal) {
            bytes_[literal] = static_cast<uint8_t>(literal);
            offsets_[literal] = literal;
            lengths_[literal] = 1;
        }
        clear();
    }

    // Whether the codes fill the bytes exactly up to `end`.
    bool expandTo(uint32_t end) {
        auto offset = static_cast<uint32_t>(lzwFirstPixel);
        while (offset < end) {
            if (!hasCode())
                return false;
            const uint32_t code = takeCode();
            if (code == clearCode_) {
                clear();
                continue;
            }
            addString();
            // 0 for the end code and for unknown codes.
            const uint32_t length = code < nextCode_ ? lengths_[code] : 0;
            if (length == 0 || length > end - offset)
                return false;
            copyString(offsets_[code], offset, length);
            previousOffset_ = offset;
            previousLength_ = length;
            offset += length;
        }
        return !hasCode() || takeCode() == clearCode_ + 1;
    }

private:
    void clear() {
        width_ = literalBits_ + 1;
        nextCode_ = clearCode_ + 2;
        previousLength_ = 0;
    }

    bool hasCode() const { return bit_ + width_ <= codeBits_; }

    uint32_t takeCode() {
        const auto piece = readInteger<uint32_t>({codes_ + bit_ / 8, 4}, std::endian::little);
        const uint32_t code = piece >> bit_ % 8 & ((uint32_t{1} << width_) - 1);
        bit_ += width_;
        return code;
    }

    // The previous string and the pixel after it, which is about to be written.
    void addString() {
        if (previousLength_ == 0 || nextCode_ == mostCodes)
            return;
        offsets_[nextCode_] = previousOffset_;
        lengths_[nextCode_] = static_cast<uint16_t>(previousLength_ + 1);
        ++nextCode_;
        if (nextCode_ == uint32_t{1} << width_ && width_ < widest)
            ++width_;
    }

    // Writes up to a piece more than the string.
    void copyString(uint32_t from, uint32_t to, uint32_t length) {
        for (uint32_t done = 0; done < length; done += pieceBytes) {
            std::array<uint8_t, pieceBytes> piece;
            std::memcpy(piece.data(), bytes_ + from + done, pieceBytes);
            std::memcpy(bytes_ + to + done, piece.data(), pieceBytes);
        }
        if (from + length > to) // the string ends with its own first pixel
            bytes_[to + length - 1] = bytes_[to];
    }

    const uint8_t* codes_;
    uint64_t codeBits_;
    uint64_t bit_ = 0;
    unsigned literalBits_;
    unsigned width_ = 0;
    uint32_t clearCode_;
    uint32_t nextCode_ = 0;
    uint32_t previousOffset_ = 0;
    uint32_t previousLength_ = 0; // 0: the next code is the first after a clear code
    uint8_t* bytes_;
    std::array<uint32_t, mostCodes> offsets_{};
    std::array<uint16_t, mostCodes> lengths_{};
};

} // namespace

PageMemory expandLzw(std::span<const uint8_t> codes, unsigned literalBits, size_t pixelCount) {
    constexpr size_t mostPixels = UINT32_MAX - lzwFirstPixel - pieceBytes;
    if (literalBits < 2 || literalBits > 8 || codes.size() < lzwSpareBytes || pixelCount == 0 ||
        pixelCount > mostPixels)
        return {};
    PageMemory memory = allocatePageMemory(lzwFirstPixel + pixelCount + pieceBytes);
    if (!memory)
        return {};
    LzwExpander expander(codes, literalBits, memory.get());
    const bool isWhole = expander.expandTo(static_cast<uint32_t>(lzwFirstPixel + pixelCount));
    return isWhole ? std::move(memory) : PageMemory();
}

} // namespace paperline
