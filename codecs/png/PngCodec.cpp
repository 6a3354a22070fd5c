#include "codecs/png/PngCodec.h"

#include "codecs/png/PngRowReader.h"
#include "codecs/png/PngStream.h"

#include <algorithm>
#include <cmath>
#include <csetjmp>
#include <limits>
#include <vector>

#include <png.h>

// The library reports errors by longjmp. A function that calls setjmp has no locals with a
// destructor.

namespace paperline {
namespace {

// PngRowReader allocates two rows before it sees their bytes. Real ones are far shorter.
constexpr size_t longestRow = 4 * 1024 * 1024;

class PngReader {
public:
    explicit PngReader(std::span<const uint8_t> bytes) : file_(bytes), rest_(bytes) {
        png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, jumpOut, printNothing);
        if (png_ != nullptr)
            info_ = png_create_info_struct(png_);
    }
    ~PngReader() {
        if (png_ != nullptr)
            png_destroy_read_struct(&png_, &info_, nullptr);
    }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    bool readHeader() {
        if (info_ == nullptr || setjmp(png_jmpbuf(png_)) != 0)
            return false;
        constexpr png_uint_32 mostSide = std::numeric_limits<int32_t>::max() / 32;
        png_set_user_limits(png_, mostSide, mostSide);
        png_set_read_fn(png_, this, readBytes);
        png_read_info(png_, info_);
        return true;
    }

    PixelSize size() const {
        return {png_get_image_width(png_, info_), png_get_image_height(png_, info_)};
    }

    // Reads pages of our own writer twice as fast as the library. Null for other files.
    std::unique_ptr<PngRowReader> openRows() const {
        const int colour = png_get_color_type(png_, info_);
        const bool isPlain = (colour == PNG_COLOR_TYPE_GRAY || colour == PNG_COLOR_TYPE_RGB) &&
                             png_get_bit_depth(png_, info_) == 8 &&
                             png_get_interlace_type(png_, info_) == PNG_INTERLACE_NONE &&
                             png_get_valid(png_, info_, PNG_INFO_tRNS) == 0 &&
                             png_get_rowbytes(png_, info_) <= longestRow;
        std::unique_ptr<PngStream> stream = isPlain ? PngStream::open(file_) : nullptr;
        if (!stream)
            return nullptr;
        const PngRowReader::Layout layout{static_cast<int32_t>(size().width),
                                          static_cast<int32_t>(size().height),
                                          colour == PNG_COLOR_TYPE_RGB ? 3 : 1};
        return std::make_unique<PngRowReader>(std::move(stream), layout);
    }

    // With 1, 8 or 24 bits a pixel.
    std::shared_ptr<BitmapImageRep> readPage() {
        if (!setTransformations())
            return nullptr;
        const auto width = static_cast<int32_t>(size().width);
        const auto height = static_cast<int32_t>(size().height);
        const int bits = png_get_bit_depth(png_, info_) * png_get_channels(png_, info_);
        if (bits != 16 && bits != 32) {
            std::shared_ptr<BitmapImageRep> page = BitmapImageRep::makePage(width, height, bits);
            return page && readRowsOf(*page) ? page : nullptr;
        }
        const std::shared_ptr<BitmapImageRep> withAlpha =
            BitmapImageRep::make({width, height, 8, bits / 8, bits, int64_t{width} * (bits / 8)});
        return withAlpha && readRowsOf(*withAlpha) ? onWhite(*withAlpha) : nullptr;
    }

    // Dots per inch; 0 when the file does not say.
    double horizontalDpi() const { return dpi(png_get_x_pixels_per_meter(png_, info_)); }
    double verticalDpi() const { return dpi(png_get_y_pixels_per_meter(png_, info_)); }

private:
    [[noreturn]] static void jumpOut(png_structp png, png_const_charp /*message*/) {
        png_longjmp(png, 1);
    }
    static void printNothing(png_structp /*png*/, png_const_charp /*message*/) {}

    static void readBytes(png_structp png, png_bytep target, size_t count) {
        auto& reader = *static_cast<PngReader*>(png_get_io_ptr(png));
        if (count > reader.rest_.size())
            png_error(png, "the file ends early");
        std::copy_n(reader.rest_.begin(), count, target);
        reader.rest_ = reader.rest_.subspan(count);
    }

