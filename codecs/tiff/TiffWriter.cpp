#include "codecs/tiff/TiffWriter.h"

#include "codecs/tiff/LzwEncoder.h"
#include "codecs/tiff/TiffPages.h"
#include "platform/process/ParallelFor.h"

#include <algorithm>
#include <new>
#include <span>

namespace paperline {
namespace {

using Bytes = std::vector<uint8_t>;

// Of a strip before compression: few enough for readers that hold a whole strip and for parallel
// encoding, enough to fill the code table many times.
constexpr size_t stripBytes = 256 * 1024;

// Little-endian, 32-bit offsets.
constexpr const char* writeMode = "wl";

TiffPageTags tagsOf(const BitmapImageRep& page, const TiffOptions& options) {
    const bool isColour = page.bitsPerPixel() == 24;
    return {.widthPixels = static_cast<uint32_t>(page.pixelsWide()),
            .heightPixels = static_cast<uint32_t>(page.pixelsHigh()),
            .bitsPerSample = static_cast<uint16_t>(page.bitsPerSample()),
            .samplesPerPixel = static_cast<uint16_t>(page.samplesPerPixel()),
            .photometric =
                static_cast<uint16_t>(isColour ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK),
            .rowsPerStrip = static_cast<uint32_t>(std::clamp<size_t>(
                stripBytes / page.packedRowBytes(), 1, static_cast<size_t>(page.pixelsHigh()))),
            .horizontalDpi = options.horizontalDpi,
            .verticalDpi = options.verticalDpi};
}

// Encodes one strip after another.
class StripEncoder {
public:
    StripEncoder(const BitmapImageRep& page, size_t rowsPerStrip)
        : page_(page), rowsPerStrip_(rowsPerStrip) {}

    Bytes encode(size_t strip) {
        const auto height = static_cast<size_t>(page_.pixelsHigh());
        const size_t rowBytes = page_.packedRowBytes();
        const size_t firstRow = strip * rowsPerStrip_;
        const size_t end = std::min(height, firstRow + rowsPerStrip_);
        rows_.resize((end - firstRow) * rowBytes);
        for (size_t y = firstRow; y < end; ++y) {
            const auto target = std::span(rows_).subspan((y - firstRow) * rowBytes, rowBytes);
            if (page_.bitsPerPixel() == 1)
                page_.copyPackedRow(static_cast<int32_t>(y), target);
            else
                putDifferences(page_.packedRow(static_cast<int32_t>(y)), target);
        }
        const auto codes = lzw_.encode(rows_);
        return {codes.begin(), codes.end()};
    }

private:
    // The horizontal predictor: each sample's difference from that of the pixel to its left.
    void putDifferences(std::span<const uint8_t> row, std::span<uint8_t> target) const {
        const auto samples = static_cast<size_t>(page_.samplesPerPixel());
        std::copy_n(row.begin(), samples, target.begin());
        for (size_t at = samples; at < row.size(); ++at)
            target[at] = static_cast<uint8_t>(row[at] - row[at - samples]);
    }

    const BitmapImageRep& page_;
    size_t rowsPerStrip_;
    LzwEncoder lzw_;
    Bytes rows_;
};

// Empty when memory runs out.
std::vector<Bytes>
encodeStrips(const BitmapImageRep& page, const TiffPageTags& tags, unsigned threads) {
    const size_t count = (tags.heightPixels - 1) / tags.rowsPerStrip + 1;
    std::vector<Bytes> strips(count);
    std::vector<std::unique_ptr<StripEncoder>> encoders(std::min<size_t>(threads, count));
    const auto encode = [&](size_t strip, unsigned worker) {
        if (!encoders[worker])
            encoders[worker] = std::make_unique<StripEncoder>(page, tags.rowsPerStrip);
        strips[strip] = encoders[worker]->encode(strip);
        return true;
    };
    const bool isWhole = parallelForAll(count, static_cast<unsigned>(encoders.size()), encode);
    return isWhole ? std::move(strips) : std::vector<Bytes>();
}

std::optional<Bytes> fileOf(const TiffPageTags& tags, std::vector<Bytes> strips) {
    TiffErrors errors;
    TiffMemory file;
    size_t total = 1024; // header and directory
    for (const Bytes& strip : strips)
        total += strip.size() + 8; // its offset and byte count
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
