#include "codecs/tiff/TiffCodec.h"

#include "codecs/tiff/TiffHandle.h"
#include "platform/process/ParallelFor.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <vector>

namespace paperline {
namespace {

// Enough for one strip of the whole page at sixteen bytes a pixel.
tmsize_t largestAllocation(uint64_t maximumPixels) {
    constexpr uint64_t other = 64U << 20U; // directories, tables, profiles
    constexpr uint64_t most = std::numeric_limits<tmsize_t>::max();
    return static_cast<tmsize_t>(maximumPixels < (most - other) / 16 ? maximumPixels * 16 + other
                                                                     : most);
}

struct PageTags {
    PixelSize size;
    uint16_t bitsPerSample = 1;
    uint16_t samplesPerPixel = 1;
    uint16_t photometric = 0;
    uint16_t planes = PLANARCONFIG_CONTIG;
    uint16_t orientation = ORIENTATION_TOPLEFT;

    bool isGrey() const {
        return photometric == PHOTOMETRIC_MINISWHITE || photometric == PHOTOMETRIC_MINISBLACK;
    }
    int pageBits() const {
        if (!isGrey())
            return 24;
        return bitsPerSample == 1 && samplesPerPixel == 1 ? 1 : 8;
    }
};

std::optional<PageTags> readTags(TIFF* tiff) {
    PageTags tags;
    if (TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &tags.size.width) == 0 ||
        TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &tags.size.height) == 0 ||
        TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &tags.photometric) == 0)
        return std::nullopt;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &tags.bitsPerSample);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &tags.samplesPerPixel);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &tags.planes);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ORIENTATION, &tags.orientation);
    constexpr uint32_t mostSide = std::numeric_limits<int32_t>::max() / 32;
    return tags.size.width <= mostSide && tags.size.height <= mostSide ? std::optional(tags)
                                                                       : std::nullopt;
}

double resolutionDpi(TIFF* tiff, uint32_t tag) {
    uint16_t unit = RESUNIT_INCH;
    float value = 0;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_RESOLUTIONUNIT, &unit);
    if (TIFFGetField(tiff, tag, &value) == 0 || unit == RESUNIT_NONE || !(value > 0))
        return 0;
    return unit == RESUNIT_CENTIMETER ? static_cast<double>(value) * 2.54
                                      : static_cast<double>(value);
}

// Whether the file's rows are those of the page, possibly with inverted grey.
bool hasPlainRows(TIFF* tiff, const PageTags& tags) {
    if (TIFFIsTiled(tiff) != 0)
        return false;
    if (tags.isGrey())
        return tags.samplesPerPixel == 1 && (tags.bitsPerSample == 1 || tags.bitsPerSample == 8);
    return tags.photometric == PHOTOMETRIC_RGB && tags.planes == PLANARCONFIG_CONTIG &&
           tags.samplesPerPixel == 3 && tags.bitsPerSample == 8;
}

// A page, and what the library may allocate for it at once.
struct PagePlace {
    const std::string& path;
    int pageIndex;
    tmsize_t largestAllocation;
};

// Decodes strips into the page.
class StripReader {
public:
    StripReader(const PagePlace& place, BitmapImageRep& page)
        : page_(page), file_(place.path, place.largestAllocation),
          isOpen_(file_.tiff() != nullptr &&
                  TIFFSetDirectory(file_.tiff(), static_cast<tdir_t>(place.pageIndex)) != 0) {
        if (isOpen_)
            TIFFGetFieldDefaulted(file_.tiff(), TIFFTAG_ROWSPERSTRIP, &rowsPerStrip_);
    }

    bool read(uint32_t strip) {
        const uint64_t firstRow = uint64_t{strip} * rowsPerStrip_;
        const auto height = static_cast<uint64_t>(page_.pixelsHigh());
        if (!isOpen_ || firstRow >= height)
            return false;
        const uint64_t rows = std::min<uint64_t>(rowsPerStrip_, height - firstRow);
        const auto bytes = static_cast<tmsize_t>(rows * static_cast<uint64_t>(page_.bytesPerRow()));
        uint8_t* target = page_.row(static_cast<int32_t>(firstRow)).data();
        return TIFFReadEncodedStrip(file_.tiff(), strip, target, bytes) == bytes &&
               !file_.hasErrors();
    }

private:
    BitmapImageRep& page_;
    TiffFile file_;
    bool isOpen_;
    uint32_t rowsPerStrip_ = 0;
};

