#include "codecs/pnm/PnmDecoder.h"

#include <algorithm>
#include <limits>

namespace paperline {
namespace {

// "P1" to "P6"; 1 to 3 are written in figures, 4 to 6 in bytes.
struct Header {
    int kind = 0;
    int32_t widthPixels = 0;
    int32_t heightPixels = 0;
    uint32_t maximum = 1; // sample value of white
    size_t length = 0;    // bytes up to the samples

    bool isBitmap() const { return kind == 1 || kind == 4; }
    bool isFigures() const { return kind <= 3; }
    size_t samplesPerPixel() const { return kind % 3 == 0 ? 3 : 1; }
    size_t samplesPerRow() const { return samplesPerPixel() * static_cast<size_t>(widthPixels); }
};

bool isBlank(uint8_t c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}
bool isFigure(uint8_t c) {
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

    // A decimal number up to `most`.
    std::optional<uint32_t> number(uint32_t most) {
        skipBlanksAndComments();
        if (atEnd() || !isFigure(bytes_[at_]))
            return std::nullopt;
        uint64_t value = 0;
        while (!atEnd() && isFigure(bytes_[at_])) {
            value = value * 10 + (next() - uint32_t{'0'});
            if (value > most)
                return std::nullopt;
        }
        return static_cast<uint32_t>(value);
    }

    // The figures of a bitmap may stand without blanks between them.
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
    header.widthPixels = static_cast<int32_t>(*width);
    header.heightPixels = static_cast<int32_t>(*height);
    if (!header.isBitmap()) {
        const auto maximum = cursor.number(65535);
        if (!maximum || *maximum == 0)
            return std::nullopt;
        header.maximum = *maximum;
    }
    // Exactly one blank stands between the header and the samples.
    if (cursor.atEnd() || !isBlank(cursor.next()))
        return std::nullopt;
    header.length = 2 + cursor.position();
    return header;
}

uint8_t reduced(uint32_t sample, uint32_t maximum) {
    return static_cast<uint8_t>((sample * 255 + maximum / 2) / maximum);
}

// Rows of bits in whole bytes, 1 for black.
bool readPackedBits(std::span<const uint8_t> samples, BitmapImageRep& page) {
    const std::span<uint8_t> pixels = page.bitmapData();
    if (samples.size() < pixels.size())
        return false;
    std::transform(samples.begin(),
                   samples.begin() + static_cast<ptrdiff_t>(pixels.size()),
                   pixels.begin(),
                   [](uint8_t bits) { return static_cast<uint8_t>(~bits); });
    return true;
}

bool readBitFigures(std::span<const uint8_t> samples, BitmapImageRep& page) {
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

bool readFigures(std::span<const uint8_t> samples, const Header& header, BitmapImageRep& page) {
    Cursor cursor(samples);
    for (uint8_t& pixel : page.bitmapData()) {
        const std::optional<uint32_t> sample = cursor.number(header.maximum);
        if (!sample)
            return false;
        pixel = reduced(*sample, header.maximum);
    }
    return true;
}

// One byte a sample, or two with the higher first when white is above 255.
bool readBytes(std::span<const uint8_t> samples, const Header& header, BitmapImageRep& page) {
    const std::span<uint8_t> pixels = page.bitmapData();
    const size_t sampleBytes = header.maximum > 255 ? 2 : 1;
    if (samples.size() / sampleBytes < pixels.size())
        return false;
    for (size_t index = 0; index < pixels.size(); ++index) {
        uint32_t sample = samples[index * sampleBytes];
        if (sampleBytes == 2)
            sample = sample << 8U | samples[index * 2 + 1];
        if (sample > header.maximum)
            return false;
        pixels[index] =
            header.maximum == 255 ? static_cast<uint8_t>(sample) : reduced(sample, header.maximum);
    }
    return true;
}

// Whether the file can hold so many pixels: a short file must not take memory for a large page.
bool canHold(const Header& header, uint64_t sampleBytes) {
    const auto rows = static_cast<uint64_t>(header.heightPixels);
    const uint64_t samples = header.samplesPerRow();
    if (header.kind == 4)
        return (samples + 7) / 8 * rows <= sampleBytes;
    // Grey and colour figures have a blank between them; those of a bitmap may do without.
    const bool spaced = header.kind == 2 || header.kind == 3;
    return samples * rows <= (spaced ? (sampleBytes + 1) / 2 : sampleBytes);
}

} // namespace

bool hasPnmHeader(std::span<const uint8_t> bytes) {
    return parseHeader(bytes).has_value();
}

std::optional<DecodedImage> decodePnm(std::span<const uint8_t> bytes, uint64_t maximumPixels) {
    const std::optional<Header> header = parseHeader(bytes);
    if (!header || !withinPixels(static_cast<uint64_t>(header->widthPixels),
                                 static_cast<uint64_t>(header->heightPixels),
                                 maximumPixels))
        return std::nullopt;
    const std::span<const uint8_t> samples = bytes.subspan(header->length);
    if (!canHold(*header, samples.size()))
        return std::nullopt;
    const int bits = header->isBitmap() ? 1 : 8 * static_cast<int>(header->samplesPerPixel());
    DecodedImage result;
    result.image = BitmapImageRep::makePage(header->widthPixels, header->heightPixels, bits);
    if (!result.image)
        return std::nullopt;
    bool whole = false;
    if (header->kind == 1)
        whole = readBitFigures(samples, *result.image);
    else if (header->kind == 4)
        whole = readPackedBits(samples, *result.image);
    else if (header->isFigures())
        whole = readFigures(samples, *header, *result.image);
    else
        whole = readBytes(samples, *header, *result.image);
    return whole ? std::optional(std::move(result)) : std::nullopt;
}

} // namespace paperline
