#include "sources/sane/FrameRows.h"

#include <algorithm>
#include <cstring>

namespace paperline::sources {

namespace {

// Rounds; samples are in the machine's byte order.
uint8_t eightBits(const uint8_t* sample) {
    uint16_t value = 0;
    std::memcpy(&value, sample, sizeof value);
    return static_cast<uint8_t>((uint32_t{value} * 255 + 32767) / 65535);
}

// Polarity of lineart: in SANE 1 is black, in TWAIN and here 0. Bits past the last pixel become
// white.
void invertLineart(std::span<const uint8_t> line, std::span<uint8_t> row, int32_t width) {
    std::transform(line.begin(), line.end(), row.begin(), [](uint8_t bits) {
        return static_cast<uint8_t>(~bits);
    });
    if (width % 8 != 0)
        row[line.size() - 1] |= static_cast<uint8_t>(0xFF >> (width % 8));
}

// One-bit colour: 1 is full intensity. The bytes of one colour are `groupBytes` apart.
void expandBits(const uint8_t* bytes, size_t groupBytes, uint8_t* out, int32_t width) {
    for (int32_t x = 0; x < width; ++x) {
        const uint8_t bits = bytes[static_cast<size_t>(x / 8) * groupBytes];
        out[3 * static_cast<size_t>(x)] = (bits >> (7 - x % 8) & 1) != 0 ? 0xFF : 0;
    }
}

// Writes samples of 8 or 16 bits to every `stride`th byte.
void spreadSamples(std::span<const uint8_t> line, int32_t depth, uint8_t* out, size_t stride) {
    const size_t sampleBytes = depth == 16 ? 2 : 1;
    for (size_t i = 0; i < line.size() / sampleBytes; ++i)
        out[i * stride] = depth == 16 ? eightBits(line.data() + i * sampleBytes) : line[i];
}

bool isSingleColour(SaneFrame frame) {
    return frame == SaneFrame::red || frame == SaneFrame::green || frame == SaneFrame::blue;
}

size_t colourOffset(SaneFrame frame) {
    return frame == SaneFrame::red ? 0 : frame == SaneFrame::green ? 1 : 2;
}

} // namespace

int pageBits(const SaneParameters& parameters) {
    const bool depthIsKnown =
        parameters.depth == 1 || parameters.depth == 8 || parameters.depth == 16;
    if (!depthIsKnown || parameters.frame == SaneFrame::other)
        return 0;
    if (parameters.frame != SaneFrame::gray)
        return 24;
    return parameters.depth == 1 ? 1 : 8;
}

int64_t packedLineBytes(const SaneParameters& parameters) {
    const int64_t width = parameters.pixelsPerLine;
    const int64_t oneColour =
        parameters.depth == 1 ? (width + 7) / 8 : width * (parameters.depth / 8);
    return parameters.frame == SaneFrame::rgb ? 3 * oneColour : oneColour;
}

bool linesAreRows(const SaneParameters& parameters) {
    return parameters.depth == 8 && !isSingleColour(parameters.frame) &&
           parameters.bytesPerLine == packedLineBytes(parameters);
}

void lineToRow(const SaneParameters& parameters,
               std::span<const uint8_t> line,
               std::span<uint8_t> row) {
    const int32_t width = parameters.pixelsPerLine;
    if (isSingleColour(parameters.frame)) {
        uint8_t* out = row.data() + colourOffset(parameters.frame);
        if (parameters.depth == 1)
            expandBits(line.data(), 1, out, width);
        else
            spreadSamples(line, parameters.depth, out, 3);
    } else if (parameters.depth != 1) {
        if (parameters.depth == 8)
            std::copy(line.begin(), line.end(), row.begin());
        else
            spreadSamples(line, parameters.depth, row.data(), 1);
    } else if (parameters.frame == SaneFrame::rgb) {
        for (size_t colour = 0; colour < 3; ++colour)
            expandBits(line.data() + colour, 3, row.data() + colour, width);
    } else {
        invertLineart(line, row, width);
    }
}

} // namespace paperline::sources