bool readPlainRows(TIFF* tiff, const PageTags& tags, const PagePlace& place, BitmapImageRep& page) {
    constexpr size_t worthThreads = 1024 * 1024;
    if (TIFFScanlineSize64(tiff) != static_cast<uint64_t>(page.bytesPerRow()))
        return false;
    const uint32_t strips = TIFFNumberOfStrips(tiff);
    const unsigned workers =
        page.bitmapData().size() < worthThreads ? 1 : std::min(processorCount(), strips);
    std::vector<std::unique_ptr<StripReader>> readers(workers);
    const auto read = [&](size_t strip, unsigned worker) {
        if (!readers[worker])
            readers[worker] = std::make_unique<StripReader>(place, page);
        return readers[worker]->read(static_cast<uint32_t>(strip));
    };
    if (!parallelForAll(strips, workers, read))
        return false;
    if (tags.photometric == PHOTOMETRIC_MINISWHITE)
        for (uint8_t& byte : page.bitmapData())
            byte = static_cast<uint8_t>(~byte);
    return true;
}

// The library premultiplies colours with their alpha.
uint8_t onWhite(uint32_t channel, uint32_t pixel) {
    return static_cast<uint8_t>(std::min<uint32_t>(255, channel + 255 - TIFFGetA(pixel)));
}

void putRow(const uint32_t* pixels, std::span<uint8_t> row, int pageBits, size_t width) {
    for (size_t x = 0; x < width; ++x) {
        const uint32_t pixel = pixels[x];
        const uint8_t red = onWhite(TIFFGetR(pixel), pixel);
        if (pageBits == 24) {
            row[3 * x] = red;
            row[3 * x + 1] = onWhite(TIFFGetG(pixel), pixel);
            row[3 * x + 2] = onWhite(TIFFGetB(pixel), pixel);
        } else if (pageBits == 8) {
            row[x] = red;
        } else if (red >= 128) {
            row[x / 8] = static_cast<uint8_t>(row[x / 8] | (0x80U >> (x % 8)));
        }
    }
}

// Everything else by the library's conversion to 8-bit RGBA.
bool readConverted(TIFF* tiff, const PageTags& tags, BitmapImageRep& page) {
    const auto [width, height] = tags.size;
    const std::unique_ptr<uint32_t[]> raster(new (std::nothrow) uint32_t[size_t{width} * height]);
    // Rows keep their stored order: the viewer applies the orientation.
    if (!raster ||
        TIFFReadRGBAImageOriented(tiff, width, height, raster.get(), tags.orientation, 1) == 0)
        return false;
    for (int32_t y = 0; y < page.pixelsHigh(); ++y)
        putRow(raster.get() + static_cast<size_t>(y) * width, page.row(y), tags.pageBits(), width);
    return true;
}

} // namespace

std::optional<DecodedImage>
decodeTiffPage(const std::string& path, int pageIndex, uint64_t maximumPixels) {
    const PagePlace place{path, pageIndex, largestAllocation(maximumPixels)};
    const TiffFile file(path, place.largestAllocation);
    TIFF* const tiff = file.tiff();
    constexpr int mostPages = std::numeric_limits<uint16_t>::max();
    if (tiff == nullptr || pageIndex < 0 || pageIndex >= mostPages ||
        TIFFSetDirectory(tiff, static_cast<tdir_t>(pageIndex)) == 0)
        return std::nullopt;
    const std::optional<PageTags> tags = readTags(tiff);
    if (!tags || !isWithin(tags->size, maximumPixels))
        return std::nullopt;
    DecodedImage result;
    result.image = BitmapImageRep::makePage(static_cast<int32_t>(tags->size.width),
                                            static_cast<int32_t>(tags->size.height),
                                            tags->pageBits());
    if (!result.image)
        return std::nullopt;
    const bool isWhole = hasPlainRows(tiff, *tags)
                             ? readPlainRows(tiff, *tags, place, *result.image)
                             : readConverted(tiff, *tags, *result.image);
    if (!isWhole || file.hasErrors())
        return std::nullopt;
    result.horizontalDpi = resolutionDpi(tiff, TIFFTAG_XRESOLUTION);
    result.verticalDpi = resolutionDpi(tiff, TIFFTAG_YRESOLUTION);
    return result;
}

int tiffPageCount(const std::string& path) {
    const TiffFile file(path, largestAllocation(0));
    return file.tiff() != nullptr ? static_cast<int>(TIFFNumberOfDirectories(file.tiff())) : 0;
}

} // namespace paperline
