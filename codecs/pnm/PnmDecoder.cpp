#include "codecs/pnm/PnmDecoder.h"

#include "platform/files/ByteOrder.h"

#include <algorithm>
#include <limits>

namespace paperline {
namespace {

struct Header {
    int kind = 0; // of "P1" to "P6": 1 to 3 are plain, 4 to 6 raw
    PixelSize size;
    uint32_t maximum = 1; // sample value of white
    size_t length = 0;    // bytes before the samples

    bool isBitmap() const { return kind == 1 || kind == 4; }
    size_t samplesPerPixel() const { return kind % 3 == 0 ? 3 : 1; }
};

bool isBlank(uint8_t c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}
bool isDigit(uint8_t c) {
    return c >= '0' && c <= '9';
}

class Cursor {
public:
    explicit Cursor(std::span<const uint8_t> bytes) : bytes_(bytes) {}

    size_t position() const { return at_; }
    bool atEnd() const { return at_ >= bytes_.size(); }
    uint8_t next() { return bytes_[at_++]; }

    void skipBlanksAndComments() {
        while (!atEnd()) {
            if (bytes_[at_] == '#')
                while (!atEnd() && bytes_[at_] != '\n')
                    ++at_;
            else if (isBlank(bytes_[at_]))
                ++at_;
            else
                return;
        }
    }

    // A decimal number, at most `most`.
    std::optional<uint32_t> number(uint32_t most) {
        skipBlanksAndComments();
        if (atEnd() || !isDigit(bytes_[at_]))
            return std::nullopt;
        uint64_t value = 0;
        while (!atEnd() && isDigit(bytes_[at_])) {
            value = value * 10 + (next() - uint32_t{'0'});
            if (value > most)
                return std::nullopt;
        }
        return static_cast<uint32_t>(value);
    }