    bool setTransformations() {
        if (setjmp(png_jmpbuf(png_)) != 0)
            return false;
        const int colour = png_get_color_type(png_, info_);
        const bool transparentColour = png_get_valid(png_, info_, PNG_INFO_tRNS) != 0;
        if (colour == PNG_COLOR_TYPE_PALETTE)
            png_set_palette_to_rgb(png_);
        const bool bilevel = colour == PNG_COLOR_TYPE_GRAY && png_get_bit_depth(png_, info_) == 1;
        if (colour == PNG_COLOR_TYPE_GRAY && (!bilevel || transparentColour))
            png_set_expand_gray_1_2_4_to_8(png_);
        if (transparentColour)
            png_set_tRNS_to_alpha(png_);
        png_set_scale_16(png_);
        png_set_interlace_handling(png_);
        png_read_update_info(png_, info_);
        return true;
    }

    bool readRowsOf(BitmapImageRep& target) {
        if (png_get_rowbytes(png_, info_) != static_cast<size_t>(target.bytesPerRow()))
            return false;
        std::vector<png_bytep> rows;
        rows.reserve(static_cast<size_t>(target.pixelsHigh()));
        for (int32_t y = 0; y < target.pixelsHigh(); ++y)
            rows.push_back(target.row(y).data());
        return readImage(rows.data());
    }

    bool readImage(png_bytepp rows) {
        if (setjmp(png_jmpbuf(png_)) != 0)
            return false;
        png_read_image(png_, rows);
        png_read_end(png_, nullptr);
        return true;
    }

    // The last sample of each pixel is its alpha.
    static std::shared_ptr<BitmapImageRep> onWhite(const BitmapImageRep& withAlpha) {
        const auto colours = static_cast<size_t>(withAlpha.samplesPerPixel() - 1);
        std::shared_ptr<BitmapImageRep> page = BitmapImageRep::makePage(
            withAlpha.pixelsWide(), withAlpha.pixelsHigh(), static_cast<int>(8 * colours));
        if (!page)
            return nullptr;
        const uint8_t* from = withAlpha.bitmapData().data();
        const std::span<uint8_t> to = page->bitmapData();
        for (size_t at = 0; at < to.size(); at += colours, from += colours + 1) {
            const unsigned alpha = from[colours];
            for (size_t channel = 0; channel < colours; ++channel)
                to[at + channel] =
                    static_cast<uint8_t>((from[channel] * alpha + 255 * (255 - alpha) + 127) / 255);
        }
        return page;
    }

    // The file stores whole pixels a metre: 11811 stands for 300 dots per inch.
    static double dpi(png_uint_32 pixelsPerMetre) {
        const double exact = pixelsPerMetre * 0.0254;
        const double whole = std::round(exact);
        return std::abs(whole / 0.0254 - pixelsPerMetre) < 1.0 ? whole : exact;
    }

    std::span<const uint8_t> file_;
    std::span<const uint8_t> rest_; // not yet read by the library
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
};

// Null when the image is damaged or its chunks are not independent after all.
std::shared_ptr<BitmapImageRep> pageOfRows(PngRowReader& rows) {
    const PngRowReader::Layout& layout = rows.layout();
    std::shared_ptr<BitmapImageRep> page =
        BitmapImageRep::makePage(layout.widthPixels, layout.heightPixels, 8 * layout.samples);
    if (!page)
        return nullptr;
    for (int32_t y = 0; y < layout.heightPixels; ++y) {
        const std::span<const uint8_t> row = rows.next();
        if (row.empty())
            return nullptr;
        std::copy(row.begin(), row.end(), page->row(y).begin());
    }
    return rows.isComplete() ? page : nullptr;
}

} // namespace

std::unique_ptr<PngRowReader> openPngRows(std::span<const uint8_t> bytes, uint64_t maximumPixels) {
    PngReader reader(bytes);
    const bool isReadable = reader.readHeader() && isWithin(reader.size(), maximumPixels);
    return isReadable ? reader.openRows() : nullptr;
}

std::optional<DecodedImage> decodePng(std::span<const uint8_t> bytes, uint64_t maximumPixels) {
    PngReader reader(bytes);
    if (!reader.readHeader() || !isWithin(reader.size(), maximumPixels))
        return std::nullopt;
    DecodedImage result;
    result.horizontalDpi = reader.horizontalDpi();
    result.verticalDpi = reader.verticalDpi();
    if (const std::unique_ptr<PngRowReader> rows = reader.openRows())
        result.image = pageOfRows(*rows);
    if (!result.image)
        result.image = reader.readPage();
    return result.image ? std::optional(std::move(result)) : std::nullopt;
}

} // namespace paperline
