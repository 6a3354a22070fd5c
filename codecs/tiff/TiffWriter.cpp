#include "codecs/tiff/TiffWriter.h"

#include "codecs/tiff/LzwEncoder.h"
#include "codecs/tiff/TiffPages.h"
#include "platform/process/ParallelFor.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <span>

namespace paperline {
namespace {

using Bytes = std::vector<uint8_t>;

// Rows of one strip: few enough for readers that take a strip at a time and for encoders side by
// side, enough for the code table to fill many times over.
constexpr size_t stripBytes = 256 * 1024;

// Little-endian, the usual 32-bit offsets.
constexpr const char* writeMode = "wl";

TiffPageTags tagsOf(const BitmapImageRep& page, const TiffOptions& options) {
    const size_t rowBytes =
        (static_cast<size_t>(page.pixelsWide()) * static_cast<size_t>(page.bitsPerPixel()) + 7) / 8;
    const bool isColour = page.bitsPerPixel() == 24;
    return {
        .widthPixels = static_cast<uint32_t>(page.pixelsWide()),
        .heightPixels = static_cast<uint32_t>(page.pixelsHigh()),
        .bitsPerSample = static_cast<uint16_t>(page.bitsPerSample()),
        .samplesPerPixel = static_cast<uint16_t>(page.samplesPerPixel()),
        .photometric = static_cast<uint16_t>(isColour ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK),
        .rowsPerStrip = static_cast<uint32_t>(
            std::clamp<size_t>(stripBytes / rowBytes, 1, static_cast<size_t>(page.pixelsHigh()))),
        .horizontalDpi = options.horizontalDpi,
        .verticalDpi = options.verticalDpi};
}

// Encodes one strip after another.
class StripEncoder {
public:
    StripEncoder(const BitmapImageRep& page, const TiffPageTags& tags) : page_(page), tags_(tags) {}

    Bytes encode(size_t strip) {
        takeRows(strip * tags_.rowsPerStrip);
        const auto code = lzw_.encode(rows_);
        return {code.begin(), code.end()};
    }

private:
    // The strip's rows without padding, as they are compressed.
    void takeRows(size_t firstRow) {
        const size_t bits = size_t{tags_.widthPixels} * tags_.bitsPerSample * tags_.samplesPerPixel;
        const size_t rowBytes = (bits + 7) / 8;
        const size_t end = std::min<size_t>(tags_.heightPixels, firstRow + tags_.rowsPerStrip);
        rows_.resize((end - firstRow) * rowBytes);
        for (size_t y = firstRow; y < end; ++y) {
            const auto row = page_.row(static_cast<int32_t>(y)).first(rowBytes);
            const auto target = std::span(rows_).subspan((y - firstRow) * rowBytes, rowBytes);
            if (tags_.bitsPerSample == 1)
                takeBits(row, bits % 8, target);
            else
                takeDifferences(row, tags_.samplesPerPixel, target);
        }
    }

    // Bits behind the last pixel are 0.
    static void
    takeBits(std::span<const uint8_t> row, size_t bitsOfLastByte, std::span<uint8_t> target) {
        std::copy(row.begin(), row.end(), target.begin());
        if (bitsOfLastByte != 0)
            target.back() = static_cast<uint8_t>(target.back() & (0xFF00U >> bitsOfLastByte));
    }

    // Each sample but the first pixel's as its difference from the one to its left.
    static void
    takeDifferences(std::span<const uint8_t> row, size_t samples, std::span<uint8_t> target) {
        std::copy_n(row.begin(), samples, target.begin());
        for (size_t at = samples; at < row.size(); ++at)
            target[at] = static_cast<uint8_t>(row[at] - row[at - samples]);
    }

    const BitmapImageRep& page_;
    const TiffPageTags& tags_;
    LzwEncoder lzw_;
    Bytes rows_;
};

// Every strip's code; empty on any error.
std::vector<Bytes>
encodeStrips(const BitmapImageRep& page, const TiffPageTags& tags, unsigned threads) {
    const size_t count = (tags.heightPixels - 1) / tags.rowsPerStrip + 1;
    std::vector<Bytes> strips(count);
    std::vector<std::unique_ptr<StripEncoder>> encoders(std::min<size_t>(threads, count));
    parallelFor(count, static_cast<unsigned>(encoders.size()), [&](size_t strip, unsigned worker) {
        try {
            if (!encoders[worker])
                encoders[worker] = std::make_unique<StripEncoder>(page, tags);
            strips[strip] = encoders[worker]->encode(strip);
        } catch (const std::bad_alloc&) {
            strips[strip] = {};
        }
    });
    const bool whole =
        std::none_of(strips.begin(), strips.end(), [](const Bytes& code) { return code.empty(); });
    return whole ? std::move(strips) : std::vector<Bytes>();
}

std::optional<Bytes> fileOf(const TiffPageTags& tags, std::vector<Bytes> strips) {
    TiffErrors errors;
    TiffMemory file;
    size_t total = 1024; // header and directory
    for (const Bytes& strip : strips)
        total += strip.size() + 8; // its place and size in the directory
    file.bytes.reserve(total);
    TiffHandle tiff = openTiffMemory(file, writeMode, errors);
    if (!tiff || strips.empty() || !setTiffPageTags(tiff.get(), tags))
        return std::nullopt;
    for (size_t number = 0; number < strips.size(); ++number) {
        Bytes strip = std::move(strips[number]); // freed as soon as it is written
        const auto size = static_cast<tmsize_t>(strip.size());
        if (TIFFWriteRawStrip(tiff.get(), static_cast<uint32_t>(number), strip.data(), size) !=
            size)
            return std::nullopt;
    }
    if (TIFFWriteDirectory(tiff.get()) == 0 || errors.count > 0)
        return std::nullopt;
    tiff.reset();
    return std::move(file.bytes);
}

} // namespace

std::optional<std::vector<uint8_t>> encodeTiff(const BitmapImageRep& page,
                                               const TiffOptions& options) {
    if (!hasPageLayout(page))
        return std::nullopt;
    try {
        const TiffPageTags tags = tagsOf(page, options);
        const unsigned threads = options.threads == 0 ? processorCount() : options.threads;
        return fileOf(tags, encodeStrips(page, tags, threads));
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

} // namespace paperline