    // Plain bitmaps need no blanks between their digits.
    std::optional<uint32_t> bit() {
        skipBlanksAndComments();
        if (atEnd() || (bytes_[at_] != '0' && bytes_[at_] != '1'))
            return std::nullopt;
        return next() - uint32_t{'0'};
    }

private:
    std::span<const uint8_t> bytes_;
    size_t at_ = 0;
};

std::optional<Header> parseHeader(std::span<const uint8_t> bytes) {
    if (bytes.size() < 3 || bytes[0] != 'P' || bytes[1] < '1' || bytes[1] > '6' ||
        (!isBlank(bytes[2]) && bytes[2] != '#'))
        return std::nullopt;
    Header header;
    header.kind = bytes[1] - '0';
    Cursor cursor(bytes.subspan(2));
    constexpr uint32_t mostPixels = std::numeric_limits<int32_t>::max() / 8;
    const auto width = cursor.number(mostPixels);
    const auto height = width ? cursor.number(mostPixels) : std::nullopt;
    if (!width || !height || *width == 0 || *height == 0)
        return std::nullopt;
    header.size = {*width, *height};
    if (!header.isBitmap()) {
        const auto maximum = cursor.number(65535);
        if (!maximum || *maximum == 0)
            return std::nullopt;
        header.maximum = *maximum;
    }
    // Exactly one blank separates the header from the samples.
    if (cursor.atEnd() || !isBlank(cursor.next()))
        return std::nullopt;
    header.length = 2 + cursor.position();
    return header;
}

uint8_t reduced(uint32_t sample, uint32_t maximum) {
    return static_cast<uint8_t>((sample * 255 + maximum / 2) / maximum);
}

// Rows of packed bits; 1 is black.
bool readRawBits(std::span<const uint8_t> samples, BitmapImageRep& page) {
    const std::span<uint8_t> pixels = page.bitmapData();
    if (samples.size() < pixels.size())
        return false;
    std::transform(samples.begin(),
                   samples.begin() + static_cast<ptrdiff_t>(pixels.size()),
                   pixels.begin(),
                   [](uint8_t bits) { return static_cast<uint8_t>(~bits); });
    return true;
}

bool readPlainBits(std::span<const uint8_t> samples, BitmapImageRep& page) {
    Cursor cursor(samples);
    for (int32_t y = 0; y < page.pixelsHigh(); ++y) {
        const std::span<uint8_t> row = page.row(y);
        for (size_t x = 0; x < static_cast<size_t>(page.pixelsWide()); ++x) {
            const std::optional<uint32_t> bit = cursor.bit();
            if (!bit)
                return false;
            if (*bit == 0)
                row[x / 8] = static_cast<uint8_t>(row[x / 8] | (0x80U >> (x % 8)));
        }
    }
    return true;
}

bool readPlainSamples(std::span<const uint8_t> samples,
                      const Header& header,
                      BitmapImageRep& page) {
    Cursor cursor(samples);
    for (uint8_t& pixel : page.bitmapData()) {
        const std::optional<uint32_t> sample = cursor.number(header.maximum);
        if (!sample)
            return false;
        pixel = reduced(*sample, header.maximum);
    }
    return true;
}

// One byte a sample, or two in big-endian order when white is above 255.
bool readRawSamples(std::span<const uint8_t> samples, const Header& header, BitmapImageRep& page) {
    const std::span<uint8_t> pixels = page.bitmapData();
    const size_t sampleBytes = header.maximum > 255 ? 2 : 1;
    if (samples.size() / sampleBytes < pixels.size())
        return false;
    if (header.maximum == 255) {
        std::copy_n(samples.begin(), pixels.size(), pixels.begin());
        return true;
    }
    for (size_t index = 0; index < pixels.size(); ++index) {
        const uint32_t sample =
            sampleBytes == 1 ? samples[index]
                             : readInteger<uint16_t>(samples.subspan(2 * index), std::endian::big);
        if (sample > header.maximum)
            return false;
        pixels[index] = reduced(sample, header.maximum);
    }
    return true;
}

// Whether `sampleBytes` bytes can hold the pixels. Checked before memory is allocated, because a
// short file may claim a huge size.
bool canHold(const Header& header, uint64_t sampleBytes) {
    const uint64_t rowSamples = header.samplesPerPixel() * uint64_t{header.size.width};
    if (header.kind == 4)
        return (rowSamples + 7) / 8 * header.size.height <= sampleBytes;
    // Plain numbers have a blank between them.
    const bool isSpaced = header.kind == 2 || header.kind == 3;
    return rowSamples * header.size.height <= (isSpaced ? (sampleBytes + 1) / 2 : sampleBytes);
}

} // namespace

bool hasPnmHeader(std::span<const uint8_t> bytes) {
    return parseHeader(bytes).has_value();
}

std::optional<DecodedImage> decodePnm(std::span<const uint8_t> bytes, uint64_t maximumPixels) {
    const std::optional<Header> header = parseHeader(bytes);
    if (!header || !isWithin(header->size, maximumPixels))
        return std::nullopt;
    const std::span<const uint8_t> samples = bytes.subspan(header->length);
    if (!canHold(*header, samples.size()))
        return std::nullopt;
    const int bits = header->isBitmap() ? 1 : 8 * static_cast<int>(header->samplesPerPixel());
    DecodedImage result;
    result.image = BitmapImageRep::makePage(
        static_cast<int32_t>(header->size.width), static_cast<int32_t>(header->size.height), bits);
    if (!result.image)
        return std::nullopt;
    bool whole = false;
    if (header->kind == 1)
        whole = readPlainBits(samples, *result.image);
    else if (header->kind == 4)
        whole = readRawBits(samples, *result.image);
    else if (header->kind <= 3)
        whole = readPlainSamples(samples, *header, *result.image);
    else
        whole = readRawSamples(samples, *header, *result.image);
    return whole ? std::optional(std::move(result)) : std::nullopt;
}

} // namespace paperline
