#include "platform/TiffWriter.h"

#include "platform/PageLayout.h"
#include "platform/SideBySide.h"
#include "platform/TiffPages.h"

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

// Encodes one strip after another into a file in memory of its own and takes out what came of each.
class StripEncoder {
public:
    StripEncoder(const BitmapImageRep& page, const TiffPageTags& tags)
        : page_(page), tags_(tags), tiff_(openTiffMemory(memory_, writeMode, errors_)) {
        isReady_ = tiff_ && setTiffPageTags(tiff_.get(), tags);
        headerBytes_ = memory_.bytes.size();
    }

    // Empty on any error.
    Bytes encode(uint32_t strip) {
        if (!isReady_)
            return {};
        takeRows(strip * size_t{tags_.rowsPerStrip});
        memory_.bytes.resize(headerBytes_);
        const auto size = static_cast<tmsize_t>(rows_.size());
        if (TIFFWriteEncodedStrip(tiff_.get(), strip, rows_.data(), size) != size ||
            errors_.count > 0)
            return {};
        return {memory_.bytes.begin() + static_cast<ptrdiff_t>(headerBytes_), memory_.bytes.end()};
    }

private:
    // The strip's rows without padding; bits behind the last pixel are 0.
    void takeRows(size_t firstRow) {
        const size_t height = tags_.heightPixels;
        const size_t bits = size_t{tags_.widthPixels} * tags_.bitsPerSample * tags_.samplesPerPixel;
        const size_t rowBytes = (bits + 7) / 8;
        const size_t end = std::min(height, firstRow + tags_.rowsPerStrip);
        rows_.resize((end - firstRow) * rowBytes);
        auto target = rows_.begin();
        for (size_t y = firstRow; y < end; ++y) {
            const auto row = page_.row(static_cast<int32_t>(y)).first(rowBytes);
            target = std::copy(row.begin(), row.end(), target);
            if (bits % 8 != 0)
                *(target - 1) = static_cast<uint8_t>(*(target - 1) & (0xFF00U >> (bits % 8)));
        }
    }

    const BitmapImageRep& page_;
    const TiffPageTags& tags_;
    TiffErrors errors_;
    TiffMemory memory_;
    TiffHandle tiff_; // last: closing it writes to what stands before
    Bytes rows_;
    size_t headerBytes_ = 0;
    bool isReady_ = false;
};

// Every strip's code; empty on any error.
std::vector<Bytes>
encodeStrips(const BitmapImageRep& page, const TiffPageTags& tags, unsigned threads) {
    const size_t count = (tags.heightPixels - 1) / tags.rowsPerStrip + 1;
    std::vector<Bytes> strips(count);
    std::vector<std::unique_ptr<StripEncoder>> encoders(std::min<size_t>(threads, count));
    doSideBySide(count, static_cast<unsigned>(encoders.size()), [&](size_t strip, unsigned worker) {
        try {
            if (!encoders[worker])
                encoders[worker] = std::make_unique<StripEncoder>(page, tags);
            strips[strip] = encoders[worker]->encode(static_cast<uint32_t>(strip));
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
